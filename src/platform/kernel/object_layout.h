#ifndef QNLIB_SRC_PLATFORM_KERNEL_OBJECT_LAYOUT_H
#define QNLIB_SRC_PLATFORM_KERNEL_OBJECT_LAYOUT_H

#include "platform/fail.h"
#include "platform/kernel/grown_array.h"
#include "platform/kernel/object.h"
#include "platform/kernel/thread_record.h"

#include <atomic>
#include <cstdint>

// How objects and slots of the handle table lie in memory, for the files that implement them.
//
// An object's word holds its generation (upper half) and its state (lower half). The generation moves on
// when the object's memory is set free, so who found the object through a handle changes its state by
// compare-and-swap with the generation that the handle's slot told, and needs no reference for that: on
// memory that stands for another object by now the exchange fails.
//
// States    | event, thread, process | mutex
// ----------|------------------------|------------------------------------------------------------
// bit 0     | set                    | bits 0 to 28: the owner's thread number, 0 when free
// ABANDONED |                        | free, and its last owner ended without releasing it
// ORPHAN    |                        | owned, and without a handle: the owner sets the memory free
// QUEUED    | threads queue; every change of the state takes the dispatcher's lock

namespace qn_platform::kernel
{

inline constexpr std::uint32_t STATE_SET = 1;
inline constexpr std::uint32_t STATE_OWNER = 0x1FFFFFFF;
inline constexpr std::uint32_t STATE_ORPHAN = 0x20000000;
inline constexpr std::uint32_t STATE_ABANDONED = 0x40000000;
inline constexpr std::uint32_t STATE_QUEUED = 0x80000000;

constexpr std::uint32_t Get_State(std::uint64_t word) { return static_cast<std::uint32_t>(word); }
constexpr std::uint32_t Get_Generation(std::uint64_t word) { return static_cast<std::uint32_t>(word >> 32); }
constexpr std::uint64_t With_State(std::uint64_t word, std::uint32_t state)
{
    return (word >> 32 << 32) | state;
}

// What an object is, told in one number beside the access mask of a slot, whose bits lie below.
inline constexpr unsigned int TRAIT_KIND_SHIFT = 24;
inline constexpr std::uint32_t TRAIT_KIND = 0x0F000000;
inline constexpr std::uint32_t TRAIT_MANUAL = 0x10000000; // taking it changes nothing
inline constexpr std::uint32_t TRAIT_NAMED = 0x20000000;
inline constexpr std::uint32_t ACCESS_BITS = 0x00FFFFFF;

constexpr std::uint32_t Get_Traits(Kind kind)
{
    const bool bLasts = kind == Kind::Thread || kind == Kind::Process;
    return static_cast<std::uint32_t>(kind) << TRAIT_KIND_SHIFT | (bLasts ? TRAIT_MANUAL : 0);
}
constexpr Kind Get_Kind_Of(std::uint32_t traits)
{
    return static_cast<Kind>((traits & TRAIT_KIND) >> TRAIT_KIND_SHIFT);
}

struct Wait_Node;

/// The threads that wait for an object, in the order in which they came; guarded by the dispatcher's lock.
struct Wait_Queue
{
    Wait_Node* first;
    Wait_Node* last;
};

struct alignas(64) Object
{
    std::atomic<std::uint64_t> word;
    std::atomic<std::uint32_t> references; // by handles, by waits under way, by its maker; not by its owner
    std::atomic<std::uint32_t> traits;
    std::uint32_t recursion; // a mutex's waits of its owner but the first; touched by it, or on its behalf
    std::uint32_t next_free;
    Object* next_owned;     // places in Thread_Record::owned_mutexes
    Object* previous_owned; // of the first one, anything
    union
    {
        Wait_Queue queue;
        void (*destroy)(void* record);
    };
    std::atomic<void*> record; // a thread's state, a named object, or what New_Record was given
};

static_assert(sizeof(Object) == 64);

/// A handle's place in the table. An open slot changes in its flags only; it is written anew between a
/// closing and the next opening, so what was read between two equal looks at `word` belongs together.
struct Slot
{
    std::atomic<std::uint64_t> word; // handle's value | flags (upper half), object's generation; 0 when free
    /// The object's place in the array, in bytes (upper half); access mask | object's traits. In a free slot
    /// the next free slot and the generation of the handle that it holds next.
    std::atomic<std::uint64_t> content;
};

inline constexpr std::size_t MOST_OBJECTS = 1u << 20;
using Object_Array = Grown_Array<Object, MOST_OBJECTS, 64>;
using Slot_Array = Grown_Array<Slot, MOST_OBJECTS, 256>;

extern Object_Array g_Objects;
extern Slot_Array g_Slots;

// The flags lie in the low bits of the handle's value, which has none there.
inline constexpr std::uint64_t SLOT_INHERIT = 1ull << 32;
inline constexpr std::uint64_t SLOT_PROTECT = 2ull << 32;
inline constexpr std::uint64_t SLOT_FLAGS = SLOT_INHERIT | SLOT_PROTECT;

/// What a look at a handle found: the object as it was at that moment. Null and no rights if there is none.
struct Look
{
    Object* object;
    std::uint32_t generation;
    std::uint32_t grant;

    /// The object's word when it has this state.
    std::uint64_t Get_Word(std::uint32_t state) const
    {
        return static_cast<std::uint64_t>(generation) << 32 | state;
    }
};

/// Whether a slot with this word is open under this value.
inline bool Is_Open_As(HANDLE handle, std::uint64_t word)
{
    return (word & ~SLOT_FLAGS) >> 32 == reinterpret_cast<std::uintptr_t>(handle);
}

/// The slot of a handle's value and its word; null if the value is no open handle.
inline Slot* Find_Slot(HANDLE handle, std::uint64_t& word)
{
    const std::size_t nPlace = reinterpret_cast<std::uintptr_t>(handle) & ((MOST_OBJECTS - 1) << 2);
    if (nPlace >= g_Slots.Get_Count() << 2) [[unlikely]]
    {
        return nullptr;
    }
    Slot& slot = g_Slots.At_Byte(nPlace * (sizeof(Slot) >> 2)); // a shift less than by its index
    word = slot.word.load(std::memory_order_acquire);
    return Is_Open_As(handle, word) ? &slot : nullptr;
}

/// Nothing for a value that is no open handle (the pseudo handles among them); the last error is left alone.
inline Look Look_Up(HANDLE handle)
{
    for (;;)
    {
        std::uint64_t nWord;
        const Slot* const pSlot = Find_Slot(handle, nWord);
        if (pSlot == nullptr) [[unlikely]]
        {
            return {};
        }
        const std::uint64_t nContent = pSlot->content.load(std::memory_order_acquire);
        if (pSlot->word.load(std::memory_order_relaxed) == nWord) [[likely]]
        {
            return {&g_Objects.At_Byte(nContent >> 32), static_cast<std::uint32_t>(nWord),
                    static_cast<std::uint32_t>(nContent)};
        }
    }
}

/// The error of an operation on one kind of object through what was looked up; 0 if there is none.
inline DWORD Check_Look(Look look, Kind kind, DWORD access)
{
    if (Get_Kind_Of(look.grant) != kind) [[unlikely]]
    {
        return ERROR_INVALID_HANDLE;
    }
    return (access & ~look.grant) == 0 ? ERROR_SUCCESS : ERROR_ACCESS_DENIED;
}

} // namespace qn_platform::kernel

#endif
