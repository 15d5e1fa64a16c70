// Boost.Interprocess: semaphores for events, recursive mutexes. It has no wait for several.

#include "kernel_rows.h"

#if defined(QNLIB_BENCH_BOOST)
#include "ping_pong.h"

#include <boost/interprocess/sync/interprocess_recursive_mutex.hpp>
#include <boost/interprocess/sync/interprocess_semaphore.hpp>
#include <boost/interprocess/sync/named_recursive_mutex.hpp>
#include <boost/interprocess/sync/named_semaphore.hpp>

namespace
{

namespace ipc = boost::interprocess;

const std::string strPrefix = "qnlib-bench-boost-" + std::to_string(getpid());

/// A semaphore as an event.
class Named_Signal
{
public:
    explicit Named_Signal(std::string strName)
        : m_strName(std::move(strName)), m_Semaphore(ipc::open_or_create, m_strName.c_str(), 0)
    {
    }
    ~Named_Signal() { ipc::named_semaphore::remove(m_strName.c_str()); }

    void Set() { m_Semaphore.post(); }
    void Wait() { m_Semaphore.wait(); }

private:
    std::string m_strName;
    ipc::named_semaphore m_Semaphore;
};

struct Local_Signal
{
    ipc::interprocess_semaphore m_Semaphore{0};

    void Set() { m_Semaphore.post(); }
    void Wait() { m_Semaphore.wait(); }
};

class Named_Mutex
{
public:
    explicit Named_Mutex(std::string strName)
        : m_strName(std::move(strName)), m_Mutex(ipc::open_or_create, m_strName.c_str())
    {
    }
    ~Named_Mutex() { ipc::named_recursive_mutex::remove(m_strName.c_str()); }

    void lock() { m_Mutex.lock(); }
    void unlock() { m_Mutex.unlock(); }

private:
    std::string m_strName;
    ipc::named_recursive_mutex m_Mutex;
};

template <class Signal>
auto set_And_Wait(std::unique_ptr<Signal> pSignal)
{
    return [pSignal = std::move(pSignal)]
    {
        pSignal->Set();
        pSignal->Wait();
        return 0;
    };
}

template <class Mutex>
auto lock_And_Unlock(std::unique_ptr<Mutex> pMutex)
{
    return [pMutex = std::move(pMutex)]
    {
        pMutex->lock();
        pMutex->unlock();
        return 0;
    };
}

/// Two signals under names of their own; a pair holds them where they are made.
struct Named_Pair
{
    explicit Named_Pair(const std::string& strName) : first(strName + "-ping"), second(strName + "-pong") {}

    Named_Signal first;
    Named_Signal second;
};

} // namespace

void Add_Boost(const Kernel_Rows& rows)
{
    rows.m_SetWait.Add("Boost", set_And_Wait(std::make_unique<Local_Signal>()));
    rows.m_SetWaitNamed.Add("Boost", set_And_Wait(std::make_unique<Named_Signal>(strPrefix + "-set")));
    rows.m_Lock.Add("Boost", lock_And_Unlock(std::make_unique<ipc::interprocess_recursive_mutex>()));
    rows.m_LockNamed.Add("Boost", lock_And_Unlock(std::make_unique<Named_Mutex>(strPrefix + "-lock")));
    rows.m_MakeEventNamed.Add("Boost", [] { return std::make_unique<Named_Signal>(strPrefix + "-event"); });
    rows.m_MakeMutexNamed.Add("Boost", [] { return std::make_unique<Named_Mutex>(strPrefix + "-mutex"); });
    rows.m_Threads.Add("Boost", ping_pong::Work<ping_pong::Thread_Partner>(
                                    [] { return std::pair<Local_Signal, Local_Signal>(); }));
    rows.m_ThreadsNamed.Add("Boost", ping_pong::Work<ping_pong::Thread_Partner>(
                                         [] { return Named_Pair(strPrefix + "-threads"); }));
    rows.m_Processes.Add("Boost", ping_pong::Work<ping_pong::Process_Partner>(
                                      [] { return Named_Pair(strPrefix + "-processes"); }));
}
#else
void Add_Boost(const Kernel_Rows&) {}
#endif
