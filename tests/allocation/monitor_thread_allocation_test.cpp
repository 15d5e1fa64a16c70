#include "failing_allocator.h"
#include "lib_thread.h"

#include <gtest/gtest.h>

#include <chrono>
#include <new>
#include <optional>
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
        bool bFailed = false;
        Lib_Result result;
        Lib_Monitor_Thread monitor;
        EXPECT_TRUE(monitor.Init(nullptr, Work, nullptr, nullptr, nullptr, &evStop, &evStop, result, 0));
        {
            const Failing_Allocation failure(nNth);
            const bool bStarted = monitor.Start(result);
            EXPECT_EQ(bStarted, monitor.Is_Active());
            EXPECT_TRUE(bStarted || result.Get_Result_Code() != 0);
            EXPECT_TRUE(monitor.Stop(result) || bStarted);
            bFailed = failure.Has_Failed();
        }
        EXPECT_FALSE(monitor.Is_Active());
        EXPECT_EQ(monitor.Start(result),
                  monitor.Is_Active()); // after a stop that failed there is a user left
        return bFailed;
    };
    start_And_Stop(10000);
    std::this_thread::sleep_for(50ms);
    const long long nBefore = Outstanding_Bytes();
    EXPECT_LT(0U, Fail_Each_Allocation(start_And_Stop));
    EXPECT_TRUE(Are_There_Again(nBefore)) << Outstanding_Bytes() - nBefore << " bytes are lost";
}

TEST(Monitor_Thread_Allocation, A_Failure_That_Cannot_Be_Told_Is_Not)
{
    Lib_Event evNoted;
    EXPECT_TRUE(evNoted.Create(nullptr, false, false));
    const auto fail = [&](unsigned int nNth)
    {
        const Failing_Allocation failure(nNth);
        Lib_Result result;
        Lib_Monitor_Thread monitor;
        monitor.Init(nullptr, Fail, nullptr, nullptr, Note, &evNoted, nullptr, result, 0);
        const bool bStarted = monitor.Start(result);
        monitor.Free(result);
        return !bStarted || !evNoted.Wait_Until_Object_0(50);
    };
    const auto road = [&](unsigned int nNth)
    {
        try
        {
            const bool bUntold = fail(nNth);
            evNoted.Reset();
            return bUntold;
        }
        catch (const std::bad_alloc&) // a monitor thread whose lock has no name
        {
            return true;
        }
    };
    road(10000);
    std::this_thread::sleep_for(50ms);
    const long long nBefore = Outstanding_Bytes();
    for (unsigned int nNth = 1; nNth <= 60; ++nNth)
    {
        road(nNth);
    }
    EXPECT_FALSE(road(10000));
    EXPECT_TRUE(Are_There_Again(nBefore)) << Outstanding_Bytes() - nBefore << " bytes are lost";
}

TEST(Monitor_Thread_Allocation, Without_A_Lock_It_Does_Nothing)
{
    const auto use = [](Lib_Monitor_Thread& monitor)
    {
        Lib_Result result;
        if (monitor.Init(nullptr, Fail, nullptr, nullptr, nullptr, nullptr, nullptr, result, 0))
        {
            return 0U;
        }
        EXPECT_FALSE(monitor.Start(result));
        EXPECT_EQ(Lib_Result(6, 1), result);
        EXPECT_FALSE(monitor.Stop(result));
        EXPECT_FALSE(monitor.Free(result));
        EXPECT_FALSE(monitor.Is_Active());
        return 1U;
    };
    unsigned int nWithout_Lock = 0;
    Fail_Each_Allocation_Without_Loss(
        [&](unsigned int nNth)
        {
            std::optional<Lib_Monitor_Thread> monitor;
            bool bFailed = true;
            try
            {
                const Failing_Allocation failure(nNth);
                monitor.emplace();
                bFailed = failure.Has_Failed();
            }
            catch (const std::bad_alloc&) // its name
            {
                return true;
            }
            nWithout_Lock += use(*monitor);
            return bFailed;
        });
    printf("without lock %u\n", nWithout_Lock);
}
