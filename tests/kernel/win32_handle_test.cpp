#include "win32_threads.h"

using namespace test_support;

namespace
{

HANDLE duplicate(HANDLE source, DWORD access, BOOL inherit = FALSE, DWORD options = 0)
{
    HANDLE hTarget = nullptr;
    DuplicateHandle(GetCurrentProcess(), source, GetCurrentProcess(), &hTarget, access, inherit, options);
    return hTarget;
}

DWORD flags_Of(HANDLE handle)
{
    DWORD dwFlags = 0xFFFF;
    EXPECT_TRUE(GetHandleInformation(handle, &dwFlags));
    return dwFlags;
}

} // namespace

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

TEST(Win32_Handle, A_Duplicate_Has_A_Life_Of_Its_Own)
{
    Owned first = Make_Event(true, false);
    const Owned second(duplicate(first, 0, TRUE, DUPLICATE_SAME_ACCESS));
    EXPECT_NE(static_cast<HANDLE>(first), static_cast<HANDLE>(second));
    EXPECT_EQ(static_cast<DWORD>(HANDLE_FLAG_INHERIT), flags_Of(second));
    EXPECT_EQ(0u, flags_Of(first));
    EXPECT_TRUE(SetEvent(first));
    first.Close();
    EXPECT_EQ(WAIT_OBJECT_0, Try(second));
}

TEST(Win32_Handle, A_Duplication_May_Close_Its_Source)
{
    const HANDLE hSource = CreateEventW(nullptr, FALSE, TRUE, nullptr);
    const Owned target(duplicate(hSource, 0, FALSE, DUPLICATE_CLOSE_SOURCE | DUPLICATE_SAME_ACCESS));
    EXPECT_EQ(WAIT_OBJECT_0, Try(target));
    EXPECT_TRUE(hSource == target || !CloseHandle(hSource)) << "the value may have come again at once";
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
    const Owned to_wait(duplicate(event, SYNCHRONIZE));
    EXPECT_EQ(WAIT_OBJECT_0, Try(to_wait));
    EXPECT_EQ(5u, Error_Of(SetEvent(to_wait)));
    EXPECT_EQ(5u, Error_Of(ResetEvent(to_wait)));
    EXPECT_EQ(5u, Error_Of(PulseEvent(to_wait)));

    const Owned to_set(duplicate(event, EVENT_MODIFY_STATE));
    EXPECT_TRUE(SetEvent(to_set));
    EXPECT_EQ(5u, Error_Of(Try(to_set)));
    const HANDLE both[] = {event, to_set};
    EXPECT_EQ(5u, Error_Of(WaitForMultipleObjects(2, both, FALSE, 0)));

    const Owned generic(duplicate(event, GENERIC_EXECUTE));
    EXPECT_EQ(WAIT_OBJECT_0, Try(generic));
    EXPECT_EQ(5u, Error_Of(SetEvent(generic)));
    const Owned all(duplicate(to_wait, MAXIMUM_ALLOWED));
    EXPECT_TRUE(SetEvent(all));
    EXPECT_EQ(WAIT_OBJECT_0, Try(all));
}

TEST(Win32_Handle, A_Mutex_Is_Released_Without_Any_Right)
{
    const Owned mutex = Make_Mutex(true);
    EXPECT_TRUE(ReleaseMutex(Owned(duplicate(mutex, SYNCHRONIZE))));
    EXPECT_EQ(5u, Error_Of(Try(Owned(duplicate(mutex, MUTEX_MODIFY_STATE)))));
}

TEST(Win32_Handle, Flags_Are_Remembered_And_Protect)
{
    const HANDLE hEvent = CreateEventW(nullptr, FALSE, FALSE, nullptr);
    EXPECT_TRUE(SetHandleInformation(hEvent, HANDLE_FLAG_INHERIT | HANDLE_FLAG_PROTECT_FROM_CLOSE, 3));
    EXPECT_EQ(3u, flags_Of(hEvent));
    EXPECT_TRUE(SetHandleInformation(hEvent, HANDLE_FLAG_INHERIT, 0));
    EXPECT_EQ(2u, flags_Of(hEvent));
    EXPECT_EQ(6u, Error_Of(CloseHandle(hEvent)));
    EXPECT_TRUE(SetEvent(hEvent));
    EXPECT_TRUE(SetHandleInformation(hEvent, HANDLE_FLAG_PROTECT_FROM_CLOSE, 0));
    EXPECT_TRUE(CloseHandle(hEvent));
    EXPECT_EQ(6u, Error_Of(SetHandleInformation(hEvent, HANDLE_FLAG_INHERIT, 0)));
    DWORD dwFlags;
    EXPECT_EQ(6u, Error_Of(GetHandleInformation(hEvent, &dwFlags)));

    SECURITY_ATTRIBUTES inherited{sizeof(SECURITY_ATTRIBUTES), nullptr, TRUE};
    EXPECT_EQ(static_cast<DWORD>(HANDLE_FLAG_INHERIT),
              flags_Of(Owned(CreateMutexW(&inherited, FALSE, nullptr))));
}

TEST(Win32_Handle, Pseudo_Handles_Stand_For_The_Caller)
{
    EXPECT_TRUE(CloseHandle(GetCurrentProcess()));
    EXPECT_TRUE(CloseHandle(GetCurrentThread()));
    const Owned process(duplicate(GetCurrentProcess(), 0, FALSE, DUPLICATE_SAME_ACCESS));
    const Owned event = Make_Event(false, true);
    HANDLE hTarget = nullptr;
    EXPECT_TRUE(DuplicateHandle(process, event, process, &hTarget, 0, FALSE, DUPLICATE_SAME_ACCESS));
    EXPECT_EQ(WAIT_OBJECT_0, Try(Owned(hTarget)));

    EXPECT_EQ(GetCurrentThreadId(), GetCurrentThreadId());
    EXPECT_NE(GetCurrentThreadId(), On_Other_Thread([] { return GetCurrentThreadId(); }));
    EXPECT_EQ(GetCurrentProcessId(), On_Other_Thread([] { return GetCurrentProcessId(); }));
}
