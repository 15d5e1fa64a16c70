#ifndef QNLIB_TEST_WIN32_THREADS_H
#define QNLIB_TEST_WIN32_THREADS_H

#include "lib_platform.h"
#include "other_thread.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <thread>
#include <utility>

// For the tests of kernel objects, which are written in the platform's names for both targets.

namespace test_support
{

/// A handle that is closed at the end of the test.
class Owned
{
public:
    Owned() = default;
    explicit Owned(HANDLE handle) : m_hHandle(handle) { EXPECT_NE(nullptr, handle) << GetLastError(); }
    Owned(Owned&& other) noexcept : m_hHandle(std::exchange(other.m_hHandle, nullptr)) {}
    Owned& operator=(Owned&& other) noexcept
    {
        std::swap(m_hHandle, other.m_hHandle);
        return *this;
    }
    ~Owned() { Close(); }

    void Close()
    {
        if (m_hHandle != nullptr)
        {
            EXPECT_TRUE(CloseHandle(std::exchange(m_hHandle, nullptr)));
        }
    }

    operator HANDLE() const { return m_hHandle; }

private:
    HANDLE m_hHandle = nullptr;
};

inline Owned Make_Event(bool manual, bool set) { return Owned(CreateEventW(nullptr, manual, set, nullptr)); }
inline Owned Make_Mutex(bool owned) { return Owned(CreateMutexW(nullptr, owned, nullptr)); }

inline DWORD Try(HANDLE handle) { return WaitForSingleObject(handle, 0); }

/// Long enough for a thread to be asleep in a wait: the tests hold without it too, but prove less.
inline void Let_Others_Sleep() { std::this_thread::sleep_for(std::chrono::milliseconds(30)); }

/// Returns when so many threads are in the waits before which each of them counts itself.
inline void Let_Fall_Asleep(const std::atomic<int>& arrived, int threads)
{
    while (arrived < threads)
    {
        std::this_thread::yield();
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(150));
}

/// The last error of an operation that must fail.
inline DWORD Error_Of(BOOL result)
{
    const DWORD dwError = GetLastError();
    EXPECT_FALSE(result);
    return dwError;
}
inline DWORD Error_Of(HANDLE result)
{
    const DWORD dwError = GetLastError();
    EXPECT_EQ(nullptr, result);
    return dwError;
}
inline DWORD Error_Of(DWORD wait_result)
{
    const DWORD dwError = GetLastError();
    EXPECT_EQ(WAIT_FAILED, wait_result);
    return dwError;
}

} // namespace test_support

#endif
