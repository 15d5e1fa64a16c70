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

constexpr std::uint64_t GENERATIONS = 512;
constexpr unsigned int VALUE_GENERATION_SHIFT = 22;

/// The free slots in the order in which they were set free, and how many of the array have ever been used.
/// Guarded by the table's lock. Slot 0 is never free: its word is that of no value, so null is no handle.
struct Free_Slots
{
    std::uint32_t first = 0;
    std::uint32_t last = 0;
    std::uint32_t waiting = 0;
    std::uint32_t used = 1;
};
constinit Free_Slots g_Free;

/// The content of a free slot.
std::uint64_t get_Free_Content(std::uint64_t next_free, std::uint64_t generation)
{
    return next_free << 32 | generation % GENERATIONS;
}

std::uint64_t get_Generation(const Slot& free_slot)
{
    return static_cast<std::uint32_t>(free_slot.content.load(std::memory_order_relaxed));
}

Slot& pop_Free()
{
    Slot& slot = g_Slots[g_Free.first];
    g_Free.first = static_cast<std::uint32_t>(slot.content.load(std::memory_order_relaxed) >> 32);
    --g_Free.waiting;
    return slot;
}

/// `generation` is that of the next handle in the slot.
void push_Free(Slot& slot, std::uint64_t generation)
{
    const auto nIndex = static_cast<std::uint32_t>(g_Slots.Get_Index(slot));
    slot.content.store(get_Free_Content(0, generation), std::memory_order_release);
    if (g_Free.waiting == 0)
    {
        g_Free.first = nIndex;
    }
    else
    {
        Slot& last = g_Slots[g_Free.last];
        last.content.store(get_Free_Content(nIndex, get_Generation(last)), std::memory_order_release);
    }
    g_Free.last = nIndex;
    ++g_Free.waiting;
}

bool has_Fresh()
{
    if (g_Free.used < g_Slots.Get_Count())
    {
        return true;
    }
    const bool bGrown = !g_Slots.Is_Full() && g_Slots.Grow();
    if (bGrown)
    {
        g_Slots[0].word.store(~std::uint64_t{0}, std::memory_order_relaxed);
    }
    return bGrown;
}

Slot* get_Slot()
{
    const std::lock_guard guard(g_Table_Lock);
    if (g_Free.waiting < LEAST_WAITING && has_Fresh())
    {
        return &g_Slots[g_Free.used++];
    }
    return g_Free.waiting != 0 ? &pop_Free() : nullptr;
}

std::uint64_t get_Generation_Of_Value(std::uint64_t slot_word)
{
    return slot_word >> 32 >> VALUE_GENERATION_SHIFT;
}

} // namespace

HANDLE Open_Handle(Object_Reference object, DWORD access, bool inherit)
{
    Slot* const pSlot = Watch_Forks() ? get_Slot() : nullptr;
    if (pSlot == nullptr)
    {
        Fail(g_Slots.Is_Full() ? ERROR_TOO_MANY_OPEN_FILES : ERROR_NOT_ENOUGH_MEMORY);
        return nullptr;
    }
    const std::uint64_t nValue = get_Generation(*pSlot) << VALUE_GENERATION_SHIFT | g_Slots.Get_Index(*pSlot)
                                                                                        << 2;
    const std::uint32_t nTraits = object->traits.load(std::memory_order_relaxed);
    const std::uint32_t nGeneration = Get_Generation(object->word.load(std::memory_order_relaxed));
    pSlot->content.store(g_Objects.Get_Index(*object) * sizeof(Object) << 32 | (access & ACCESS_BITS) |
                             nTraits,
                         std::memory_order_release);
    pSlot->word.store(nValue << 32 | (inherit ? SLOT_INHERIT : 0) | nGeneration, std::memory_order_release);
    object.Detach();
    return reinterpret_cast<HANDLE>(nValue);
}

HANDLE New_Handle(Object_Reference object, DWORD access, bool inherit)
{
    return Open_Handle(std::move(object), access, inherit);
}

bool Close_Handle(HANDLE handle)
{
    std::uint64_t nWord;
    Slot* const pSlot = Find_Slot(handle, nWord);
    std::uint64_t nContent;
    do
    {
        if (pSlot == nullptr || !Is_Open_As(handle, nWord) || (nWord & SLOT_PROTECT) != 0)
        {
            return Fail(ERROR_INVALID_HANDLE);
        }
        nContent = pSlot->content.load(std::memory_order_acquire);
    } while (!pSlot->word.compare_exchange_weak(nWord, 0, std::memory_order_acq_rel));
    {
        const std::lock_guard guard(g_Table_Lock);
        push_Free(*pSlot, get_Generation_Of_Value(nWord) + 1);
    }
    Release(g_Objects.At_Byte(nContent >> 32));
    return true;
}

void Forget_Handles()
{
    g_Free = {0, 0, 0, g_Free.used};
    for (std::uint32_t i = 1; i < g_Free.used; ++i)
    {
        Slot& slot = g_Slots[i];
        const std::uint64_t nWord = slot.word.exchange(0, std::memory_order_relaxed);
        push_Free(slot, nWord != 0 ? get_Generation_Of_Value(nWord) + 1 : get_Generation(slot));
    }
}

} // namespace qn_platform::kernel
