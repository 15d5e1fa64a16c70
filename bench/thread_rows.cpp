// Threads: the monitor thread, and threads that bear their maker's token. The mark against std::jthread is
// the aim: at most 1.5 of its time.

#include <lib_thread.h>

#include "row.h"

#include <condition_variable>
#include <memory>
#include <mutex>
#include <stdexcept>
#include <thread>

#if defined(QNLIB_BENCH_QT)
#include <QSemaphore>
#include <QThread>
#endif

namespace
{

void check(bool bDone)
{
    if (!bDone)
        throw std::runtime_error("a thread operation failed");
}

// ---- A worker that is started, waited for until it is up, told to stop, waited for until it has ended

struct Monitor
{
    Monitor()
    {
        check(m_Monitor.Init(nullptr, work, nullptr, nullptr, nullptr, this, &m_evStop, m_Result, 0));
    }

    static bool work(void* pContext, Lib_Result&)
    {
        return static_cast<Monitor*>(pContext)->m_evStop.Wait_Until_Object_0(INFINITE);
    }

    Lib_Result m_Result;
    Lib_Event m_evStop;
    Lib_Monitor_Thread m_Monitor;
};

auto start_And_Stop_Monitor()
{
    return [pMonitor = std::make_unique<Monitor>()]
    {
        check(pMonitor->m_Monitor.Start(pMonitor->m_Result));
        check(pMonitor->m_Monitor.Stop(pMonitor->m_Result));
        return 0;
    };
}

/// What takes the place of the monitor's start event: a flag that is waited for.
struct Up
{
    void Set()
    {
        const std::lock_guard lock(m_Mutex);
        m_bUp = true;
        m_Condition.notify_one();
    }
    void Wait()
    {
        std::unique_lock lock(m_Mutex);
        m_Condition.wait(lock, [this] { return m_bUp; });
    }

    std::mutex m_Mutex;
    std::condition_variable m_Condition;
    bool m_bUp = false;
};

int start_And_Stop_Jthread()
{
    Up up;
    std::jthread thread(
        [&up](const std::stop_token& token)
        {
            std::mutex mutex;
            std::condition_variable_any condition;
            up.Set();
            std::unique_lock lock(mutex);
            condition.wait(lock, token, [] { return false; });
        });
    up.Wait();
    thread.request_stop();
    return 0;
}

// ---- A thread that does nothing, waited for

/// Bears a token, where the platform makes them at will, as long as it lives: new threads take it over.
class Impersonation
{
public:
    Impersonation()
    {
        const HANDLE hToken = Lib_Create_Session_Token(7, TOKEN_ALL_ACCESS);
        check(SetThreadToken(nullptr, hToken) != FALSE);
        CloseHandle(hToken);
    }
    ~Impersonation() { RevertToSelf(); }
};

int make_Thread()
{
    Lib_Result result;
    HANDLE hThread = nullptr;
    check(Lib_Create_Impersonated_Thread_Ex(
        nullptr, 0, [](void*) { return 0U; }, nullptr, 0, result, nullptr, nullptr, &hThread));
    WaitForSingleObject(hThread, INFINITE);
    CloseHandle(hThread);
    return 0;
}

int make_Thread_With_Token()
{
    const Impersonation impersonation;
    return make_Thread();
}

int make_Jthread()
{
    const std::jthread thread([] {});
    return 0;
}

#if defined(QNLIB_BENCH_QT)
class Qt_Loop : public QThread
{
public:
    QSemaphore m_Up, m_Stop;

protected:
    void run() override
    {
        m_Up.release();
        m_Stop.acquire();
    }
};

int start_And_Stop_Qt()
{
    Qt_Loop loop;
    loop.start();
    loop.m_Up.acquire();
    loop.m_Stop.release();
    loop.wait();
    return 0;
}

class Qt_Nothing : public QThread
{
protected:
    void run() override {}
};

int make_Qt()
{
    Qt_Nothing thread;
    thread.start();
    thread.wait();
    return 0;
}
#endif

} // namespace

void Add_Thread_Rows()
{
    const Row monitor("start and stop of a monitor thread", 0, Row::Time::Clock);
    const Row thread("creation and end of a thread", 0, Row::Time::Clock);
    const Row token("creation and end of a thread with token", 0, Row::Time::Clock);
    monitor.Mark_Against("std::jthread", 1 / 1.5);
    monitor.Add(Row::Ours, start_And_Stop_Monitor()).Add("std::jthread", start_And_Stop_Jthread);
    thread.Add(Row::Ours, make_Thread).Add("std::jthread", make_Jthread);
    token.Add(Row::Ours, make_Thread_With_Token).Add("std::jthread", make_Jthread);
#if defined(QNLIB_BENCH_QT)
    monitor.Add("QThread", start_And_Stop_Qt);
    thread.Add("QThread", make_Qt);
    token.Add("QThread", make_Qt);
#endif
}
