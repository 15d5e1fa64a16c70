#ifndef QNLIB_SRC_PLATFORM_KERNEL_RANKED_LOCK_H
#define QNLIB_SRC_PLATFORM_KERNEL_RANKED_LOCK_H

#include <mutex>

// The locks of the kernel objects, which are taken in one order. A build without NDEBUG stops the program,
// with a line that says why, when a thread takes one out of that order.

namespace qn_platform::kernel
{

/// A lock is taken only while locks of lower ranks are held.
enum class Lock_Rank : unsigned int
{
    Names,       // the process's list of named objects
    Dispatcher,  // queues of waiting threads
    Records,     // the list of thread records
    Table,       // free slots and free objects
    Privileges,  // of all tokens
    Thread_State // the state of one thread
};

class Ranked_Lock
{
public:
    explicit constexpr Ranked_Lock(Lock_Rank rank) : m_Rank(rank) {}
    Ranked_Lock(const Ranked_Lock&) = delete;
    Ranked_Lock& operator=(const Ranked_Lock&) = delete;

    // As std::lock_guard wants them.
    void lock()
    {
        st_Note_Taken(m_Rank);
        m_Mutex.lock();
    }
    void unlock()
    {
        m_Mutex.unlock();
        st_Note_Released(m_Rank);
    }

private:
#ifdef NDEBUG
    static void st_Note_Taken(Lock_Rank) {}
    static void st_Note_Released(Lock_Rank) {}
#else
    static void st_Note_Taken(Lock_Rank rank);
    static void st_Note_Released(Lock_Rank rank);
#endif

    std::mutex m_Mutex;
    Lock_Rank m_Rank;
};

} // namespace qn_platform::kernel

#endif
