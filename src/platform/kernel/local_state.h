#ifndef QNLIB_SRC_PLATFORM_KERNEL_LOCAL_STATE_H
#define QNLIB_SRC_PLATFORM_KERNEL_LOCAL_STATE_H

#include "platform/kernel/object_layout.h"
#include "platform/kernel/ranked_lock.h"

// How the states of local objects change.

namespace qn_platform::kernel
{

/// The lock of the process's slow paths; taken by Dispatcher_Lock.
extern Ranked_Lock g_Dispatcher;

/// So many waits of its owner after the first a mutex can count.
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
Took Try_Take_Seen(Look look, Thread_Record& self);

/// Whether the thread could take the object that a look found.
bool Can_Take_Seen(Look look, const Thread_Record& self);

enum class Signal
{
    Set,
    Reset,
    Pulse
};

/// Changes an event or a thread. False when the object that the look found is gone.
bool Change_Signal_Seen(Look look, Signal signal);

/// The same for an object on which a reference is held.
void Change_Signal(Object& object, Signal signal);

/// Undoes one wait of the owner. 0; 288 when the thread (null: one without a record) is not the owner; 6 when
/// the object is gone.
DWORD Release_Seen(Look look, Thread_Record* self);

/// Ends the ownership of the calling thread, whatever the count; `state` is 0 or STATE_ABANDONED.
void Let_Owner_Go(Object& mutex, Thread_Record& self, std::uint32_t state);

/// For a mutex whose last reference is gone: whether its memory can be set free. If not, it is owned by
/// another thread, which will do that.
bool Disown_For_Good(Object& mutex);

// A thread's list of the mutexes that it owns.

// An uncontended lock and unlock write no more than they must: the exchanges wait for what was written
// before.

inline void Link_Owned(Object& mutex, Thread_Record& self)
{
    if (mutex.next_owned != self.owned_mutexes)
    {
        mutex.next_owned = self.owned_mutexes;
    }
    if (mutex.next_owned != nullptr)
    {
        mutex.next_owned->previous_owned = &mutex;
    }
    self.owned_mutexes = &mutex;
}

inline void Unlink_Owned(Object& mutex, Thread_Record& self)
{
    if (self.owned_mutexes == &mutex)
    {
        self.owned_mutexes = mutex.next_owned;
        return;
    }
    mutex.previous_owned->next_owned = mutex.next_owned;
    if (mutex.next_owned != nullptr)
    {
        mutex.next_owned->previous_owned = mutex.previous_owned;
    }
}

// The commonest ways of the operations on local objects, which need no look at the queue. False says nothing
// but that the operation has to go the long way. The exchanges don't wait for the load before them: it only
// tells whether they can succeed.

inline bool Exchange_Quickly(Look look, std::uint32_t from, std::uint32_t to)
{
    std::uint64_t nFrom = look.Get_Word(from);
    return look.object->word.load(std::memory_order_relaxed) == nFrom &&
           look.object->word.compare_exchange_strong(nFrom, look.Get_Word(to), std::memory_order_acq_rel,
                                                     std::memory_order_relaxed);
}

/// A free mutex, or an event that is set.
inline bool Take_Quickly(Look look, Thread_Record& self)
{
    if (Get_Kind_Of(look.grant) == Kind::Mutex)
    {
        const bool bTaken = Exchange_Quickly(look, 0, self.id);
        if (bTaken)
        {
            Link_Owned(*look.object, self);
        }
        return bTaken;
    }
    if ((look.grant & TRAIT_MANUAL) != 0)
    {
        return look.object->word.load(std::memory_order_acquire) == look.Get_Word(STATE_SET);
    }
    return Exchange_Quickly(look, STATE_SET, 0);
}

/// The mutex that the calling thread took last, and once.
inline bool Release_Quickly(Look look, Thread_Record& self)
{
    // Whoever finds itself the owner is alone with the rest of the object.
    const Object& mutex = *look.object;
    if (mutex.word.load(std::memory_order_relaxed) != look.Get_Word(self.id) || mutex.recursion != 0 ||
        self.owned_mutexes != &mutex)
    {
        return false;
    }
    Object* const pNext = mutex.next_owned;
    if (!Exchange_Quickly(look, self.id, 0))
    {
        return false;
    }
    self.owned_mutexes = pNext;
    return true;
}

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
