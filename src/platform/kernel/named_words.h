#ifndef QNLIB_SRC_PLATFORM_KERNEL_NAMED_WORDS_H
#define QNLIB_SRC_PLATFORM_KERNEL_NAMED_WORDS_H

#include "platform/kernel/named_state.h"

// The changes of state words, apart from waiting. docs/kernel-objects.md has the table of them. Each may be
// cut off by SIGKILL at any instruction.

namespace qn_platform::kernel
{

inline bool Has_No_Owner(std::uint32_t state) { return (state & OWNER_MASK) == 0; }
inline bool Has_Signal(std::uint32_t state) { return (state & MARK) != 0 && Has_No_Owner(state); }

// ---- Events that stay set --------------------------------------------------------------------------------

inline bool Is_Set(std::uint32_t manual_state) { return (manual_state & 1) != 0; }

/// Whether a wait that began when the word held `seen` is satisfied: the event is set, or was in between.
inline bool Is_Released(std::uint32_t manual_state, std::uint32_t seen)
{
    return Is_Set(manual_state) || ((manual_state ^ seen) & ~WAITERS) != 0;
}

// ---- Events that reset themselves ------------------------------------------------------------------------

/// The number of signals handed out so far, as far as it is counted.
inline std::uint32_t Handed_Out(std::uint32_t tickets) { return (tickets >> HANDED_OUT_BIT) & TICKETS_MASK; }

/// Takes the signal if it is there.
bool Take_Signal(Named_Page& page);

/// Takes a signal that was handed to a sleeper and not taken yet.
bool Take_Ticket(Named_Page& page);

/// Makes the event set for whoever comes first.
void Leave_Signal(Named_Page& page);

/// Wakes all who sleep on the event, which is set.
void Offer_Signal(Named_Page& page);

// ---- Mutexes ---------------------------------------------------------------------------------------------

/// Takes the mutex if it is free or the thread's own. Changes the thread's pending mark, and clears it.
bool Try_Lock(Named_Object& object, Thread_Record& self, bool& abandoned);

// The inner steps of taking a free mutex, for a wait for all.

/// Where another user may have freed the word of a mutex that this process has, two threads could come to
/// link one node: there the process's own record decides first.
bool Reserve(Named_Object& object, Thread_Record& self);
void Unreserve(Named_Object& object);

bool Take_State(Named_Object& object, Thread_Record& self, std::uint32_t& before);
void Note_Ownership(Named_Object& object, Thread_Record& self);
bool Judge_Abandoned(Named_Page& page, std::uint32_t before);

/// Frees an unlinked mutex whose node is pending: `left` is 0, or MARK for an abandoned one.
void Free_State(Named_Object& object, std::uint32_t left);

/// Gives up a mutex that the thread owns, however often it took it.
void Give_Up(Named_Object& object, Thread_Record& self, std::uint32_t left);

// ---- Both ------------------------------------------------------------------------------------------------

/// Wakes all sleepers of a word and clears its WAITERS, so that it costs nobody a system call any more.
void Wake_Everybody(State_Word& word);

} // namespace qn_platform::kernel

#endif
