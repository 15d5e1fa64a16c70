#include "lib_platform.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <thread>

// Threads by their handles, on both targets.

namespace
{

/// What a thread of a test does, and what is seen of it.
struct Work
{
    HANDLE m_hGo = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    HANDLE m_hMutex = CreateMutexW(nullptr, FALSE, nullptr);
    std::atomic<unsigned int> m_nRuns{0};
    std::atomic<DWORD> m_nThread{0};
    unsigned int m_nExit_Code = 0;

    Work() = default;
    Work(const Work&) = delete;
    Work& operator=(const Work&) = delete;
    ~Work()
    {
        CloseHandle(m_hGo);
        CloseHandle(m_hMutex);
    }
};

/// Takes the mutex and keeps it.
unsigned int Do_Work(void* argument)
{
    Work& work = *static_cast<Work*>(argument);
    work.m_nThread = GetCurrentThreadId();
    WaitForSingleObject(work.m_hMutex, INFINITE);
    ++work.m_nRuns;
    WaitForSingleObject(work.m_hGo, INFINITE);
    return work.m_nExit_Code;
}

HANDLE Begin(Work& work, unsigned int flags = 0, unsigned int* id = nullptr, void* attributes = nullptr)
{
    const HANDLE thread = reinterpret_cast<HANDLE>(_beginthreadex(attributes, 0, Do_Work, &work, flags, id));
    EXPECT_NE(nullptr, thread) << GetLastError();
    return thread;
}

DWORD Exit_Code(HANDLE thread)
{
    DWORD code = 0xDDDDDDDD;
    EXPECT_TRUE(GetExitCodeThread(thread, &code));
    return code;
}

HANDLE With_Rights(HANDLE source, DWORD access)
{
    HANDLE duplicate = nullptr;
    EXPECT_TRUE(
        DuplicateHandle(GetCurrentProcess(), source, GetCurrentProcess(), &duplicate, access, FALSE, 0));
    return duplicate;
}

constexpr DWORD FAILED_CALL = 0xFFFFFFFF;

} // namespace

TEST(Threads, Run_Their_Procedure_And_Leave_Its_Answer)
{
    Work work;
    work.m_nExit_Code = 0x80000007;
    unsigned int id = 0;
    const HANDLE thread = Begin(work, 0, &id);
    const HANDLE others[] = {work.m_hGo, thread};
    EXPECT_EQ(DWORD{WAIT_TIMEOUT}, WaitForSingleObject(thread, 20));
    EXPECT_EQ(DWORD{WAIT_TIMEOUT}, WaitForMultipleObjects(2, others, FALSE, 0));
    EXPECT_EQ(DWORD{STILL_ACTIVE}, Exit_Code(thread));
    EXPECT_EQ(id, GetThreadId(thread));
    EXPECT_NE(id, GetCurrentThreadId());

    SetEvent(work.m_hGo);
    EXPECT_EQ(DWORD{WAIT_OBJECT_0}, WaitForMultipleObjects(2, others, TRUE, INFINITE));
    ResetEvent(work.m_hGo);
    EXPECT_EQ(DWORD{WAIT_OBJECT_0 + 1}, WaitForMultipleObjects(2, others, FALSE, INFINITE));
    EXPECT_EQ(0x80000007U, Exit_Code(thread));
    EXPECT_EQ(id, work.m_nThread);
    EXPECT_EQ(id, GetThreadId(thread)) << "also when it has ended";
    EXPECT_EQ(0U, ResumeThread(thread));
    EXPECT_TRUE(CloseHandle(thread));
    EXPECT_EQ(DWORD{WAIT_ABANDONED}, WaitForSingleObject(work.m_hMutex, 0)) << "before the handle was set";
}

TEST(Threads, Made_Suspended_Run_Nothing_Until_Resumed)
{
    Work work;
    const HANDLE thread = Begin(work, CREATE_SUSPENDED);
    EXPECT_EQ(DWORD{WAIT_TIMEOUT}, WaitForSingleObject(thread, 30));
    EXPECT_EQ(0U, work.m_nRuns);
    EXPECT_NE(0U, GetThreadId(thread));
    EXPECT_EQ(DWORD{STILL_ACTIVE}, Exit_Code(thread));
    EXPECT_EQ(1U, ResumeThread(thread));
    EXPECT_EQ(0U, ResumeThread(thread));
    SetEvent(work.m_hGo);
    EXPECT_EQ(DWORD{WAIT_OBJECT_0}, WaitForSingleObject(thread, INFINITE));
    EXPECT_EQ(1U, work.m_nRuns);
    EXPECT_EQ(0U, Exit_Code(thread));
    CloseHandle(thread);
}

