#include "foundation/trace_text.h"
#include "thread/impersonated_thread.h"
#include "thread/monitor_run.h"
#include "thread/monitor_thread.h"

#include <cstdint>

// What runs on the worker and on the notification's thread.

unsigned int Lib_Monitor_Thread::PROC_Work_Internal(void* pObject)
{
    return static_cast<Lib_Monitor_Thread*>(pObject)->work();
}

unsigned int Lib_Monitor_Thread::work()
{
    Lib_Result result;
    LIBT_PRINT_DWORD(Trace_Text<L"Thread started. Thread ID is">(), GetCurrentThreadId());
    Run own(this); // for one that no start has made
    const std::shared_ptr<Run> pRun = m_pRun;
    Run& run = pRun != nullptr ? *pRun : own;
    const Lib_Event evFinished(m_evFinished);
    const bool bUp = come_Up(result);
    const unsigned int nExit_Code = bUp ? work_Until_Stopped(run, result) : NOT_IN_ORDER;
    run.m_bOver = true; // from here on the object may be gone
    run.m_bOver.notify_all();
    if (bUp)
    {
        evFinished.Set();
    }
    return nExit_Code;
}

bool Lib_Monitor_Thread::come_Up(Lib_Result& result)
{
    if (m_pfnThread_Work == nullptr)
    {
        result.Set_Result(CODE_CONTRADICTION, SOURCE_PLATFORM);
        return false;
    }
    if (m_pfnThread_Init != nullptr && !m_pfnThread_Init(m_pContext, result))
    {
        return false;
    }
    if (!m_evStarted.Set())
    {
        result.Set_Result(GetLastError(), SOURCE_PLATFORM);
        return false;
    }
    return true;
}

unsigned int Lib_Monitor_Thread::work_Until_Stopped(Run& run, Lib_Result& result)
{
    while (m_bActive && !run.m_bStopped)
    {
        if (!m_pfnThread_Work(m_pContext, result))
        {
            end_Failed(run, result);
            return NOT_IN_ORDER;
        }
    }
    const bool bDone = m_pfnThread_Done == nullptr || m_pfnThread_Done(m_pContext, result);
    return bDone ? IN_ORDER : NOT_IN_ORDER;
}

/// The order of the first three: whoever finds no users finds the run failed, and whoever finds the object
/// not active finds no users. So a new user either belongs to the run that fails or makes a new one, but is
/// never counted for nothing.
void Lib_Monitor_Thread::end_Failed(Run& run, Lib_Result& result)
{
    run.m_bFailed = true;
    m_lckSynchronizer_Counter.Set_Counter(0);
    m_bActive = false;
    LIBT_PRINT_ERROR(Trace_Text<L"Error in monitor work!!!">(), result);
    if (m_pfnThread_Done != nullptr)
    {
        m_pfnThread_Done(m_pContext, result);
    }
    stopped_On_Error();
}

void Lib_Monitor_Thread::stopped_On_Error() { notify_On(0, 0); }

struct Lib_Monitor_Thread::Notification
{
    void* m_pContext;
    unsigned int m_nCode;
    unsigned long long m_nParam;
    Notify_Callback m_pfnNotify;
    Lib_Event* m_pReady; ///< set when the thread has its copy
};

void Lib_Monitor_Thread::notify_On(unsigned int nCode, unsigned long long nParam)
{
    Lib_Event evReady;
    if (m_pfnNotify == nullptr || !evReady.Create(nullptr, true, false) || evReady.Wait(0) != WAIT_TIMEOUT)
    {
        return; // a thread that cannot wait would leave its record to the other one
    }
    Notification record{m_pContext, nCode, nParam, m_pfnNotify, &evReady};
    Lib_Result ignored;
    if (Lib_Create_Impersonated_Thread_Ex(nullptr, 0, start_User_Proc, &record, 0, ignored, nullptr, nullptr,
                                          nullptr))
    {
        evReady.Wait(INFINITE);
    }
}

unsigned int Lib_Monitor_Thread::start_User_Proc(void* pRecord)
{
    const Notification record = *static_cast<const Notification*>(pRecord);
    record.m_pReady->Set(); // from here on the record and the event are gone
    return static_cast<unsigned int>(
        record.m_pfnNotify(record.m_nCode, record.m_nParam,
                           static_cast<long long>(reinterpret_cast<std::intptr_t>(record.m_pContext))));
}
