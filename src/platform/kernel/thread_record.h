#ifndef QNLIB_SRC_PLATFORM_KERNEL_THREAD_RECORD_H
#define QNLIB_SRC_PLATFORM_KERNEL_THREAD_RECORD_H

#include <atomic>
#include <cstdint>

// What the layer keeps for each thread that ever waits, owns or is handed around. Made at a thread's first
// use of the layer, ended after its last destructors: then the mutexes that it still owns become abandoned
// and the objects that stand for the thread are set.

namespace qn_platform::kernel
{

class Named_Object;
class Object_Reference;
struct Object;

/// The memory is used again for other threads but never given back, so a late wake-up at a bell is harmless.
struct alignas(64) Thread_Record
{
    std::uint32_t id = 0;      // the kernel's thread number, which state words of mutexes hold
    std::uint32_t process = 0; // the kernel's number of its process
    /// Futex word, private to the process: moves on once for each hand-over to this thread.
    std::atomic<std::uint32_t> bell{0};
    Object* owned_mutexes = nullptr;     // local mutexes owned by this thread; touched by it alone
    Named_Object* owned_named = nullptr; // named mutexes owned by this thread; touched by it alone
    void* robust_head = nullptr; // the thread's robust list head in the C library, found at first need
    Object* object = nullptr;    // what handles to this thread stand for, with a reference; null until asked
    void* state = nullptr;       // behind that object: noted for leak checkers, which don't look there
    std::atomic<const Object*> in_use{nullptr}; // what the thread works with just now (named_use.h)
    bool hears_faults = false;                  // SIGBUS is not blocked in it (page_guard.h)
    std::uint32_t exit_code = 0;
    unsigned int end_rounds = 0; // rounds of destructors that the ending thread has been through
    Thread_Record* next_free = nullptr;
    Thread_Record* next = nullptr; // all records ever made
};

extern constinit thread_local Thread_Record* g_pCurrent_Thread;

Thread_Record* Make_Thread_Record();

/// The calling thread's record; null if it has none yet and memory is short.
inline Thread_Record* Current_Thread()
{
    Thread_Record* const pRecord = g_pCurrent_Thread;
    return pRecord != nullptr ? pRecord : Make_Thread_Record();
}

/// All records ever made, by their field `next`.
const Thread_Record* First_Thread_Record();

/// A record for a thread that is to be made; null if memory is short. The thread adopts it as the first thing
/// that it does, or if there is no thread it is given back.
Thread_Record* Reserve_Thread_Record();
void Adopt_Thread_Record(Thread_Record& record);
void Give_Back_Thread_Record(Thread_Record& record);

/// At the end of a thread's own work: ends its record if nothing else will, since memory for that was short
/// when it was adopted.
void End_Unwatched_Thread(Thread_Record& record);

/// The object that stands for the calling thread. Empty, last error 8, when memory is short.
Object_Reference Get_Thread_Object(Thread_Record& self);

/// In a forked child: its thread has no record, and there are no others.
void Forget_Threads();

} // namespace qn_platform::kernel

#endif
