#include "probes.h"

TEST(Win32_Handle, Creation_Clears_The_Last_Error)
{
    SetLastError(7);
    const Owned event = Make_Event(false, false);
    EXPECT_EQ(0u, GetLastError());
    SetLastError(7);
    const Owned mutex = Make_Mutex(false);
    EXPECT_EQ(0u, GetLastError());
    SetLastError(7);
    EXPECT_TRUE(SetEvent(event));
    EXPECT_EQ(7u, GetLastError()) << "only what creates touches it on success";
}

TEST(Win32_Handle, Duplicates_Are_Refused_For_What_Is_No_Handle)
{
    const Owned event = Make_Event(false, false);
    HANDLE hTarget = nullptr;
    const HANDLE self = GetCurrentProcess();
    EXPECT_EQ(6u, Error_Of(DuplicateHandle(self, nullptr, self, &hTarget, 0, FALSE, DUPLICATE_SAME_ACCESS)));
    EXPECT_EQ(6u, Error_Of(DuplicateHandle(event, event, self, &hTarget, 0, FALSE, DUPLICATE_SAME_ACCESS)));
    EXPECT_EQ(6u, Error_Of(DuplicateHandle(self, event, nullptr, &hTarget, 0, FALSE, DUPLICATE_SAME_ACCESS)));
}

TEST(Win32_Handle, The_Access_Mask_Decides)
{
    const Owned event = Make_Event(true, true);
    const Owned to_wait = Duplicate_Of(event, SYNCHRONIZE);
    EXPECT_EQ(WAIT_OBJECT_0, Try(to_wait));
    for (auto* const pOperation : {SetEvent, ResetEvent, PulseEvent})
        EXPECT_EQ(5u, Error_Of(pOperation(to_wait)));

    const Owned to_set = Duplicate_Of(event, EVENT_MODIFY_STATE);
    EXPECT_TRUE(SetEvent(to_set));
    EXPECT_EQ(5u, Error_Of(Try(to_set)));
    EXPECT_EQ(5u, Error_Of(Wait_Any(0, event, to_set)));

    const Owned generic = Duplicate_Of(event, GENERIC_EXECUTE);
    EXPECT_EQ(WAIT_OBJECT_0, Try(generic));
    EXPECT_EQ(5u, Error_Of(SetEvent(generic)));
    const Owned all = Duplicate_Of(to_wait, MAXIMUM_ALLOWED);
    EXPECT_TRUE(SetEvent(all));
    EXPECT_EQ(WAIT_OBJECT_0, Try(all));

    const Owned mutex = Make_Mutex(true);
    EXPECT_TRUE(ReleaseMutex(Duplicate_Of(mutex, SYNCHRONIZE))) << "takes no right";
    EXPECT_EQ(5u, Error_Of(Try(Duplicate_Of(mutex, MUTEX_MODIFY_STATE))));
}

TEST(Win32_Handle, Flags_Are_Remembered_And_Protect)
{
    const HANDLE hEvent = CreateEventW(nullptr, FALSE, FALSE, nullptr);
    EXPECT_TRUE(SetHandleInformation(hEvent, HANDLE_FLAG_INHERIT | HANDLE_FLAG_PROTECT_FROM_CLOSE, 3));
    EXPECT_EQ(3u, Flags_Of(hEvent));
    EXPECT_TRUE(SetHandleInformation(hEvent, HANDLE_FLAG_INHERIT, 0));
    EXPECT_EQ(2u, Flags_Of(hEvent));
    EXPECT_EQ(6u, Error_Of(CloseHandle(hEvent)));
    EXPECT_TRUE(SetEvent(hEvent));
    EXPECT_TRUE(SetHandleInformation(hEvent, HANDLE_FLAG_PROTECT_FROM_CLOSE, 0));
    EXPECT_TRUE(CloseHandle(hEvent));
    EXPECT_EQ(6u, Error_Of(SetHandleInformation(hEvent, HANDLE_FLAG_INHERIT, 0)));
    DWORD dwFlags;
    EXPECT_EQ(6u, Error_Of(GetHandleInformation(hEvent, &dwFlags)));

    SECURITY_ATTRIBUTES inherited{sizeof(SECURITY_ATTRIBUTES), nullptr, TRUE};
    EXPECT_EQ(DWORD{HANDLE_FLAG_INHERIT}, Flags_Of(Owned(CreateMutexW(&inherited, FALSE, nullptr))));
}

TEST(Win32_Handle, Pseudo_Handles_Stand_For_The_Caller)
{
    EXPECT_TRUE(CloseHandle(GetCurrentProcess()));
    EXPECT_TRUE(CloseHandle(GetCurrentThread()));
    EXPECT_EQ(TIMED_OUT, WaitForSingleObject(GetCurrentThread(), 1));
    EXPECT_EQ(TIMED_OUT, WaitForSingleObject(GetCurrentProcess(), 1));
    const Owned process = Duplicate_Of(GetCurrentProcess());
    const Owned event = Make_Event(false, true);
    HANDLE hTarget = nullptr;
    EXPECT_TRUE(DuplicateHandle(process, event, process, &hTarget, 0, FALSE, DUPLICATE_SAME_ACCESS));
    EXPECT_EQ(WAIT_OBJECT_0, Try(Owned(hTarget)));
    EXPECT_NE(GetCurrentThreadId(), On_Other_Thread([] { return GetCurrentThreadId(); }));
    EXPECT_EQ(GetCurrentProcessId(), On_Other_Thread([] { return GetCurrentProcessId(); }));
}
