#include "thread/monitor_thread.h"

#include "foundation/trace_text.h"
#include "thread/impersonated_thread.h"
#include "thread/monitor_run.h"

#include <iterator>
#include <new>

namespace
{

bool fail(Lib_Result& result, unsigned int nCode)
{
    result.Set_Result(nCode, SOURCE_PLATFORM);
    return false;
}

bool fail_By_Platform(Lib_Result& result) { return fail(result, GetLastError()); }

/// WAIT_OBJECT_0 for the event, the next number for the thread.
DWORD wait_For_Either(const Lib_Event& Event, const Lib_Handle& Thread)
{
    const HANDLE ahObjects[] = {Event, Thread};
    return WaitForMultipleObjects(static_cast<DWORD>(std::size(ahObjects)), ahObjects, FALSE, INFINITE);
}

constexpr DWORD WAIT_THREAD = WAIT_OBJECT_0 + 1;

} // namespace

/// Has the object's lock as long as it lives, if that was to be had. A lock that its owner abandoned is had,
/// although the locker answers false.
class Lib_Monitor_Thread::Guard
{
public:
    enum class User
    {
        No,
        Added
    };

    Guard(Lib_Locker_With_Counter& Locker, User user)
        : m_Locker(Locker), m_bLocked(Locker.take(INFINITE, user == User::Added) != WAIT_FAILED)
    {
    }
    Guard(const Guard&) = delete;
    Guard& operator=(const Guard&) = delete;
    ~Guard()
    {
        if (m_bLocked)
        {
            m_Locker.Unlock();
        }
    }

    bool Is_Locked() const { return m_bLocked; }
    bool Is_Only_User() const { return m_Locker.Get_Counter() == 1; }

    void Remove_User_And_Unlock()
    {
        m_Locker.Decrease_And_Unlock();
        m_bLocked = false;
    }

    void Unlock()
    {
        m_Locker.Unlock();
        m_bLocked = false;
    }

private:
    Lib_Locker_With_Counter& m_Locker;
    bool m_bLocked;
};

Lib_Monitor_Thread::Lib_Monitor_Thread() = default;

Lib_Monitor_Thread::Lib_Monitor_Thread(const Lib_Monitor_Thread& Source)
    : m_lckSynchronizer_Counter(Source.m_lckSynchronizer_Counter), m_hThread(Source.m_hThread),
      m_evStarted(Source.m_evStarted), m_evStop(Source.m_evStop), m_evFinished(Source.m_evFinished)
{
    copy_Fields(Source);
}

Lib_Monitor_Thread& Lib_Monitor_Thread::operator=(const Lib_Monitor_Thread& Source)
{
    if (this == &Source)
    {
        return *this;
    }
    if (is_Own_Run())
    {
        end_For_Good();
    }
    m_lckSynchronizer_Counter = Source.m_lckSynchronizer_Counter;
    m_hThread = Source.m_hThread;
    m_evStarted = Source.m_evStarted;
    m_evStop = Source.m_evStop;
    m_evFinished = Source.m_evFinished;
    copy_Fields(Source);
    return *this;
}

void Lib_Monitor_Thread::copy_Fields(const Lib_Monitor_Thread& Source)
{
    m_bInitialized = Source.m_bInitialized;
    m_bActive = Source.m_bActive.load();
    m_dwTimeout = Source.m_dwTimeout;
    m_pContext = Source.m_pContext;
    m_pfnThread_Init = Source.m_pfnThread_Init;
    m_pfnThread_Work = Source.m_pfnThread_Work;
    m_pfnThread_Done = Source.m_pfnThread_Done;
    m_pfnStop_Requested = Source.m_pfnStop_Requested;
    m_pfnNotify = Source.m_pfnNotify;
    m_pRun = Source.m_pRun;
}

Lib_Monitor_Thread::~Lib_Monitor_Thread() { end_For_Good(); }

/// Free. If the lock is not to be had, since memory is short for a thread that never waited, at least the
/// object's own worker is stopped and ends: nobody else uses the object now. There is none in a forked child.
void Lib_Monitor_Thread::end_For_Good()
{
    Lib_Result ignored;
    Free(ignored);
    DWORD dwExit_Code = 0;
    if (!m_bInitialized || !is_Own_Run() || !GetExitCodeThread(m_hThread, &dwExit_Code) ||
        dwExit_Code != STILL_ACTIVE)
    {
        return;
    }
    m_pRun->m_bStopped = true;
    const bool bWas_Active = m_bActive.exchange(false);
    m_evStop.Set();
    if (bWas_Active && m_pfnStop_Requested != nullptr)
    {
        m_pfnStop_Requested(m_pContext, ignored);
    }
    m_pRun->m_bOver.wait(false);
}

bool Lib_Monitor_Thread::is_Own_Run() const
{
    return m_hThread != nullptr && m_pRun != nullptr && m_pRun->m_pStarted_By == this;
}

