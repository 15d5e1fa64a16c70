#ifndef QNLIB_TEST_HANDLES_H
#define QNLIB_TEST_HANDLES_H

// Handles and sleeping threads in tests that are written in the platform's names for both targets.

#include "lib_platform.h"
#include "test_text.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <fstream>
#include <string>
#include <thread>
#include <utility>

namespace test_support
{

/// A handle that is closed at the end of the test.
class Owned
{
public:
    Owned() = default;
    explicit Owned(HANDLE handle) : m_hHandle(handle) { EXPECT_NE(nullptr, handle) << GetLastError(); }
    Owned(Owned&& other) noexcept : m_hHandle(other.Detach()) {}
    Owned& operator=(Owned&& other) noexcept
    {
        std::swap(m_hHandle, other.m_hHandle);
        return *this;
    }
    ~Owned() { Close(); }

    void Close() { EXPECT_TRUE(m_hHandle == nullptr || CloseHandle(Detach())); }
    HANDLE Detach() { return std::exchange(m_hHandle, nullptr); }

    operator HANDLE() const { return m_hHandle; }

private:
    HANDLE m_hHandle = nullptr;
};

inline constexpr DWORD TIMED_OUT = WAIT_TIMEOUT;

inline Owned Make_Event(bool manual, bool set) { return Owned(CreateEventW(nullptr, manual, set, nullptr)); }
inline Owned Make_Mutex(bool owned) { return Owned(CreateMutexW(nullptr, owned, nullptr)); }

inline DWORD Try(HANDLE handle) { return WaitForSingleObject(handle, 0); }

/// Another handle of this process to the same object. No rights named: those of the source.
inline Owned Duplicate_Of(HANDLE source, DWORD access = 0, bool inheritable = false)
{
    HANDLE target = nullptr;
    EXPECT_TRUE(DuplicateHandle(GetCurrentProcess(), source, GetCurrentProcess(), &target, access,
                                inheritable, access == 0 ? DUPLICATE_SAME_ACCESS : 0));
    return Owned(target);
}

inline DWORD Flags_Of(HANDLE handle)
{
    DWORD dwFlags = 0xFFFF;
    EXPECT_TRUE(GetHandleInformation(handle, &dwFlags));
    return dwFlags;
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

/// Waits until a thread has fallen asleep or ended; 0 is none yet. Where the system doesn't tell, it is given
/// time for that.
inline void Wait_Until_Asleep(const std::atomic<DWORD>& thread)
{
    for (int nSeen = 0; nSeen < 3;) // in a row
    {
        std::ifstream file("/proc/self/task/" + std::to_string(thread) + "/stat");
        std::string text;
        const bool there = static_cast<bool>(std::getline(file, text));
        const bool asleep = Windows_Target || !there || text.find(") S ") != std::string::npos;
        nSeen = thread != 0 && asleep ? nSeen + 1 : 0;
        std::this_thread::sleep_for(std::chrono::milliseconds(Windows_Target ? 30 : 1));
    }
}

/// A thread that has fallen asleep in its function, or left it, when it is constructed. The destructor waits
/// for its end.
class Sleeper
{
public:
    template <class Function>
    explicit Sleeper(Function function)
        : m_Thread(
              [this, function]
              {
                  m_nThread = GetCurrentThreadId();
                  function();
              })
    {
        Wait_Until_Asleep(m_nThread);
    }
    ~Sleeper() { Join(); }

    void Join()
    {
        if (m_Thread.joinable())
        {
            m_Thread.join();
        }
    }

private:
    std::atomic<DWORD> m_nThread{0};
    std::thread m_Thread;
};

} // namespace test_support

#endif
