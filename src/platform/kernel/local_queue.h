#ifndef QNLIB_SRC_PLATFORM_KERNEL_LOCAL_QUEUE_H
#define QNLIB_SRC_PLATFORM_KERNEL_LOCAL_QUEUE_H

#include "platform/types.h"

#include <cstdint>

// Threads that queue on local objects. All of it is guarded by the dispatcher's lock.

namespace qn_platform::kernel
{

struct Object;
struct Thread_Record;
class Deadline;

/// What a wait took: the index of the object (-1 for nothing), and whether it was an abandoned mutex. For a
/// wait for all: 0, or the lowest index of an abandoned mutex.
struct Taken
{
    int index = -1;
    bool abandoned = false;

    explicit operator bool() const { return index >= 0; }
};

enum class Wait_Mode
{
    Any,
    All,
    Look // until the object can be taken, without taking it
};

struct Queued_Wait;

/// A wait's place in the queue of one object.
struct Wait_Node
{
    Object* object;
    Queued_Wait* wait;
    Wait_Node* previous;
    Wait_Node* next;
    int index; // among the objects of the wait
};

/// One thread's wait. It holds references on the objects, and moves nowhere while it queues.
struct Queued_Wait
{
    static constexpr unsigned int MOST_NODES = 64;

    Queued_Wait(Thread_Record& self, Wait_Mode wait_mode) : thread(self), mode(wait_mode) {}

    /// Queues on one more object, at its end.
    void Queue_On(Object& object, int index);

    /// Leaves all queues.
    void Leave_Queues();

    /// Sleeps until served or the deadline. Without the lock.
    void Sleep(Deadline& deadline) const;

    /// Leaves the queues, if it was not served, and takes over the mutexes that it was given. Without the
    /// lock.
    Taken Finish();

    Thread_Record& thread;
    Wait_Mode mode;
    std::uint32_t bell = 0; // the bell's value when the wait came: it has been served when the bell moved on
    unsigned int count = 0; // of nodes
    Taken result;
    Wait_Node nodes[MOST_NODES]; // no values but in the first `count`
};

/// Gives the object, which has become available, to those that wait for it, in the order of their arrival.
void Serve(Object& object);

} // namespace qn_platform::kernel

#endif
