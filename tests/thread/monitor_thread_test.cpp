#include "client.h"
#include "watch.h"

#include <thread>

namespace
{

const Lib_Result CONTRADICTION(0x80090027, 1);
const Lib_Result INVALID_HANDLE(6, 1);
const Lib_Result NO_TOKEN(1008, 1); // nobody is impersonated

class Monitor_Thread : public testing::Test
{
protected:
    Monitor_Thread() { EXPECT_TRUE(m_Monitor.Init_For(m_Watch)); }
    ~Monitor_Thread() override { m_Watch.m_pfnOn_Note = nullptr; }

    bool start() { return m_Monitor.Start(m_Result); }
    bool stop() { return m_Monitor.Stop(m_Result); }

    void expect_State(bool bActive, bool bThread, unsigned long nUsers)
    {
        EXPECT_EQ(bActive, m_Monitor.Is_Active());
        EXPECT_EQ(bThread, m_Monitor.Has_Thread());
        EXPECT_EQ(nUsers, m_Monitor.Get_Users());
    }
    void expect_Idle() { expect_State(false, false, 0); }
    void expect_Running(unsigned long nUsers) { expect_State(true, true, nUsers); }
    void expect_Failed() { expect_State(false, true, 0); }
    void expect_Abandoned(unsigned long nUsers) { expect_State(false, true, nUsers); }

    /// The run fails; the notification has been made.
    bool fail()
    {
        m_Watch.m_evFail.Set();
        const bool bNoted = m_Watch.m_evNoted.Wait_Until_Object_0(INFINITE);
        m_Watch.m_evFail.Reset();
        return bNoted;
    }

    Watch m_Watch;
    Lib_Result m_Result;
    Monitor m_Monitor;
};

} // namespace

TEST(Monitor_Thread_Without_Init, Does_Nothing_Of_Use)
{
    const Lib_Result untouched(5, 2);
    Lib_Result result = untouched;
    Monitor monitor;
    EXPECT_EQ(500U, monitor.m_dwTimeout);
    EXPECT_TRUE(monitor.Stop(result));
    EXPECT_FALSE(monitor.Free(result));
    EXPECT_EQ(untouched, result);
    EXPECT_FALSE(monitor.Start(result));
    EXPECT_EQ(INVALID_HANDLE, result);
    EXPECT_FALSE(monitor.Is_Active());
    EXPECT_EQ(0U, monitor.Get_Users());

    Watch watch; // the worker of that start is not left to see this
    EXPECT_TRUE(monitor.Init_For(watch));
    EXPECT_TRUE(monitor.Start(result));
    EXPECT_TRUE(monitor.Stop(result));
    EXPECT_EQ(1, watch.m_nInits);
}

TEST_F(Monitor_Thread, Is_Initialised_Once_And_Hands_Out_Its_Stop_Event)
{
    Watch other;
    EXPECT_FALSE(m_Monitor.Init_For(other));
    EXPECT_TRUE(start());
    EXPECT_TRUE(stop());
    EXPECT_EQ(1, m_Watch.m_nInits);
    Lib_Event event;
    Lib_String strName(L"x");
    m_Monitor.Get_Control_Events(&event);
    m_Monitor.Get_Control_Events(nullptr);
    m_Monitor.Get_Control_Event_Names(&strName);
    m_Monitor.Get_Control_Event_Names(nullptr);
    EXPECT_EQ(0U, strName.Get_Length());
    EXPECT_NE(event.operator void*(), m_Watch.m_evStop.operator void*());
    m_Watch.m_evStop.Reset();
    EXPECT_TRUE(event.Set());
    EXPECT_TRUE(Is_Set(m_Watch.m_evStop));
}

