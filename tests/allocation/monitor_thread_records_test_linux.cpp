#include "lib_thread.h"
#include "platform/system_calls.h"

#include <gtest/gtest.h>

#include <atomic>
#include <latch>
#include <memory>
#include <thread>
#include <vector>

namespace
{

struct Watch
{
    std::atomic<bool> m_bDone = false;
    Lib_Event m_evStop;
};

bool Work(void* pContext, Lib_Result&)
{
    return static_cast<Watch*>(pContext)->m_evStop.Wait(INFINITE) == WAIT_OBJECT_0;
}

bool Done(void* pContext, Lib_Result&)
{
    static_cast<Watch*>(pContext)->m_bDone = true;
    return true;
}

/// Calls `check` on a thread that cannot wait, since there is no memory for what the platform keeps of it:
/// more threads at once than there have ever been, so that some find none to use again.
template <class Check>
void On_A_Thread_That_Cannot_Wait(const Check& check)
{
    constexpr unsigned int THREADS = 60;
    const qn_platform::System_Calls saved = qn_platform::system_calls;
    qn_platform::system_calls.allocate_aligned = [](std::size_t, std::size_t) -> void* { return nullptr; };
    std::atomic<unsigned int> nChecks = 0;
    std::latch all(THREADS);
    Lib_Event evAny;
    EXPECT_TRUE(evAny.Create(nullptr, true, false));
    std::vector<std::thread> threads;
    for (unsigned int i = 0; i < THREADS; ++i)
    {
        threads.emplace_back(
            [&]
            {
                if (evAny.Wait(0) == WAIT_FAILED && nChecks++ == 0)
                {
                    check();
                }
                all.arrive_and_wait();
            });
    }
    for (std::thread& each : threads)
    {
        each.join();
    }
    qn_platform::system_calls = saved;
    EXPECT_LT(0U, nChecks);
}

} // namespace

TEST(Monitor_Thread_Records, A_Lock_That_Fails_Is_None_And_Still_No_Worker_Outlives_Its_Object)
{
    Watch watch;
    Lib_Result result;
    auto pMonitor = std::make_unique<Lib_Monitor_Thread>();
    EXPECT_TRUE(pMonitor->Init(nullptr, Work, Done, nullptr, nullptr, &watch, &watch.m_evStop, result, 0));
    EXPECT_TRUE(pMonitor->Start(result));
    On_A_Thread_That_Cannot_Wait(
        [&]
        {
            Lib_Result failure;
            EXPECT_FALSE(pMonitor->Start(failure));
            EXPECT_EQ(DWORD{ERROR_NOT_ENOUGH_MEMORY}, failure.Get_Result_Code());
            EXPECT_FALSE(pMonitor->Stop(failure));
            EXPECT_FALSE(pMonitor->Free(failure));
            EXPECT_TRUE(pMonitor->Is_Active());
            EXPECT_FALSE(watch.m_bDone);
            pMonitor.reset();
            EXPECT_TRUE(watch.m_bDone);
        });
}
