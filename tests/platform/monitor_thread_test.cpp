#include "layer_probe.h"
#include "lib_thread.h"
#include "platform/kernel/named_calls.h"

#include <vector>

using namespace test_support;
using qn_platform::kernel::named_calls;

// What monitor threads leave behind, and what they do when the system makes no threads.

namespace
{

class Monitor_Thread_Leaves : public Layer_Test
{
protected:
    ~Monitor_Thread_Leaves() override
    {
        system_calls = m_Saved;
        EXPECT_TRUE(Threads_Fall_To(m_nThreads));
        EXPECT_GE(m_nHandles, Count_Open_Handles());
    }

    static bool work(void* pContext, Lib_Result&)
    {
        return static_cast<Lib_Event*>(pContext)->Wait_Until_Object_0(INFINITE);
    }
    static bool fail(void*, Lib_Result&) { return false; }
    static long long note(unsigned int, unsigned long long, long long) { return 0; }

    const std::ptrdiff_t m_nThreads = Count_Lasting_Threads();
    const unsigned int m_nHandles = Count_Open_Handles();
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
    system_calls.create_thread = Create_No_Thread;
    EXPECT_FALSE(monitor.Start(m_Result));
    EXPECT_EQ(Lib_Result(ERROR_NOT_ENOUGH_MEMORY, 1), m_Result);
    EXPECT_FALSE(monitor.Is_Active());

    system_calls.create_thread = Create_And_End;
    m_Result.Reset_Result();
    EXPECT_FALSE(monitor.Start(m_Result));
    EXPECT_EQ(Lib_Result(ERROR_NO_TOKEN, 1), m_Result)
        << "a worker that ends too soon is no failure of a call";
    EXPECT_FALSE(monitor.Is_Active());
    EXPECT_TRUE(monitor.Stop(m_Result)) << "nobody uses it";

    system_calls = m_Saved;
    EXPECT_TRUE(monitor.Start(m_Result));
    EXPECT_TRUE(monitor.Stop(m_Result));
    EXPECT_TRUE(monitor.Free(m_Result)) << "no handle was left over";
}

TEST_F(Monitor_Thread_Leaves, Nothing_To_Do_Without_A_Lock)
{
    const auto saved = named_calls;
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
