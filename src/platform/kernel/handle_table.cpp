#include "platform/kernel/handle_table.h"

#include "platform/kernel/fork.h"
#include "platform/kernel/object_pool.h"
#include "platform/modules.h"

#include <utility>

namespace qn_platform::kernel
{

constinit Ranked_Lock g_Table_Lock{Lock_Rank::Table};
constinit Slot_Array g_Slots;

namespace
{

/// So many freed slots wait before the first of them is used again.
constexpr std::uint32_t LEAST_WAITING = 1024;

/// The free slots in the order in which they were set free, and how many of the array have ever been used.
/// Guarded by the table's lock. Slot 0 is never used: null is no handle.
struct Free_Slots
{
    std::uint32_t first = 0;
    std::uint32_t last = 0;
    std::uint32_t waiting = 0;
    std::uint32_t used = 1;
};
constinit Free_Slots g_Free;

Slot& pop_Free()
{
    Slot& slot = g_Slots[g_Free.first];
    g_Free.first = slot.next_free;
    --g_Free.waiting;
    return slot;
}

void push_Free(Slot& slot)
{
    const auto nIndex = static_cast<std::uint32_t>(g_Slots.Get_Index(slot));
    (g_Free.waiting == 0 ? g_Free.first : g_Slots[g_Free.last].next_free) = nIndex;
    g_Free.last = nIndex;
    ++g_Free.waiting;
}

bool has_Fresh() { return g_Free.used < g_Slots.Get_Count() || (!g_Slots.Is_Full() && g_Slots.Grow()); }

Slot* get_Slot()
{
    const std::lock_guard guard(g_Table_Lock);
    if (g_Free.waiting < LEAST_WAITING && has_Fresh())
    {
        return &g_Slots[g_Free.used++];
    }
    return g_Free.waiting != 0 ? &pop_Free() : nullptr;
}

/// The word of the slot when it is free, with the generation of the handle that it holds next.
std::uint64_t get_Free_Word(std::uint64_t word)
{
    return ((word >> SLOT_GENERATION_SHIFT) + 1) << SLOT_GENERATION_SHIFT;
}

HANDLE get_Value(const Slot& slot, std::uint64_t word)
{
    return reinterpret_cast<HANDLE>(word >> SLOT_GENERATION_SHIFT << 22 | g_Slots.Get_Index(slot) << 2);
}

} // namespace

bool Fail(DWORD code)
{
    SetLastError(code);
    return false;
}

HANDLE Open_Handle(Object_Reference object, DWORD access, bool inherit)
{
    Slot* const pSlot = Watch_Forks() ? get_Slot() : nullptr;
    if (pSlot == nullptr)
    {
        Fail(g_Slots.Is_Full() ? ERROR_TOO_MANY_OPEN_FILES : ERROR_NOT_ENOUGH_MEMORY);
        return nullptr;
    }
    const std::uint32_t nTraits = object->traits.load(std::memory_order_relaxed);
    pSlot->grant.store((access & ACCESS_BITS) | nTraits, std::memory_order_release);
    const std::uint64_t nObject = static_cast<std::uint64_t>(g_Objects.Get_Index(*object)) << 32 |
                                  Get_Generation(object->word.load(std::memory_order_relaxed));
    const std::uint64_t nWord =
        pSlot->word.load(std::memory_order_relaxed) | (inherit ? SLOT_INHERIT : 0) | nObject;
    pSlot->word.store(nWord, std::memory_order_release);
    object.Detach();
    return get_Value(*pSlot, nWord);
}

HANDLE New_Handle(const Object_Reference& object, DWORD access, bool inherit)
{
    return Open_Handle(Share(*object), access, inherit);
}

bool Close_Handle(HANDLE handle)
{
    std::uint64_t nWord;
    Slot* const pSlot = Find_Slot(handle, nWord);
    do
    {
        const bool bSame = pSlot != nullptr && Is_Open_As(handle, nWord);
        if (!bSame || (nWord & SLOT_PROTECT) != 0)
        {
            return Fail(ERROR_INVALID_HANDLE);
        }
    } while (!pSlot->word.compare_exchange_weak(nWord, get_Free_Word(nWord), std::memory_order_acq_rel));
    {
        const std::lock_guard guard(g_Table_Lock);
        push_Free(*pSlot);
    }
    Release(g_Objects[Get_Object_Index(nWord)]);
    return true;
}

void Forget_Handles()
{
    g_Free = {0, 0, 0, g_Free.used};
    for (std::uint32_t i = 1; i < g_Free.used; ++i)
    {
        const std::uint64_t nWord = g_Slots[i].word.load(std::memory_order_relaxed);
        if (Get_Object_Index(nWord) != 0)
        {
            g_Slots[i].word.store(get_Free_Word(nWord), std::memory_order_relaxed);
        }
        push_Free(g_Slots[i]);
    }
}

} // namespace qn_platform::kernel