TEST_F(Monitor_Thread, Runs_From_The_First_User_To_The_Last)
{
    EXPECT_TRUE(stop()) << "nothing to do";
    for (int nRun = 1; nRun <= 3; ++nRun)
    {
        EXPECT_TRUE(start());
        EXPECT_TRUE(start());
        expect_Running(2);
        EXPECT_TRUE(stop());
        expect_Running(1);
        EXPECT_EQ(nRun - 1, m_Watch.m_nDones);
        EXPECT_TRUE(stop());
        expect_Idle();
        EXPECT_FALSE(Is_Set(m_Monitor.m_evStop));
        EXPECT_FALSE(Is_Set(m_Monitor.m_evFinished));
        EXPECT_EQ(nRun, m_Watch.m_nInits);
        EXPECT_EQ(nRun, m_Watch.m_nDones);
        EXPECT_EQ(nRun, m_Watch.m_nStops);
    }
    EXPECT_NE(GetCurrentThreadId(), m_Watch.m_nWorker);
    EXPECT_EQ(NO_TOKEN, m_Result);
}

TEST_F(Monitor_Thread, A_Stop_Is_Seen_Before_It_Is_Told)
{
    m_Watch.m_pfnOn_Stop = [](Watch& watch)
    {
        Monitor& monitor = *static_cast<Monitor*>(watch.m_pOwner);
        EXPECT_FALSE(monitor.Is_Active());
        EXPECT_TRUE(Is_Set(watch.m_evStop));
        std::thread([&] { EXPECT_FALSE(monitor.m_lckSynchronizer_Counter.Lock(0)); }).join();
        Lib_Result result;
        EXPECT_FALSE(monitor.Stop(result)) << "the lock is recursive, but a stop is under way";
        EXPECT_EQ(CONTRADICTION, result);
    };
    EXPECT_TRUE(start());
    EXPECT_TRUE(stop());
    expect_Idle();
    EXPECT_EQ(1, m_Watch.m_nStops);
}

TEST_F(Monitor_Thread, A_Worker_That_Does_Not_Come_Up_Fails_The_Start)
{
    m_Watch.m_bInit = false;
    for (int nTry = 1; nTry <= 2; ++nTry)
    {
        EXPECT_FALSE(start());
        expect_Idle();
        EXPECT_EQ(nTry, m_Watch.m_nInits);
    }
    EXPECT_EQ(NO_TOKEN, m_Result);
    EXPECT_EQ(0, m_Watch.m_nWorks);
    EXPECT_EQ(0, m_Watch.m_nDones);
    m_Watch.m_bInit = true;
    EXPECT_TRUE(start());
    EXPECT_TRUE(stop());

    Monitor idle;
    EXPECT_TRUE(idle.Init(Watch::Begin, nullptr, nullptr, nullptr, nullptr, &m_Watch, nullptr, m_Result, 0));
    EXPECT_FALSE(idle.Start(m_Result)) << "nothing to work";
    EXPECT_FALSE(idle.Is_Active());
    EXPECT_EQ(3, m_Watch.m_nInits);
}

TEST_F(Monitor_Thread, Reports_A_Worker_That_Fails)
{
    EXPECT_TRUE(start());
    EXPECT_TRUE(start());
    EXPECT_TRUE(fail());
    expect_Failed();
    EXPECT_EQ(1, m_Watch.m_nNotes);
    EXPECT_NE(m_Watch.m_nWorker, m_Watch.m_nNotified_On);
    EXPECT_EQ(1, m_Watch.m_nDones);
    EXPECT_TRUE(m_Monitor.m_evFinished.Wait_Until_Object_0(INFINITE));
    EXPECT_TRUE(stop());
    expect_Failed();
    EXPECT_EQ(0, m_Watch.m_nStops);

    EXPECT_TRUE(start());
    expect_Running(1);
    m_Watch.m_nDone_Takes = 50;
    EXPECT_TRUE(stop());
    expect_Idle();
    EXPECT_EQ(2, m_Watch.m_nDones) << "a run after a failed one waits for its own worker";
    EXPECT_FALSE(Is_Set(m_Monitor.m_evFinished));

    EXPECT_TRUE(start());
    EXPECT_TRUE(fail());
    EXPECT_FALSE(m_Monitor.Free(m_Result));
    EXPECT_EQ(CONTRADICTION, m_Result);
    EXPECT_TRUE(m_Monitor.Init_For(m_Watch));
    EXPECT_TRUE(start());
    expect_Running(1);
}

