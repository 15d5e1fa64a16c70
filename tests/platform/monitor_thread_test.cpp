#include "lib_thread.h"
#include "platform/kernel/named_calls.h"
#include "platform/kernel/object_layout.h"
#include "platform/system_calls.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <chrono>
#include <filesystem>
#include <iterator>
#include <thread>
#include <vector>

// What monitor threads leave behind, and what they do when the system makes no threads.

namespace
{

using namespace qn_platform::kernel;

struct Left
{
    std::ptrdiff_t m_nThreads;
    unsigned int m_nHandles;

    bool operator<=(const Left& other) const
    {
        return m_nThreads <= other.m_nThreads && m_nHandles <= other.m_nHandles;
    }
};

Left Count()
{
    Left left{std::distance(std::filesystem::directory_iterator("/proc/self/task"), {}), 0};
    for (std::size_t i = 1; i < g_Slots.Get_Count(); ++i)
    {
        left.m_nHandles += g_Slots[i].word.load() != 0;
    }
    return left;
}

void Pause() { std::this_thread::sleep_for(std::chrono::milliseconds(10)); }

/// Ends every thread that is suspended.
void End_Suspended_Threads()
{
    for (std::size_t i = 1; i < g_Slots.Get_Count(); ++i)
    {
        TerminateThread(reinterpret_cast<HANDLE>(g_Slots[i].word.load() >> 32 & ~std::uint64_t{3}), 9);
    }
}

/// Thread creation that succeeds, and leaves a thread that never runs.
int Create_And_End(pthread_t* thread, const pthread_attr_t* attributes, void* (*start)(void*), void* argument)
{
    const int error = pthread_create(thread, attributes, start, argument);
    End_Suspended_Threads();
    return error;
}

class Monitor_Thread_Leaves : public testing::Test
{
protected:
    ~Monitor_Thread_Leaves() override
    {
        qn_platform::system_calls = m_Saved;
        for (int i = 0; i < 1000 && !(Count() <= m_Before); ++i)
        {
            Pause(); // the system takes its time to forget a thread
        }
        const Left after = Count();
        EXPECT_LE(after.m_nThreads, m_Before.m_nThreads);
        EXPECT_LE(after.m_nHandles, m_Before.m_nHandles);
    }

    static bool work(void* pContext, Lib_Result&)
    {
        return static_cast<Lib_Event*>(pContext)->Wait_Until_Object_0(INFINITE);
    }
    static bool fail(void*, Lib_Result&) { return false; }
    static long long note(unsigned int, unsigned long long, long long) { return 0; }

    const qn_platform::System_Calls m_Saved = qn_platform::system_calls;
    const Left m_Before = (Pause(), Count());
    Lib_Result m_Result;
};

} // namespace

TEST_F(Monitor_Thread_Leaves, Nothing_After_Many_Runs_Of_Several)
{
    const auto run = []
    {
        Lib_Result result;
        for (int i = 0; i < 300; ++i)
        {
            Lib_Event evStop;
            Lib_Monitor_Thread monitor;
            EXPECT_TRUE(monitor.Init(nullptr, i % 3 == 0 ? fail : work, nullptr, nullptr, note, &evStop,
                                     &evStop, result, 0));
            EXPECT_TRUE(monitor.Start(result));
            const Lib_Monitor_Thread view(monitor);
            if (i % 2 == 0)
            {
                monitor.Stop(result);
                EXPECT_TRUE(monitor.Start(result));
            }
        }
    };
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i)
    {
        threads.emplace_back(run);
    }
    for (std::thread& thread : threads)
    {
        thread.join();
    }
}

TEST_F(Monitor_Thread_Leaves, Nothing_When_No_Thread_Is_To_Be_Had)
{
    Lib_Event evStop;
    Lib_Monitor_Thread monitor;
    EXPECT_TRUE(monitor.Init(nullptr, work, nullptr, nullptr, nullptr, &evStop, &evStop, m_Result, 0));
    qn_platform::system_calls.create_thread = [](pthread_t*, const pthread_attr_t*, void* (*)(void*), void*)
    { return EAGAIN; };
    EXPECT_FALSE(monitor.Start(m_Result));
    EXPECT_EQ(Lib_Result(ERROR_NOT_ENOUGH_MEMORY, 1), m_Result);
    EXPECT_FALSE(monitor.Is_Active());

    qn_platform::system_calls.create_thread = Create_And_End;
    m_Result.Reset_Result();
    EXPECT_FALSE(monitor.Start(m_Result));
    EXPECT_EQ(Lib_Result(ERROR_NO_TOKEN, 1), m_Result)
        << "a worker that ends too soon is no failure of a call";
    EXPECT_FALSE(monitor.Is_Active());
    EXPECT_TRUE(monitor.Stop(m_Result)) << "nobody uses it";

    qn_platform::system_calls = m_Saved;
    EXPECT_TRUE(monitor.Start(m_Result));
    EXPECT_TRUE(monitor.Stop(m_Result));
    EXPECT_TRUE(monitor.Free(m_Result)) << "no handle was left over";
}

TEST_F(Monitor_Thread_Leaves, Nothing_To_Do_Without_A_Lock)
{
    const Named_Calls saved = named_calls;
    named_calls.open_file = [](const char*, int, mode_t)
    {
        errno = ENOSPC;
        return -1;
    };
    Lib_Monitor_Thread monitor;
    named_calls = saved;
    EXPECT_FALSE(monitor.Init(nullptr, fail, nullptr, nullptr, note, nullptr, nullptr, m_Result, 0));
    EXPECT_TRUE(m_Result.Is_Success());
    EXPECT_FALSE(monitor.Start(m_Result));
    EXPECT_EQ(Lib_Result(ERROR_INVALID_HANDLE, 1), m_Result);
    EXPECT_FALSE(monitor.Stop(m_Result));
    EXPECT_FALSE(monitor.Free(m_Result));
    EXPECT_FALSE(monitor.Is_Active());
}
