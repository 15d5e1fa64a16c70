#include "platform/providers/advapi32/key_handles.h"

#include <deque>
#include <mutex>

namespace qn_advapi32
{

using namespace qn_platform;

namespace
{

constexpr std::uintptr_t MOST_SLOTS = 1 << 20;
constexpr std::uintptr_t GENERATIONS = 512;
constexpr unsigned int GENERATION_SHIFT = 22;
constexpr std::uintptr_t MARK = 2;
constexpr std::size_t LEAST_WAITING = 1024; ///< freed slots, before the first of them is used again

struct Slot
{
    Open_Key key;
    std::uintptr_t value = 0;      ///< of its handle, 0 while it is free
    std::uintptr_t generation = 0; ///< of its next handle
};

struct Table
{
    std::mutex mutex;
    std::deque<Slot> slots;
    std::deque<std::uintptr_t> free;
};

Table& get_Table()
{
    static Table& table = *new Table;
    return table;
}

Slot* find(Table& table, HKEY handle)
{
    const auto value = reinterpret_cast<std::uintptr_t>(handle);
    const std::uintptr_t index = value >> 2 & (MOST_SLOTS - 1);
    const bool open = value != 0 && index < table.slots.size() && table.slots[index].value == value;
    return open ? &table.slots[index] : nullptr;
}

/// The number of a free slot; MOST_SLOTS if there is none.
std::uintptr_t take_Slot(Table& table)
{
    const bool fresh = table.slots.size() < MOST_SLOTS;
    if (table.free.size() < LEAST_WAITING && fresh)
    {
        table.slots.emplace_back();
        return table.slots.size() - 1;
    }
    if (table.free.empty())
        return MOST_SLOTS;
    const std::uintptr_t index = table.free.front();
    table.free.pop_front();
    return index;
}

} // namespace

HKEY Open_Key_Handle(const Open_Key& key, DWORD& error)
{
    Table& table = get_Table();
    const std::lock_guard lock(table.mutex);
    const std::uintptr_t index = take_Slot(table);
    if (index == MOST_SLOTS)
    {
        error = ERROR_TOO_MANY_OPEN_FILES;
        return nullptr;
    }
    Slot& slot = table.slots[index];
    slot.key = key;
    slot.value = slot.generation << GENERATION_SHIFT | index << 2 | MARK;
    slot.generation = (slot.generation + 1) % GENERATIONS;
    return reinterpret_cast<HKEY>(slot.value);
}

bool Find_Key_Handle(HKEY handle, Open_Key& key)
{
    Table& table = get_Table();
    const std::lock_guard lock(table.mutex);
    const Slot* const slot = find(table, handle);
    if (slot != nullptr)
        key = slot->key;
    return slot != nullptr;
}

void Lock_Key_Handles() { get_Table().mutex.lock(); }
void Unlock_Key_Handles() { get_Table().mutex.unlock(); }

bool Close_Key_Handle(HKEY handle)
{
    Table& table = get_Table();
    const std::lock_guard lock(table.mutex);
    Slot* const slot = find(table, handle);
    if (slot == nullptr)
        return false;
    table.free.push_back(static_cast<std::uintptr_t>((slot->value >> 2) & (MOST_SLOTS - 1)));
    slot->value = 0;
    return true;
}

} // namespace qn_advapi32
