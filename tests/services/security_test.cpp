#include "lib_services.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

TEST(Public_Attributes, Are_Whole_For_Every_Thread_Of_A_Racing_First_Call)
{
    constexpr int nThreads = 8;
    std::atomic<int> nReady{0};
    std::atomic<int> nWhole{0};
    std::vector<std::thread> threads;
    for (int i = 0; i < nThreads; ++i)
    {
        threads.emplace_back(
            [&]
            {
                ++nReady;
                while (nReady < nThreads)
                {
                    std::this_thread::yield();
                }
                const _SECURITY_ATTRIBUTES* const pAttributes = Lib_Get_Public_Security_Attributes();
                const auto* const pDescriptor =
                    static_cast<const SECURITY_DESCRIPTOR*>(pAttributes->lpSecurityDescriptor);
                nWhole += pAttributes->nLength == sizeof *pAttributes &&
                                  pAttributes->bInheritHandle == TRUE && pDescriptor->Revision == 1 &&
                                  pDescriptor->Control == SE_DACL_PRESENT
                              ? 1
                              : 0;
            });
    }
    for (std::thread& thread : threads)
    {
        thread.join();
    }
    EXPECT_EQ(nThreads, nWhole);
}

TEST(Public_Attributes, Let_Everybody_In)
{
    _SECURITY_ATTRIBUTES* const pAttributes = Lib_Get_Public_Security_Attributes();
    ASSERT_NE(nullptr, pAttributes);
    EXPECT_EQ(pAttributes, Lib_Get_Public_Security_Attributes());
    EXPECT_EQ(sizeof(_SECURITY_ATTRIBUTES), pAttributes->nLength);
    EXPECT_EQ(TRUE, pAttributes->bInheritHandle);

    auto* const pDescriptor = static_cast<SECURITY_DESCRIPTOR*>(pAttributes->lpSecurityDescriptor);
    EXPECT_TRUE(IsValidSecurityDescriptor(pDescriptor));
    EXPECT_EQ(1, pDescriptor->Revision);
    EXPECT_EQ(SE_DACL_PRESENT, pDescriptor->Control);
    EXPECT_EQ(nullptr, pDescriptor->Dacl);
    EXPECT_EQ(nullptr, pDescriptor->Sacl);
    EXPECT_EQ(nullptr, pDescriptor->Owner);
    EXPECT_EQ(nullptr, pDescriptor->Group);
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
}

TEST(Process_Privilege, Of_An_Unknown_Name_Leaves_The_Code_Of_The_Lookup)
{
    wchar_t unknown[] = L"SeNoSuchPrivilege";
    SetLastError(77);
    EXPECT_FALSE(SetProcessPrivilege(unknown, true));
    EXPECT_EQ(1313U, GetLastError());
}
