// POCO: events and mutexes, named ones as semaphores of the system.

#include "kernel_rows.h"

#if defined(QNLIB_BENCH_POCO)
#include "ping_pong.h"

#include <Poco/Event.h>
#include <Poco/Mutex.h>
#include <Poco/NamedEvent.h>
#include <Poco/NamedMutex.h>

namespace
{

const std::string strPrefix = "qnlib-bench-poco-" + std::to_string(getpid());

template <class Event>
struct Signal
{
    Event m_Event;

    void Set() { m_Event.set(); }
    void Wait() { m_Event.wait(); }
};

using Local_Signal = Signal<Poco::Event>;
using Named_Signal = Signal<Poco::NamedEvent>;

template <class Event>
auto set_And_Wait(std::unique_ptr<Event> pEvent)
{
    return [pEvent = std::move(pEvent)]
    {
        pEvent->set();
        pEvent->wait();
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

struct Local_Pair
{
    Local_Signal first;
    Local_Signal second;
};

struct Named_Pair
{
    explicit Named_Pair(const std::string& strName) : first{strName + "-ping"}, second{strName + "-pong"} {}

    Named_Signal first;
    Named_Signal second;
};

} // namespace

void Add_Poco(const Kernel_Rows& rows)
{
    rows.m_SetWait.Add("POCO", set_And_Wait(std::make_unique<Poco::Event>()));
    rows.m_SetWaitNamed.Add("POCO", set_And_Wait(std::make_unique<Poco::NamedEvent>(strPrefix + "-set")));
    rows.m_Lock.Add("POCO", lock_And_Unlock(std::make_unique<Poco::Mutex>()));
    rows.m_LockNamed.Add("POCO", lock_And_Unlock(std::make_unique<Poco::NamedMutex>(strPrefix + "-lock")));
    rows.m_MakeEvent.Add("POCO", [] { return std::make_unique<Poco::Event>(); });
    rows.m_MakeEventNamed.Add("POCO",
                              [] { return std::make_unique<Poco::NamedEvent>(strPrefix + "-event"); });
    rows.m_MakeMutex.Add("POCO", [] { return std::make_unique<Poco::Mutex>(); });
    rows.m_MakeMutexNamed.Add("POCO",
                              [] { return std::make_unique<Poco::NamedMutex>(strPrefix + "-mutex"); });
    rows.m_Threads.Add("POCO", ping_pong::Work<ping_pong::Thread_Partner>([] { return Local_Pair(); }));
    rows.m_ThreadsNamed.Add("POCO", ping_pong::Work<ping_pong::Thread_Partner>(
                                        [] { return Named_Pair(strPrefix + "-threads"); }));
    rows.m_Processes.Add("POCO", ping_pong::Work<ping_pong::Process_Partner>(
                                     [] { return Named_Pair(strPrefix + "-processes"); }));
}
#else
void Add_Poco(const Kernel_Rows&) {}
#endif
