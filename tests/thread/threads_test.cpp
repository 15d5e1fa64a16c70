#include "handles.h"

// Threads by their handles, on both targets.

using namespace test_support;

namespace
{

/// What a thread of a test does, and what is seen of it.
struct Work
{
    const Owned m_Go = Make_Event(true, false);
    const Owned m_Mutex = Make_Mutex(false);
    std::atomic<unsigned int> m_nRuns{0};
    std::atomic<DWORD> m_nThread{0};
};

/// Takes the mutex and keeps it.
unsigned int Do_Work(void* argument)
{
    Work& work = *static_cast<Work*>(argument);
    work.m_nThread = GetCurrentThreadId();
    WaitForSingleObject(work.m_Mutex, INFINITE);
    ++work.m_nRuns;
    WaitForSingleObject(work.m_Go, INFINITE);
    return 0x80000007;
}

Owned Begin(Work& work, unsigned int flags = 0, unsigned int* id = nullptr, void* attributes = nullptr)
{
    return Owned(reinterpret_cast<HANDLE>(_beginthreadex(attributes, 0, Do_Work, &work, flags, id)));
}

DWORD Exit_Code(HANDLE thread)
{
    DWORD code = 0xDDDDDDDD;
    EXPECT_TRUE(GetExitCodeThread(thread, &code));
    return code;
}

} // namespace

TEST(Threads, Run_Their_Procedure_And_Leave_Its_Answer)
{
    Work work;
    unsigned int id = 0;
    const Owned thread = Begin(work, 0, &id);
    const HANDLE others[] = {work.m_Go, thread};
    EXPECT_EQ(TIMED_OUT, WaitForSingleObject(thread, 20));
    EXPECT_EQ(TIMED_OUT, WaitForMultipleObjects(2, others, FALSE, 0));
    EXPECT_EQ(DWORD{STILL_ACTIVE}, Exit_Code(thread));
    EXPECT_EQ(id, GetThreadId(thread));
    EXPECT_NE(id, GetCurrentThreadId());

    SetEvent(work.m_Go);
    EXPECT_EQ(WAIT_OBJECT_0, WaitForMultipleObjects(2, others, TRUE, INFINITE));
    ResetEvent(work.m_Go);
    EXPECT_EQ(WAIT_OBJECT_0 + 1, WaitForMultipleObjects(2, others, FALSE, INFINITE));
    EXPECT_EQ(0x80000007U, Exit_Code(thread));
    EXPECT_EQ(id, work.m_nThread);
    EXPECT_EQ(id, GetThreadId(thread)) << "also when it has ended";
    EXPECT_EQ(0U, ResumeThread(thread));
    EXPECT_EQ(DWORD{WAIT_ABANDONED}, Try(work.m_Mutex)) << "before the handle was set";
}

TEST(Threads, Made_Suspended_Run_Nothing_Until_Resumed)
{
    Work work;
    const Owned thread = Begin(work, CREATE_SUSPENDED);
    const Owned never = Begin(work, CREATE_SUSPENDED);
    EXPECT_EQ(TIMED_OUT, WaitForSingleObject(thread, 30));
    EXPECT_EQ(0U, work.m_nRuns);
    EXPECT_NE(0U, GetThreadId(thread));
    EXPECT_EQ(DWORD{STILL_ACTIVE}, Exit_Code(thread));
    EXPECT_EQ(1U, ResumeThread(thread));
    EXPECT_EQ(0U, ResumeThread(thread));
    SetEvent(work.m_Go);
    EXPECT_EQ(WAIT_OBJECT_0, WaitForSingleObject(thread, INFINITE));
    EXPECT_EQ(1U, work.m_nRuns);

    EXPECT_TRUE(TerminateThread(never, 77));
    EXPECT_EQ(WAIT_OBJECT_0, WaitForSingleObject(never, INFINITE));
    EXPECT_EQ(77U, Exit_Code(never));
    EXPECT_EQ(1U, work.m_nRuns);
}

TEST(Threads, Are_Handled_By_The_Rights_Of_The_Handle)
{
    Work work;
    _SECURITY_ATTRIBUTES inheritable = {sizeof inheritable, nullptr, TRUE};
    const Owned thread = Begin(work, CREATE_SUSPENDED, nullptr, &inheritable);
    EXPECT_EQ(DWORD{HANDLE_FLAG_INHERIT}, Flags_Of(thread));
    const Owned limited = Duplicate_Of(thread, THREAD_QUERY_LIMITED_INFORMATION);
    EXPECT_EQ(DWORD{STILL_ACTIVE}, Exit_Code(limited));
    EXPECT_EQ(GetThreadId(thread), GetThreadId(limited));

    const auto expect_Refused = [](HANDLE handle, DWORD error)
    {
        DWORD code = 5;
        EXPECT_EQ(error, Error_Of(GetExitCodeThread(handle, &code)));
        EXPECT_EQ(5U, code);
        EXPECT_EQ(0U, GetThreadId(handle));
        EXPECT_EQ(error, GetLastError());
        EXPECT_EQ(0xFFFFFFFF, ResumeThread(handle));
        EXPECT_EQ(error, GetLastError());
        EXPECT_EQ(error, Error_Of(TerminateThread(handle, 0)));
    };
    expect_Refused(Duplicate_Of(thread, SYNCHRONIZE), ERROR_ACCESS_DENIED);
    expect_Refused(work.m_Go, ERROR_INVALID_HANDLE);
    expect_Refused(nullptr, ERROR_INVALID_HANDLE);
    EXPECT_TRUE(TerminateThread(thread, 0));
    EXPECT_EQ(DWORD{STILL_ACTIVE}, Exit_Code(GetCurrentThread()));
    EXPECT_EQ(GetCurrentThreadId(), GetThreadId(GetCurrentThread()));
}