TEST_F(Monitor_Thread, Is_Failed_As_A_Whole_While_The_Worker_Still_Ends)
{
    EXPECT_TRUE(start());
    m_Watch.m_nDone_Takes = INFINITE;
    m_Watch.m_evFail.Set();
    while (m_Monitor.Is_Active())
    {
        std::this_thread::yield();
    }
    expect_Failed();
    EXPECT_TRUE(stop());
    m_Watch.m_evFail.Reset();
    std::thread release([this] { m_Watch.m_evDone.Set(); });
    EXPECT_TRUE(start()) << "a new worker, after the old one";
    release.join();
    EXPECT_EQ(1, m_Watch.m_nDones);
    EXPECT_EQ(2, m_Watch.m_nInits);
    expect_Running(1);
    EXPECT_TRUE(m_Watch.m_evNoted.Wait_Until_Object_0(INFINITE)) << "of the first worker's failure";
}

TEST_F(Monitor_Thread, The_Notification_May_Start_Stop_And_Free)
{
    m_Watch.m_pfnOn_Note = [](Watch& watch)
    {
        Monitor& monitor = *static_cast<Monitor*>(watch.m_pOwner);
        Lib_Result result;
        watch.m_evFail.Reset();
        EXPECT_TRUE(monitor.Stop(result));
        EXPECT_TRUE(monitor.Start(result));
        EXPECT_TRUE(monitor.Is_Active());
        EXPECT_TRUE(monitor.Free(result));
    };
    EXPECT_TRUE(start());
    m_Watch.m_evFail.Set();
    EXPECT_TRUE(m_Watch.m_evNoted.Wait_Until_Object_0(INFINITE));
    EXPECT_EQ(2, m_Watch.m_nInits);
    EXPECT_EQ(2, m_Watch.m_nDones);
    EXPECT_FALSE(m_Monitor.Free(m_Result));
}

TEST_F(Monitor_Thread, Needs_No_Callback_But_The_Work)
{
    Monitor monitor;
    Watch watch;
    EXPECT_TRUE(
        monitor.Init(nullptr, Watch::Work, nullptr, nullptr, nullptr, &watch, &watch.m_evStop, m_Result, 0));
    for (const DWORD nOrdered : {1u, 0u}) // the exit code tells
    {
        EXPECT_TRUE(monitor.Start(m_Result));
        const Lib_Handle thread(monitor.m_hThread);
        EXPECT_TRUE(nOrdered == 1 ? monitor.Stop(m_Result) : watch.m_evFail.Set());
        EXPECT_EQ(DWORD{WAIT_OBJECT_0}, WaitForSingleObject(thread, INFINITE));
        DWORD nCode = 77;
        EXPECT_TRUE(GetExitCodeThread(thread, &nCode));
        EXPECT_EQ(nOrdered, nCode);
        EXPECT_FALSE(monitor.Is_Active());
        EXPECT_EQ(nOrdered == 0, monitor.Has_Thread());
    }
}

TEST_F(Monitor_Thread, A_Stop_That_Is_Refused_Is_Abandoned)
{
    m_Watch.m_bStop = false;
    EXPECT_TRUE(start());
    EXPECT_FALSE(stop());
    EXPECT_EQ(Lib_Result(77, 2), m_Result);
    expect_Abandoned(1);
    EXPECT_TRUE(Is_Set(m_Monitor.m_evStop));
    EXPECT_FALSE(stop());
    EXPECT_EQ(CONTRADICTION, m_Result);
    EXPECT_TRUE(start());
    expect_Abandoned(2);
    EXPECT_TRUE(stop());
    EXPECT_FALSE(stop());
    expect_Abandoned(1);
    EXPECT_EQ(1, m_Watch.m_nStops);
    EXPECT_FALSE(m_Monitor.Free(m_Result));
    EXPECT_EQ(1, m_Watch.m_nDones) << "the worker has ended";
    EXPECT_TRUE(m_Monitor.Init_For(m_Watch));
    m_Watch.m_bStop = true;
    EXPECT_TRUE(start());
    EXPECT_TRUE(stop());
    expect_Idle();
}

