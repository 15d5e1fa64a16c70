#include "failing_allocator.h"
#include "lib_thread.h"
#include "test_text.h"

#include <gtest/gtest.h>

#include <chrono>
#include <thread>

using namespace std::chrono_literals;
using namespace test_support;

namespace
{

bool Work(void* pContext, Lib_Result&)
{
    return static_cast<Lib_Event*>(pContext)->Wait(INFINITE) == WAIT_OBJECT_0;
}

bool Fail(void*, Lib_Result&) { return false; }

long long Note(unsigned int, unsigned long long, long long nContext)
{
    reinterpret_cast<Lib_Event*>(nContext)->Set();
    return 0;
}

/// What the platform may keep for later, as more threads than before may be there at once; far less than what
/// a loss in each round would come to.
constexpr long long LASTING = 8192;

/// Threads give back what they had shortly after one could wait for them.
bool Are_There_Again(long long nBytes)
{
    for (int i = 0; i < 2000 && Outstanding_Bytes() > nBytes; ++i)
    {
        std::this_thread::sleep_for(1ms);
    }
    return Outstanding_Bytes() <= nBytes;
}

} // namespace

TEST(Monitor_Thread_Allocation, Starts_And_Stops_Or_Is_Left_As_It_Was)
{
    Lib_Event evStop;
    const auto start_And_Stop = [&](unsigned int nNth)
    {
        Lib_Result result;
        Lib_Monitor_Thread monitor;
        EXPECT_TRUE(monitor.Init(nullptr, Work, nullptr, nullptr, nullptr, &evStop, &evStop, result, 0));
        const auto use = [&]
        {
            const bool bStarted = monitor.Start(result);
            EXPECT_EQ(bStarted, monitor.Is_Active());
            EXPECT_TRUE(bStarted || result.Get_Result_Code() != 0);
            EXPECT_TRUE(monitor.Stop(result) || bStarted);
        };
        const bool bFailed = Call_Failing(nNth, use).m_bFailed;
        EXPECT_FALSE(monitor.Is_Active());
        EXPECT_TRUE(monitor.Start(result));
        return bFailed;
    };
    EXPECT_LT(0U, Fail_Each_Allocation(start_And_Stop));
    const long long nBefore = Outstanding_Bytes();
    for (unsigned int i = 0; i < 500; ++i)
    {
        start_And_Stop(1 + i % 5);
    }
    EXPECT_TRUE(Are_There_Again(nBefore + LASTING)) << Outstanding_Bytes() - nBefore << " bytes are lost";
}

TEST(Monitor_Thread_Allocation, A_Failure_That_Cannot_Be_Told_Is_Not)
{
    static Lib_Event evNoted; // a late note finds it
    EXPECT_TRUE(evNoted.Create(nullptr, false, false));
    bool bStarted = false;
    const auto is_Told = [&](unsigned int nNth, unsigned int nPatience)
    {
        Lib_Result result;
        Lib_Monitor_Thread monitor;
        monitor.Init(nullptr, Fail, nullptr, nullptr, Note, &evNoted, nullptr, result, 0);
        const Failing_Allocation failure(nNth);
        bStarted = monitor.Start(result);
        const bool bTold = bStarted && evNoted.Wait_Until_Object_0(nPatience);
        monitor.Free(result);
        return bTold;
    };
    constexpr unsigned int NONE = 10000; // the number of an allocation that nobody comes to
    EXPECT_TRUE(is_Told(NONE, 10000));
    const long long nBefore = Outstanding_Bytes();
    unsigned int nUntold = 0;
    for (unsigned int nNth = 1; nNth <= 12; ++nNth)
    {
        nUntold += !is_Told(nNth, 30) && bStarted;
    }
    EXPECT_TRUE(nUntold != 0 || Windows_Target) << "runs that began and failed; Windows finds other memory";
    evNoted.Reset();
    EXPECT_TRUE(is_Told(NONE, 10000));
    EXPECT_TRUE(Are_There_Again(nBefore + LASTING)) << Outstanding_Bytes() - nBefore << " bytes are lost";
}
