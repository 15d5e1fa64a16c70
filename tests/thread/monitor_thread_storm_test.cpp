#include "lib_thread.h"

#include <gtest/gtest.h>

#include <atomic>
#include <random>
#include <thread>
#include <vector>

// Monitor threads under many users at once, and workers that fail when they like.

namespace
{

constexpr int USERS = 4;

/// Counts what the callbacks of one monitor thread do, and sees to it that runs do not overlap.
struct Storm
{
    Lib_Monitor_Thread m_Monitor;
    std::atomic<int> m_nBusy{0}, m_nBegun{0}, m_nEnded{0}, m_nFailed{0}, m_nNoted{0};
    std::atomic<unsigned int> m_nFail_In{0}; ///< how many steps of work a run may take before it fails
    unsigned int m_nLeft = 0; ///< the worker's; what overlaps is found by the sanitizer as well
    std::minstd_rand m_Random{3};
    Lib_Event m_evStop;

    static bool Begin(void* pContext, Lib_Result&)
    {
        Storm& storm = *static_cast<Storm*>(pContext);
        EXPECT_EQ(1, ++storm.m_nBusy);
        ++storm.m_nBegun;
        if (storm.m_nFail_In != 0)
        {
            storm.m_nLeft = 1 + static_cast<unsigned int>(storm.m_Random()) % storm.m_nFail_In;
        }
        return true;
    }
    static bool Work(void* pContext, Lib_Result&)
    {
        Storm& storm = *static_cast<Storm*>(pContext);
        storm.m_evStop.Wait(storm.m_nFail_In == 0 ? INFINITE : 0);
        if (storm.m_nFail_In == 0 || --storm.m_nLeft != 0)
        {
            return true;
        }
        ++storm.m_nFailed;
        return false;
    }
    static bool End(void* pContext, Lib_Result&)
    {
        Storm& storm = *static_cast<Storm*>(pContext);
        ++storm.m_nEnded;
        EXPECT_EQ(0, --storm.m_nBusy);
        return true;
    }
    static long long Note(unsigned int, unsigned long long, long long nContext)
    {
        ++reinterpret_cast<Storm*>(nContext)->m_nNoted;
        return 0;
    }

    bool Init()
    {
        Lib_Result ignored;
        return m_Monitor.Init(Begin, Work, End, nullptr, Note, this, &m_evStop, ignored, 0);
    }

    template <class User>
    void Run_Users(const User& user)
    {
        std::vector<std::jthread> users;
        for (unsigned int i = 0; i < USERS; ++i)
        {
            users.emplace_back([&user, i] { user(std::minstd_rand(i + 1)); });
        }
    }

    /// Each failure is told, sooner or later.
    void Wait_For_Notes()
    {
        while (m_nNoted != m_nFailed)
        {
            std::this_thread::yield();
        }
    }
};

} // namespace

TEST(Monitor_Thread_Storm, Users_Come_And_Go_At_Once)
{
    Storm storm;
    ASSERT_TRUE(storm.Init());
    storm.Run_Users(
        [&](std::minstd_rand)
        {
            Lib_Result result;
            for (int i = 0; i < 300; ++i)
            {
                EXPECT_TRUE(storm.m_Monitor.Start(result));
                EXPECT_TRUE(storm.m_Monitor.Is_Active());
                EXPECT_TRUE(storm.m_Monitor.Stop(result));
            }
        });
    EXPECT_FALSE(storm.m_Monitor.Is_Active());
    EXPECT_EQ(storm.m_nBegun, storm.m_nEnded);
    EXPECT_EQ(0, storm.m_nFailed);
}

TEST(Monitor_Thread_Storm, Workers_Fail_At_Any_Moment)
{
    Storm storm;
    ASSERT_TRUE(storm.Init());
    storm.m_nFail_In = 200;
    storm.Run_Users(
        [&](std::minstd_rand random)
        {
            for (int i = 0; i < 500; ++i)
            {
                Lib_Result result;
                if (random() % 2 == 0)
                {
                    EXPECT_TRUE(storm.m_Monitor.Start(result));
                }
                else if (!storm.m_Monitor.Stop(result)) // it failed between two looks of the stop
                {
                    EXPECT_EQ(0x80090027, result.Get_Result_Code());
                }
            }
        });

    // After all of that it is as good as new.
    Lib_Result result;
    while (storm.m_Monitor.Is_Active())
    {
        std::this_thread::yield();
    }
    EXPECT_TRUE(storm.m_Monitor.Stop(result)) << "no user is left of a run that has failed";
    storm.m_nFail_In = 0;
    EXPECT_TRUE(storm.m_Monitor.Start(result));
    EXPECT_TRUE(storm.m_Monitor.Is_Active());
    EXPECT_TRUE(storm.m_Monitor.Stop(result));
    EXPECT_FALSE(storm.m_Monitor.Is_Active());
    EXPECT_EQ(storm.m_nBegun, storm.m_nEnded);
    EXPECT_LE(1, storm.m_nFailed);
    storm.Wait_For_Notes();
}

TEST(Monitor_Thread_Storm, A_Worker_May_Fail_While_It_Is_Stopped_Or_Freed)
{
    Storm storm;
    storm.m_nFail_In = 40;
    std::minstd_rand random(7);
    int nStopped = 0;
    for (int i = 0; i < 500; ++i)
    {
        Lib_Result result;
        ASSERT_TRUE(storm.Init());
        ASSERT_TRUE(storm.m_Monitor.Start(result));
        for (auto n = random() % 400; n != 0; --n)
        {
            std::atomic_signal_fence(std::memory_order_seq_cst);
        }
        if (random() % 2 == 0)
        {
            nStopped += storm.m_Monitor.Stop(result) && !storm.m_Monitor.Is_Active();
        }
        storm.m_Monitor.Free(result);
        ASSERT_EQ(storm.m_nBegun, storm.m_nEnded);
    }
    EXPECT_LE(1, nStopped);
    storm.Wait_For_Notes();
}