TEST_F(Monitor_Thread, Is_Freed_Whatever_The_Number_Of_Users)
{
    EXPECT_EQ(2000U, m_Monitor.m_dwTimeout);
    EXPECT_TRUE(start());
    EXPECT_TRUE(start());
    EXPECT_TRUE(m_Monitor.Free(m_Result));
    expect_Idle();
    EXPECT_EQ(1, m_Watch.m_nDones);
    EXPECT_EQ(0U, m_Monitor.m_dwTimeout);
    for (const Lib_Event* pEvent : {&m_Monitor.m_evStarted, &m_Monitor.m_evStop, &m_Monitor.m_evFinished})
    {
        EXPECT_EQ(nullptr, pEvent->operator void*());
    }

    for (const bool bWilling : {true, false})
    {
        Watch watch;
        watch.m_bStop = bWilling;
        watch.m_nDone_Takes = 50;
        {
            Monitor monitor;
            EXPECT_TRUE(monitor.Init_For(watch));
            EXPECT_TRUE(monitor.Start(m_Result));
            EXPECT_EQ(bWilling, monitor.Free(m_Result));
            EXPECT_EQ(1, watch.m_nDones);
            EXPECT_TRUE(monitor.Init_For(watch));
            EXPECT_TRUE(monitor.Start(m_Result));
        }
        EXPECT_EQ(2, watch.m_nDones) << "no worker is left when the object goes";
    }
}

TEST_F(Monitor_Thread, Contradictions_Are_Refused)
{
    EXPECT_TRUE(start());
    const Lib_Handle thread(m_Monitor.m_hThread);
    m_Monitor.m_hThread.Close();
    m_Result.Reset_Result();
    EXPECT_FALSE(m_Monitor.start_Work_Internal(m_Result));
    EXPECT_EQ(CONTRADICTION, m_Result);
    m_Result.Reset_Result();
    EXPECT_FALSE(stop());
    EXPECT_EQ(CONTRADICTION, m_Result);
    m_Monitor.m_hThread = thread;
    EXPECT_TRUE(m_Monitor.start_Work_Internal(m_Result));
    EXPECT_TRUE(stop());
    EXPECT_EQ(1, m_Watch.m_nInits);
    EXPECT_TRUE(m_Monitor.stop_Work_Internal(m_Result)) << "idle";
    EXPECT_TRUE(Is_Set(m_Monitor.m_evStop));
    EXPECT_TRUE(start());
    EXPECT_FALSE(Is_Set(m_Monitor.m_evStop)) << "each run begins anew";
}

TEST_F(Monitor_Thread, A_Wait_That_Fails_Leaves_No_Worker)
{
    m_Monitor.m_evStarted.Close();
    EXPECT_FALSE(start());
    EXPECT_EQ(INVALID_HANDLE, m_Result);
    expect_Failed();
    EXPECT_EQ(DWORD{WAIT_OBJECT_0}, WaitForSingleObject(m_Monitor.m_hThread, 0));
    EXPECT_EQ(0, m_Watch.m_nWorks);
    m_Monitor.m_evStarted.Create(nullptr, true, false);

    m_Watch.m_nDone_Takes = 50;
    EXPECT_TRUE(start());
    m_Monitor.m_evFinished.Close();
    EXPECT_FALSE(stop());
    EXPECT_EQ(INVALID_HANDLE, m_Result);
    EXPECT_EQ(1, m_Watch.m_nDones);
    expect_State(false, false, 1);
    EXPECT_FALSE(Is_Set(m_Monitor.m_evStop));
    EXPECT_TRUE(stop());
    expect_Idle();

    // A worker that can't say that it has finished is judged by its exit code.
    for (const bool bDone : {true, false})
    {
        m_Watch.m_bDone = bDone;
        m_Monitor.m_evFinished.Close();
        EXPECT_TRUE(start());
        m_Monitor.m_evFinished.Create(nullptr, true, false);
        EXPECT_EQ(bDone, stop());
        expect_State(false, false, bDone ? 0 : 1);
    }
}

