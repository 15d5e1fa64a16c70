#ifndef QNLIB_TEST_THREAD_WATCH_H
#define QNLIB_TEST_THREAD_WATCH_H

#include "lib_thread.h"

#include <gtest/gtest.h>

#include <atomic>

/// What a monitor thread's callbacks do, and how often they were called. The work waits for the stop event,
/// or fails when it is told to.
struct Watch
{
    std::atomic<int> m_nInits{0}, m_nWorks{0}, m_nDones{0}, m_nStops{0}, m_nNotes{0};
    std::atomic<bool> m_bInit{true}, m_bDone{true}, m_bStop{true};
    std::atomic<DWORD> m_nDone_Takes{0}; ///< milliseconds
    std::atomic<DWORD> m_nWorker{0};     ///< identifiers of the threads
    std::atomic<DWORD> m_nNotified_On{0};
    std::atomic<void (*)(Watch&)> m_pfnOn_Stop{nullptr};
    std::atomic<void (*)(Watch&)> m_pfnOn_Note{nullptr};
    void* m_pOwner = nullptr;
    Lib_Event m_evStop;
    Lib_Event m_evFail;
    Lib_Event m_evDone;
    Lib_Event m_evNoted;

    Watch()
    {
        m_evFail.Create(nullptr, true, false);
        m_evDone.Create(nullptr, true, false);
        m_evNoted.Create(nullptr, false, false);
    }

    static bool Begin(void* pContext, Lib_Result&)
    {
        Watch& watch = *static_cast<Watch*>(pContext);
        ++watch.m_nInits;
        watch.m_nWorker = GetCurrentThreadId();
        return watch.m_bInit;
    }

    static bool Work(void* pContext, Lib_Result& result)
    {
        Watch& watch = *static_cast<Watch*>(pContext);
        ++watch.m_nWorks;
        const HANDLE events[] = {watch.m_evFail, watch.m_evStop};
        const bool bFailed = WaitForMultipleObjects(2, events, FALSE, INFINITE) == WAIT_OBJECT_0;
        if (bFailed)
        {
            result.Set_Result(1234, 1);
        }
        return !bFailed;
    }

    static bool End(void* pContext, Lib_Result&)
    {
        Watch& watch = *static_cast<Watch*>(pContext);
        EXPECT_TRUE(watch.m_nWorker == GetCurrentThreadId() || watch.m_nWorker == 0);
        watch.m_evDone.Wait(watch.m_nDone_Takes);
        ++watch.m_nDones;
        return watch.m_bDone;
    }

    static bool On_Stop(void* pContext, Lib_Result& result)
    {
        Watch& watch = *static_cast<Watch*>(pContext);
        ++watch.m_nStops;
        if (watch.m_pfnOn_Stop != nullptr)
        {
            watch.m_pfnOn_Stop.load()(watch);
        }
        if (!watch.m_bStop)
        {
            result.Set_Result(77, 2);
        }
        return watch.m_bStop;
    }

    static long long On_Note(unsigned int nCode, unsigned long long nParam, long long nContext)
    {
        Watch& watch = *reinterpret_cast<Watch*>(nContext);
        EXPECT_EQ(0U, nCode);
        EXPECT_EQ(0U, nParam);
        ++watch.m_nNotes;
        watch.m_nNotified_On = GetCurrentThreadId();
        if (watch.m_pfnOn_Note != nullptr)
        {
            watch.m_pfnOn_Note.load()(watch);
        }
        watch.m_evNoted.Set();
        return 0;
    }
};

/// A monitor thread that lets a test look into it.
struct Monitor : Lib_Monitor_Thread
{
    using Lib_Monitor_Thread::m_dwTimeout;
    using Lib_Monitor_Thread::m_evFinished;
    using Lib_Monitor_Thread::m_evStarted;
    using Lib_Monitor_Thread::m_evStop;
    using Lib_Monitor_Thread::m_hThread;
    using Lib_Monitor_Thread::m_lckSynchronizer_Counter;
    using Lib_Monitor_Thread::start_Work_Internal;
    using Lib_Monitor_Thread::stop_Work_Internal;

    bool Init_For(Watch& watch)
    {
        Lib_Result ignored;
        watch.m_pOwner = this;
        return Init(Watch::Begin, Watch::Work, Watch::End, Watch::On_Stop, Watch::On_Note, &watch,
                    &watch.m_evStop, ignored, 2000);
    }
    unsigned long Get_Users() const { return m_lckSynchronizer_Counter.Get_Counter(); }
    bool Has_Thread() const { return m_hThread != nullptr; }
};

inline bool Is_Set(Lib_Event& event) { return event.Wait(0) == WAIT_OBJECT_0; }

#endif
