#ifndef QNLIB_TEST_LAYER_PROBE_H
#define QNLIB_TEST_LAYER_PROBE_H

#include "lib_platform.h"
#include "platform/kernel/object_layout.h"
#include "platform/system_calls.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cerrno>
#include <chrono>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <thread>
#include <utility>

#include <pthread.h>

// What a test replaces in the layer, and what it counts there.

namespace test_support
{

/// Puts the layer's system calls back at the end.
class Layer_Test : public testing::Test
{
protected:
    ~Layer_Test() override { qn_platform::system_calls = m_Saved; }

    const qn_platform::System_Calls m_Saved = qn_platform::system_calls;
};

inline unsigned int Count_Open_Handles()
{
    using qn_platform::kernel::g_Slots;
    unsigned int nOpen = 0;
    for (std::size_t i = 1; i < g_Slots.Get_Count(); ++i)
    {
        nOpen += g_Slots[i].word.load() != 0;
    }
    return nOpen;
}

inline std::ptrdiff_t Count_Threads()
{
    return std::distance(std::filesystem::directory_iterator("/proc/self/task"), {});
}

/// The system takes its time to forget a thread that could be waited for.
inline bool Threads_Fall_To(std::ptrdiff_t threads)
{
    for (int i = 0; i < 1000 && Count_Threads() > threads; ++i)
    {
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    return Count_Threads() <= threads;
}

/// Without those of an earlier test that are about to go.
inline std::ptrdiff_t Count_Lasting_Threads()
{
    std::ptrdiff_t before = 0;
    std::ptrdiff_t threads = Count_Threads();
    while (threads != before)
    {
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
        before = std::exchange(threads, Count_Threads());
    }
    return threads;
}

/// Thread creation that fails.
inline int Create_No_Thread(pthread_t*, const pthread_attr_t*, void* (*)(void*), void*) { return EAGAIN; }

/// Thread creation that ends each suspended thread before its maker has even learned its handle.
inline int Create_And_End(pthread_t* thread, const pthread_attr_t* attributes, void* (*start)(void*),
                          void* argument)
{
    using qn_platform::kernel::g_Slots;
    const int error = pthread_create(thread, attributes, start, argument);
    for (std::size_t i = 1; i < g_Slots.Get_Count(); ++i)
    {
        const auto handle = reinterpret_cast<HANDLE>(g_Slots[i].word.load() >> 32 & ~std::uint64_t{3});
        if (TerminateThread(handle, 9))
        {
            EXPECT_EQ(DWORD{WAIT_OBJECT_0}, WaitForSingleObject(handle, INFINITE));
        }
    }
    return error;
}

} // namespace test_support

#endif
