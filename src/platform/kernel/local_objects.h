#ifndef QNLIB_SRC_PLATFORM_KERNEL_LOCAL_OBJECTS_H
#define QNLIB_SRC_PLATFORM_KERNEL_LOCAL_OBJECTS_H

#include "platform/kernel/deadline.h"
#include "platform/kernel/local_queue.h"
#include "platform/kernel/object.h"
#include "platform/kernel/thread_record.h"

#include <span>

// What a wait that mixes local objects with named ones asks of the local ones.

namespace qn_platform::kernel
{

/// The lock of the process's slow paths. With it held, a queue of a local object changes through its holder
/// only.
class Dispatcher_Lock
{
public:
    Dispatcher_Lock();
    ~Dispatcher_Lock();
    Dispatcher_Lock(const Dispatcher_Lock&) = delete;
    Dispatcher_Lock& operator=(const Dispatcher_Lock&) = delete;

    /// Wakes the sleeper at the bell after the lock has been let go. For the holder of the lock.
    static void Wake_Afterwards(const std::atomic<std::uint32_t>& bell);

private:
    static constexpr unsigned int MOST_BELLS = 64;

    unsigned int m_nBells = 0;
    const std::atomic<std::uint32_t>* m_Bells[MOST_BELLS]; // no values but in the first m_nBells
};

/// Takes the object for the thread if that is possible now.
bool Try_Take(Object& object, Thread_Record& self, bool& abandoned);

/// One thread's places in the queues of several local objects during a wait for any of them. `objects` may
/// hold null entries (objects of other kinds), which are skipped; the indexes told are those of the span.
/// Between Enter and Leave the thread sleeps on its bell.
class Local_Queue_Places
{
public:
    Local_Queue_Places(Thread_Record& self, std::span<Object* const> objects);

    /// Takes the first object that can be taken; otherwise queues on all of them, and the answer is empty.
    Taken Enter();

    /// Leaves all queues. The answer is the object that was handed over meanwhile, its bell consumed.
    Taken Leave();

    /// The same after a sleep on the bell alone, until the hand-over or the deadline.
    Taken Sleep_And_Leave(Deadline& deadline);

    /// The bell's value that a sleeper expects: the bell moved on when an object was handed over.
    std::uint32_t Get_Bell_Value() const { return m_Wait.bell; }

private:
    std::span<Object* const> m_Objects;
    Queued_Wait m_Wait;
};

// For a wait for all. Held objects change only by Take until they are let go, whatever other threads do. The
// dispatcher is locked from the first Hold to the last Let_Go.
void Hold(Object& object);
bool Can_Take(const Object& object, const Thread_Record& self);
bool Take(Object& object, Thread_Record& self); // whether it was an abandoned mutex
void Let_Go(Object& object);

/// Waits for one of local objects, or for all of them, which are different ones then. Empty after the
/// deadline.
Taken Wait_For_Any_Local(std::span<Object* const> objects, Thread_Record& self, Deadline& deadline);
Taken Wait_For_All_Local(std::span<Object* const> objects, Thread_Record& self, Deadline& deadline);

/// Sleeps until the object can be taken, without taking it. False after the deadline.
bool Wait_Until_Available(Object& object, Thread_Record& self, Deadline& deadline);

} // namespace qn_platform::kernel

#endif
