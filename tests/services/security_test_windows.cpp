#include "lib_services.h"

#include <gtest/gtest.h>

TEST(Integrity_Label, Is_Put_On_A_Named_Object)
{
    wchar_t name[] = L"qnlib integrity test event";
    const HANDLE hEvent = CreateEventW(nullptr, FALSE, FALSE, name);
    ASSERT_NE(nullptr, hEvent);
    SetLastError(77);
    EXPECT_TRUE(Lib_Set_Low_Integrity_Access_Level(name, SE_KERNEL_OBJECT, 0x1000)) << GetLastError();
    CloseHandle(hEvent);
}