TEST(Threads, Are_Ended_Before_They_Ran)
{
    Work work;
    const HANDLE thread = Begin(work, CREATE_SUSPENDED);
    EXPECT_TRUE(TerminateThread(thread, 77));
    EXPECT_EQ(DWORD{WAIT_OBJECT_0}, WaitForSingleObject(thread, INFINITE));
    EXPECT_EQ(77U, Exit_Code(thread));
    EXPECT_EQ(0U, work.m_nRuns);
    CloseHandle(thread);
}

TEST(Threads, Run_On_Without_A_Handle)
{
    Work work;
    EXPECT_TRUE(CloseHandle(Begin(work)));
    const HANDLE suspended = Begin(work, CREATE_SUSPENDED);
    EXPECT_EQ(1U, ResumeThread(suspended));
    EXPECT_TRUE(CloseHandle(suspended));
    SetEvent(work.m_hGo);
    while (work.m_nRuns < 2) // each leaves the mutex to the next one by its end
    {
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    EXPECT_EQ(DWORD{WAIT_ABANDONED}, WaitForSingleObject(work.m_hMutex, INFINITE));
}

TEST(Threads, Are_Handled_By_The_Rights_Of_The_Handle)
{
    Work work;
    _SECURITY_ATTRIBUTES inheritable = {sizeof inheritable, nullptr, TRUE};
    const HANDLE thread = Begin(work, CREATE_SUSPENDED, nullptr, &inheritable);
    DWORD flags = 0;
    EXPECT_TRUE(GetHandleInformation(thread, &flags));
    EXPECT_EQ(DWORD{HANDLE_FLAG_INHERIT}, flags);

    const HANDLE wait_only = With_Rights(thread, SYNCHRONIZE);
    DWORD code = 5;
    EXPECT_FALSE(GetExitCodeThread(wait_only, &code));
    EXPECT_EQ(DWORD{ERROR_ACCESS_DENIED}, GetLastError());
    EXPECT_EQ(5U, code);
    EXPECT_EQ(0U, GetThreadId(wait_only));
    EXPECT_EQ(DWORD{ERROR_ACCESS_DENIED}, GetLastError());
    EXPECT_EQ(FAILED_CALL, ResumeThread(wait_only));
    EXPECT_EQ(DWORD{ERROR_ACCESS_DENIED}, GetLastError());
    EXPECT_FALSE(TerminateThread(wait_only, 0));
    EXPECT_EQ(DWORD{ERROR_ACCESS_DENIED}, GetLastError());
    const HANDLE limited = With_Rights(thread, THREAD_QUERY_LIMITED_INFORMATION);
    EXPECT_EQ(DWORD{STILL_ACTIVE}, Exit_Code(limited));
    EXPECT_EQ(GetThreadId(thread), GetThreadId(limited));

    EXPECT_EQ(FAILED_CALL, ResumeThread(work.m_hGo));
    EXPECT_EQ(DWORD{ERROR_INVALID_HANDLE}, GetLastError());
    EXPECT_FALSE(GetExitCodeThread(nullptr, &code));
    EXPECT_EQ(DWORD{ERROR_INVALID_HANDLE}, GetLastError());
    EXPECT_EQ(0U, GetThreadId(work.m_hMutex));
    EXPECT_EQ(DWORD{ERROR_INVALID_HANDLE}, GetLastError());
    EXPECT_TRUE(TerminateThread(thread, 0));
    for (const HANDLE each : {thread, wait_only, limited})
    {
        CloseHandle(each);
    }
    EXPECT_EQ(DWORD{STILL_ACTIVE}, Exit_Code(GetCurrentThread()));
    EXPECT_EQ(GetCurrentThreadId(), GetThreadId(GetCurrentThread()));
}
