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
struct Object;

struct Thread_Record
{
    std::uint32_t id;                // the kernel's thread number, which state words of mutexes hold
    std::atomic<std::uint32_t> bell; // futex word: rung once for each hand-over to this thread
    Object* owned_mutexes;           // local mutexes owned by this thread; touched by it alone
    Named_Object* owned_named;       // named mutexes owned by this thread; touched by it alone
    void* robust_head;               // the thread's robust list head in the C library, found at first need
};

/// The calling thread's record; null if it has none yet and memory is short.
Thread_Record* Current_Thread();

} // namespace qn_platform::kernel

#endif