bool Lib_Monitor_Thread::Init(Worker_Callback pfnThread_Init, Worker_Callback pfnThread_Work,
                              Worker_Callback pfnThread_Done, Worker_Callback pfnStop_Requested,
                              Notify_Callback pfnNotify, void* pContext, Lib_Event* pStop_Event, Lib_Result&,
                              unsigned int dwTimeout)
{
    Guard guard(m_lckSynchronizer_Counter, Guard::User::No);
    if (!guard.Is_Locked())
    {
        return false;
    }
    if (m_bInitialized)
    {
        LIBT_PRINT_STRING(Trace_Text<L"m_lckSynchronizer_Counter unlocking">());
        guard.Unlock();
        LIBT_PRINT_STRING(Trace_Text<L"m_lckSynchronizer_Counter unlocked">());
        return false;
    }
    m_bActive = false;
    m_dwTimeout = dwTimeout;
    m_pContext = pContext;
    for (Lib_Event* pEvent : {&m_evStarted, &m_evStop, &m_evFinished})
    {
        pEvent->Create(nullptr, true, false);
    }
    Get_Control_Events(pStop_Event);
    m_pfnThread_Init = pfnThread_Init;
    m_pfnThread_Work = pfnThread_Work;
    m_pfnThread_Done = pfnThread_Done;
    m_pfnStop_Requested = pfnStop_Requested;
    m_pfnNotify = pfnNotify;
    m_bInitialized = true;
    return true;
}

bool Lib_Monitor_Thread::Start(Lib_Result& result)
{
    Guard guard(m_lckSynchronizer_Counter, Guard::User::Added);
    if (!guard.Is_Locked())
    {
        return fail_By_Platform(result);
    }
    if (guard.Is_Only_User() && !start_Work_Internal(result))
    {
        guard.Remove_User_And_Unlock();
        return false;
    }
    return true;
}

bool Lib_Monitor_Thread::Stop(Lib_Result& result)
{
    LIBT_PRINT_THREAD_INFO(false);
    Guard guard(m_lckSynchronizer_Counter, Guard::User::No);
    if (!guard.Is_Locked())
    {
        return fail_By_Platform(result);
    }
    if (guard.Is_Only_User() && !stop_Work_Internal(result))
    {
        return false;
    }
    guard.Remove_User_And_Unlock();
    return true;
}

bool Lib_Monitor_Thread::Free(Lib_Result& result)
{
    Guard guard(m_lckSynchronizer_Counter, Guard::User::No);
    if (!guard.Is_Locked())
    {
        return fail_By_Platform(result);
    }
    if (!m_bInitialized)
    {
        guard.Unlock();
        LIBT_PRINT_WARNING(Trace_Text<L"tried to free monitor thread that is not initted">());
        return false;
    }
    m_lckSynchronizer_Counter.Set_Counter(0);
    const bool bStopped = stop_Work_Internal(result);
    if (is_Own_Run())
    {
        await_Worker(); // also when the stop has failed; another view's worker does not read this object
    }
    m_dwTimeout = 0;
    m_pContext = nullptr;
    close_Events();
    m_pfnThread_Init = m_pfnThread_Work = m_pfnThread_Done = m_pfnStop_Requested = nullptr;
    m_pfnNotify = nullptr;
    m_bInitialized = false;
    return bStopped;
}

void Lib_Monitor_Thread::close_Events()
{
    for (Lib_Event* pEvent : {&m_evStarted, &m_evStop, &m_evFinished})
    {
        pEvent->Reset();
        pEvent->Close();
        pEvent->Set_Name(nullptr);
    }
}

void Lib_Monitor_Thread::Get_Control_Events(Lib_Event* pStop_Event) const
{
    if (pStop_Event != nullptr)
    {
        *pStop_Event = m_evStop;
    }
}

void Lib_Monitor_Thread::Get_Control_Event_Names(Lib_String* pStop_Event_Name) const
{
    if (pStop_Event_Name != nullptr)
    {
        *pStop_Event_Name = m_evStop.Get_Name();
    }
}

bool Lib_Monitor_Thread::start_Work_Internal(Lib_Result& result)
{
    if (m_bActive && !has_Failed())
    {
        return m_hThread != nullptr || fail(result, CODE_CONTRADICTION);
    }
    if (m_hThread != nullptr)
    {
        await_Worker(); // a failed one may have its last steps before it
        m_hThread.Close();
    }
    LIBT_PRINT_THREAD_INFO(false);
    for (const Lib_Event* pEvent : {&m_evStarted, &m_evStop, &m_evFinished})
    {
        pEvent->Reset();
    }
    m_bActive = true;
    if (!make_Worker(result) || !wait_For_Start(result))
    {
        m_bActive = false;
        return false;
    }
    return true;
}

