#ifndef QNLIB_SRC_PLATFORM_KERNEL_LOCAL_OBJECTS_H
#define QNLIB_SRC_PLATFORM_KERNEL_LOCAL_OBJECTS_H

#include "platform/kernel/deadline.h"
#include "platform/kernel/object.h"
#include "platform/kernel/thread_record.h"

#include <span>

// What a wait that mixes local objects with named ones asks of the local ones.

namespace qn_platform::kernel
{

/// What a wait took: the index of the object (-1 for nothing), and whether it was an abandoned mutex.
struct Taken
{
    int index = -1;
    bool abandoned = false;

    explicit operator bool() const { return index >= 0; }
};

/// The lock of the process's slow paths. With it held, a queue of a local object changes through its holder
/// only.
class Dispatcher_Lock
{
public:
    Dispatcher_Lock();
    ~Dispatcher_Lock();
    Dispatcher_Lock(const Dispatcher_Lock&) = delete;
    Dispatcher_Lock& operator=(const Dispatcher_Lock&) = delete;
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

    /// The bell's value that a sleeper expects: the bell moved on when an object was handed over.
    std::uint32_t Get_Bell_Value() const;
};

// For a wait for all. Held objects change only by Take until they are let go, whatever other threads do. The
// dispatcher is locked from the first Hold to the last Let_Go.
void Hold(Object& object);
bool Can_Take(const Object& object, const Thread_Record& self);
bool Take(Object& object, Thread_Record& self); // whether it was an abandoned mutex
void Let_Go(Object& object);

/// Sleeps until the object can be taken, without taking it. False after the deadline.
bool Wait_Until_Available(Object& object, Thread_Record& self, Deadline& deadline);

} // namespace qn_platform::kernel

#endif
