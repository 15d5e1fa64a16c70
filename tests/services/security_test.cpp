#include "lib_services.h"
#include "other_thread.h"

#include <gtest/gtest.h>

#include <atomic>
#include <latch>
#include <vector>

using namespace test_support;

TEST(Public_Attributes, Let_Everybody_In_For_Every_Thread_Of_A_Racing_First_Call)
{
    constexpr std::size_t nThreads = 8;
    std::latch ready(nThreads);
    std::vector<_SECURITY_ATTRIBUTES*> seen(nThreads);
    std::atomic<int> nWhole{0};
    On_Threads(nThreads,
               [&](std::size_t nThread)
               {
                   ready.arrive_and_wait();
                   _SECURITY_ATTRIBUTES* const pAttributes = Lib_Get_Public_Security_Attributes();
                   const auto* const pDescriptor =
                       static_cast<const SECURITY_DESCRIPTOR*>(pAttributes->lpSecurityDescriptor);
                   nWhole += pAttributes->nLength == sizeof *pAttributes &&
                             pAttributes->bInheritHandle == TRUE && pDescriptor->Revision == 1 &&
                             pDescriptor->Control == SE_DACL_PRESENT && pDescriptor->Dacl == nullptr;
                   seen[nThread] = pAttributes;
               });
    EXPECT_EQ(8, nWhole);
    EXPECT_EQ(std::vector(nThreads, seen[0]), seen);
}

TEST(Integrity_Label, Of_A_Missing_Object_Leaves_The_Platforms_Code)
{
    wchar_t missing[] = L"no such file";
    SetLastError(77);
    EXPECT_FALSE(Lib_Set_Low_Integrity_Access_Level(missing, SE_FILE_OBJECT, 0x1000));
    EXPECT_EQ(2U, GetLastError());
    EXPECT_FALSE(Lib_Set_Low_Integrity_Access_Level(nullptr, SE_FILE_OBJECT, 0x1000));
    EXPECT_EQ(87U, GetLastError());
}

TEST(Process_Privilege, Is_Switched_By_Name)
{
    wchar_t held[] = L"SeChangeNotifyPrivilege";
    EXPECT_TRUE(SetProcessPrivilege(held, false)) << GetLastError();
    EXPECT_TRUE(SetProcessPrivilege(held, true)) << GetLastError();
    wchar_t not_held[] = L"SeCreateTokenPrivilege";
    EXPECT_TRUE(SetProcessPrivilege(not_held, true)) << "that it is not assigned, is not looked at";
    wchar_t unknown[] = L"SeNoSuchPrivilege";
    EXPECT_FALSE(SetProcessPrivilege(unknown, true));
    EXPECT_EQ(1313U, GetLastError());
}