bool Lib_Monitor_Thread::make_Run(Lib_Result& result)
{
    try
    {
        m_pRun = std::make_shared<Run>(this);
        return true;
    }
    catch (const std::bad_alloc&)
    {
        return fail(result, ERROR_NOT_ENOUGH_MEMORY);
    }
}

bool Lib_Monitor_Thread::make_Worker(Lib_Result& result)
{
    void* hThread = nullptr;
    if (!make_Run(result) ||
        !Lib_Create_Impersonated_Thread_Ex(nullptr, 0, PROC_Work_Internal, this, CREATE_SUSPENDED, result,
                                           nullptr, nullptr, &hThread))
    {
        LIBT_PRINT_ERROR(Trace_Text<L"Failed to start thread\n">());
        return false;
    }
    m_hThread.Attach(hThread);
    LIBT_PRINT_STRING(Trace_Text<L"thread created">());
    if (ResumeThread(m_hThread) == static_cast<DWORD>(-1))
    {
        fail_By_Platform(result);
        TerminateThread(m_hThread, 0); // it has not run, and never will
        m_hThread.Close();
        return false;
    }
    return true;
}

bool Lib_Monitor_Thread::wait_For_Start(Lib_Result& result)
{
    const DWORD dwWait = wait_For_Either(m_evStarted, m_hThread);
    if (dwWait == WAIT_OBJECT_0)
    {
        m_evStarted.Reset();
        return true;
    }
    if (dwWait == WAIT_THREAD)
    {
        m_hThread.Close();
        return false;
    }
    // Nobody will stop a worker that came up all the same: it has to end now.
    fail_By_Platform(result);
    m_bActive = false;
    m_evStop.Set();
    WaitForSingleObject(m_hThread, INFINITE);
    return false;
}

bool Lib_Monitor_Thread::stop_Work_Internal(Lib_Result& result)
{
    if (!m_bActive)
    {
        m_evStop.Set();
        return m_hThread == nullptr || fail(result, CODE_CONTRADICTION);
    }
    if (m_hThread == nullptr)
    {
        return fail(result, CODE_CONTRADICTION);
    }
    m_bActive = false;
    if (m_pRun != nullptr)
    {
        m_pRun->m_bStopped = true;
    }
    if (!SetEvent(m_evStop)) // says why also for an event that could not be made
    {
        return fail_By_Platform(result);
    }
    if (m_pfnStop_Requested != nullptr && !m_pfnStop_Requested(m_pContext, result))
    {
        return false;
    }
    LIBT_PRINT_STRING(Trace_Text<L"Waiting for thread to finish">());
    const DWORD dwWait = wait_For_End();
    LIBT_PRINT_STRING(Trace_Text<L"Wait finished">());
    const bool bInOrder = take_Exit(dwWait, result);
    m_hThread.Close();
    return bInOrder;
}

/// What the end of the wait says of the stop; the events are made ready for the next run.
bool Lib_Monitor_Thread::take_Exit(DWORD dwWait, Lib_Result& result)
{
    DWORD dwExit_Code = IN_ORDER;
    if (dwWait == WAIT_THREAD && !GetExitCodeThread(m_hThread, &dwExit_Code))
    {
        fail_By_Platform(result);
        dwExit_Code = IN_ORDER;
    }
    const bool bWaited = dwWait == WAIT_OBJECT_0 || dwWait == WAIT_THREAD;
    if (bWaited)
    {
        m_evFinished.Reset();
    }
    else
    {
        fail_By_Platform(result);
        WaitForSingleObject(m_hThread, INFINITE); // it still needs the stop event
    }
    m_evStop.Reset();
    return bWaited && dwExit_Code == IN_ORDER;
}

/// Waits until the worker says that it has finished (WAIT_OBJECT_0) or has ended without a word (the next
/// number). A copy's worker sets the same event; that one does not count.
DWORD Lib_Monitor_Thread::wait_For_End()
{
    const auto is_Over = [this] { return m_pRun == nullptr || m_pRun->m_bOver; };
    DWORD dwWait = WAIT_OBJECT_0;
    do
    {
        dwWait = wait_For_Either(m_evFinished, m_hThread);
    } while (dwWait == WAIT_OBJECT_0 && !is_Over() && m_evFinished.Reset() && !is_Over());
    return dwWait;
}

/// Waits, if there is a worker, until it does not touch the object any more.
void Lib_Monitor_Thread::await_Worker()
{
    if (m_hThread == nullptr)
    {
        return;
    }
    const DWORD dwWait = wait_For_End();
    if (dwWait != WAIT_OBJECT_0 && dwWait != WAIT_THREAD)
    {
        WaitForSingleObject(m_hThread, INFINITE);
    }
}

bool Lib_Monitor_Thread::has_Failed() const { return m_pRun != nullptr && m_pRun->m_bFailed; }
