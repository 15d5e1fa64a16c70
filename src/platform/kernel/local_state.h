#ifndef QNLIB_SRC_PLATFORM_KERNEL_LOCAL_STATE_H
#define QNLIB_SRC_PLATFORM_KERNEL_LOCAL_STATE_H

#include "platform/kernel/object_layout.h"
#include "platform/kernel/ranked_lock.h"

// How the states of local objects change.

namespace qn_platform::kernel
{

/// The lock of the process's slow paths; taken by Dispatcher_Lock.
extern Ranked_Lock g_Dispatcher;

/// So many waits of its owner a mutex can count.
inline constexpr std::uint32_t MOST_RECURSIONS = 0x7FFFFFFF;

enum class Took
{
    Nothing, // it cannot be taken now
    Plain,
    Abandoned,
    Stale,    // the object is gone
    Too_Often // its owner has taken it as often as it can count
};

/// Takes the object that a look found, for the calling thread.
Took Try_Take_Seen(const Look& look, Thread_Record& self);

/// Whether the thread could take the object that a look found.
bool Can_Take_Seen(const Look& look, const Thread_Record& self);

enum class Signal
{
    Set,
    Reset,
    Pulse
};

/// Changes an event or a thread. False when the object that the look found is gone.
bool Change_Signal_Seen(const Look& look, Signal signal);

/// The same for an object on which a reference is held.
void Change_Signal(Object& object, Signal signal);

/// Undoes one wait of the owner. 0; 288 when the thread (null: one without a record) is not the owner; 6 when
/// the object is gone.
DWORD Release_Seen(const Look& look, Thread_Record* self);

/// Ends the ownership of the calling thread, whatever the count; `state` is 0 or STATE_ABANDONED.
void Let_Owner_Go(Object& mutex, Thread_Record& self, std::uint32_t state);

/// For a mutex whose last reference is gone: whether its memory can be set free. If not, it is owned by
/// another thread, which will do that.
bool Disown_For_Good(Object& mutex);

/// The bookkeeping of a mutex that the calling thread has just come to own by its state.
void Begin_Owned(Object& mutex, Thread_Record& self);

// With the dispatcher locked and the object held, or on behalf of a thread that sleeps.

/// Whether a thread that doesn't own it can take it.
bool Is_Available(const Object& object);

/// Takes the object for a thread that sleeps; whether it was an abandoned mutex. The thread itself does the
/// rest by Receive when it is awake.
bool Give(Object& object, const Thread_Record& thread);
void Receive(Object& object, Thread_Record& self);

/// Whether it is a local mutex that the calling thread owns and cannot take once more.
bool Counts_No_Further(const Object& object, const Thread_Record& self);

} // namespace qn_platform::kernel

#endif