TEST_F(Monitor_Thread, A_Lock_That_Was_Abandoned_Is_Taken_Over)
{
    const auto abandon = [this]
    { std::thread([this] { EXPECT_TRUE(m_Monitor.m_lckSynchronizer_Counter.Lock(INFINITE)); }).join(); };
    abandon();
    EXPECT_TRUE(start());
    expect_Running(1);
    abandon();
    EXPECT_TRUE(stop());
    expect_Idle();
    std::thread([this] { EXPECT_TRUE(start() && stop()); }).join();
}

TEST_F(Monitor_Thread, Works_For_The_Client_Of_The_Thread_That_Starts_It)
{
    static std::atomic<int> s_nFor_Client;
    s_nFor_Client = 0;
    const auto work = [](void*, Lib_Result&)
    {
        s_nFor_Client += test_support::Works_For_Client();
        return false;
    };
    const auto note = [](unsigned int, unsigned long long, long long nContext)
    {
        s_nFor_Client += test_support::Works_For_Client();
        reinterpret_cast<Watch*>(nContext)->m_evNoted.Set();
        return 0LL;
    };
    Monitor monitor;
    EXPECT_TRUE(monitor.Init(nullptr, work, nullptr, nullptr, note, &m_Watch, nullptr, m_Result, 0));
    ASSERT_TRUE(test_support::Impersonate_Client());
    EXPECT_TRUE(monitor.Start(m_Result));
    RevertToSelf();
    EXPECT_TRUE(m_Watch.m_evNoted.Wait_Until_Object_0(INFINITE));
    EXPECT_EQ(2, s_nFor_Client);
    EXPECT_EQ(Lib_Result(), m_Result);
}

TEST_F(Monitor_Thread, A_Copy_Is_A_View_Of_The_Same_Worker)
{
    EXPECT_TRUE(start());
    Monitor view(m_Monitor);
    EXPECT_TRUE(view.Start(m_Result));
    EXPECT_EQ(2U, view.Get_Users());
    expect_Running(1);
    EXPECT_TRUE(view.Stop(m_Result));
    EXPECT_TRUE(view.Stop(m_Result));
    EXPECT_FALSE(view.Is_Active());
    EXPECT_EQ(1, m_Watch.m_nDones);
    EXPECT_TRUE(stop()) << "finds it ended";
    expect_Idle();

    Watch watch;
    EXPECT_TRUE(start());
    {
        Monitor target;
        EXPECT_TRUE(target.Init_For(watch));
        EXPECT_TRUE(target.Start(m_Result));
        target = m_Monitor;
        EXPECT_EQ(1, watch.m_nDones) << "an assignment ends the worker of its target";
        EXPECT_TRUE(target.Is_Active());
        const Monitor& self = m_Monitor;
        m_Monitor = self;
        expect_Running(1);
        EXPECT_EQ(1, m_Watch.m_nDones);
    }
    EXPECT_EQ(2, m_Watch.m_nDones) << "a view stops the worker when it goes";
}

TEST_F(Monitor_Thread, Copies_With_Workers_Of_Their_Own_Wait_For_Their_Own)
{
    Monitor other(m_Monitor);
    EXPECT_TRUE(start());
    EXPECT_TRUE(other.Start(m_Result));
    m_Monitor.m_evFinished.Set(); // as the other's would
    m_Watch.m_nWorker = 0;        // two of them
    EXPECT_EQ(2, m_Watch.m_nInits);
    m_Watch.m_nDone_Takes = 50;
    EXPECT_TRUE(stop());
    EXPECT_EQ(1, m_Watch.m_nDones);
    EXPECT_TRUE(other.Stop(m_Result));
    EXPECT_EQ(2, m_Watch.m_nDones);
}
