#ifndef QNLIB_SRC_PLATFORM_KERNEL_NAMED_OBJECT_H
#define QNLIB_SRC_PLATFORM_KERNEL_NAMED_OBJECT_H

#include "platform/kernel/deadline.h"
#include "platform/kernel/local_objects.h"
#include "platform/kernel/object.h"
#include "platform/kernel/thread_record.h"

#include <span>

// Events and mutexes that processes share by name. docs/kernel-objects.md tells how: one file each, mapped by
// every user, with state words that the kernel itself repairs when a thread dies.

namespace qn_platform::kernel
{

/// One mapped object of this process; there is one for each name, however many handles stand for it. Counted.
class Named_Object;

/// What a maker or opener asks for. The name is the caller's, prefix included, already known not to be empty.
struct Named_Request
{
    Kind kind;
    LPCWSTR name;
    bool open_to_all;  // for every user of the machine, not for the creator's alone
    bool manual_reset; // events
    bool initial;      // an event that is set, a mutex owned by the calling thread: only when it is new
};

struct Named_Answer
{
    Named_Object* object; // with a reference that the caller owns; null on failure
    DWORD error;          // 0; 183 when it was there already; otherwise why it failed: 2, 3, 4, 5, 6, 8, 206
};

Named_Answer Create_Named(const Named_Request& request, Thread_Record& self);
Named_Answer Open_Named(Kind kind, LPCWSTR name);
void Add_Reference(Named_Object& object);
/// Closes the mapping, and the name with it if this was the machine's last user, when the last reference
/// goes.
void Release_Reference(Named_Object& object);

void Set_Named(Named_Object& object, Thread_Record& self);
void Reset_Named(Named_Object& object, Thread_Record& self);
void Pulse_Named(Named_Object& object, Thread_Record& self);
/// False when the thread is not the owner.
bool Release_Named_Mutex(Named_Object& object, Thread_Record& self);

/// Takes the object for the thread if that is possible now, without a system call.
bool Try_Take_Named(Named_Object& object, Thread_Record& self, bool& abandoned);

/// The whole of a wait that has a named object among its objects: the value of WaitForMultipleObjects. The
/// caller holds references.
DWORD Wait_With_Named(std::span<Object* const> objects, bool all, Deadline& deadline, Thread_Record& self);

/// At a thread's end: its named mutexes become abandoned.
void Abandon_Named_Mutexes(Thread_Record& self);

/// In a forked child, where the parent's objects are not mapped: forgets them all.
void Forget_Named_Objects();

} // namespace qn_platform::kernel

#endif
