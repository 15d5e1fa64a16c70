#include "lib_services.h"

#include <gtest/gtest.h>

namespace
{

constexpr DWORD DEBUG_PRIVILEGE = 20;
constexpr DWORD CHANGE_NOTIFY = 23;

HANDLE Open(DWORD access)
{
    HANDLE token = nullptr;
    EXPECT_TRUE(OpenProcessToken(GetCurrentProcess(), access, &token)) << "last error " << GetLastError();
    return token;
}

/// The last error of a change that succeeds.
DWORD Switch(HANDLE token, DWORD privilege, DWORD attributes)
{
    TOKEN_PRIVILEGES wanted = {1, {{{privilege, 0}, attributes}}};
    SetLastError(77);
    EXPECT_TRUE(AdjustTokenPrivileges(token, FALSE, &wanted, 0, nullptr, nullptr));
    return GetLastError();
}

DWORD Attributes_Of(DWORD privilege)
{
    union
    {
        TOKEN_PRIVILEGES m_List;
        BYTE m_Bytes[1000];
    } told;
    const HANDLE token = Open(TOKEN_QUERY);
    DWORD size = 0;
    EXPECT_TRUE(GetTokenInformation(token, TokenPrivileges, &told, sizeof told, &size));
    CloseHandle(token);
    EXPECT_EQ(4 + 12 * told.m_List.PrivilegeCount, size);
    const LUID_AND_ATTRIBUTES* const pEntries = told.m_List.Privileges; // more than the type says
    for (DWORD i = 0; i < told.m_List.PrivilegeCount; ++i)
        if (pEntries[i].Luid.LowPart == privilege)
            return pEntries[i].Attributes;
    return 0xFFFFFFFF;
}

} // namespace

TEST(Token, Is_Opened_By_A_Process_Handle_Alone)
{
    const HANDLE own = Open(TOKEN_QUERY | SYNCHRONIZE);
    HANDLE token = nullptr;
    for (const HANDLE none : {HANDLE(), GetCurrentThread(), own})
    {
        EXPECT_FALSE(OpenProcessToken(none, TOKEN_QUERY, &token));
        EXPECT_EQ(6U, GetLastError());
    }
    EXPECT_TRUE(CloseHandle(own));
    for (const DWORD nobodys : {0x01000000U, 0x00000200U, 0x00008000U, 0x00200000U})
    {
        EXPECT_FALSE(OpenProcessToken(GetCurrentProcess(), TOKEN_QUERY | nobodys, &token)) << nobodys;
        EXPECT_EQ(5U, GetLastError());
    }
}

TEST(Token, Knows_Privileges_By_Name)
{
    LUID luid{};
    EXPECT_TRUE(LookupPrivilegeValueW(nullptr, L"SeDebugPrivilege", &luid));
    EXPECT_EQ(DEBUG_PRIVILEGE, luid.LowPart);
    EXPECT_TRUE(LookupPrivilegeValueW(L"", L"sechangenotifyPRIVILEGE", &luid));
    EXPECT_EQ(CHANGE_NOTIFY, luid.LowPart);
    for (const wchar_t* pName : {L"", L"SeDebug", L"SeDebugPrivileges", static_cast<const wchar_t*>(nullptr)})
    {
        EXPECT_FALSE(LookupPrivilegeValueW(nullptr, pName, &luid));
        EXPECT_EQ(1313U, GetLastError());
    }
    EXPECT_EQ(CHANGE_NOTIFY, luid.LowPart);
}

TEST(Token, Switches_Its_Privileges)
{
    const HANDLE token = Open(TOKEN_ADJUST_PRIVILEGES);
    const DWORD before = Attributes_Of(CHANGE_NOTIFY);
    EXPECT_EQ(SE_PRIVILEGE_ENABLED | SE_PRIVILEGE_ENABLED_BY_DEFAULT, before);
    EXPECT_EQ(0U, Switch(token, CHANGE_NOTIFY, 0));
    EXPECT_EQ(SE_PRIVILEGE_ENABLED_BY_DEFAULT, Attributes_Of(CHANGE_NOTIFY)) << "seen through another handle";
    EXPECT_EQ(0U, Switch(token, CHANGE_NOTIFY, SE_PRIVILEGE_ENABLED));
    EXPECT_EQ(before, Attributes_Of(CHANGE_NOTIFY));

    // Nobody holds the first, and the second is none.
    EXPECT_EQ(1300U, Switch(token, 2, SE_PRIVILEGE_ENABLED));
    EXPECT_EQ(1300U, Switch(token, 99, 0));
    CloseHandle(token);
}

TEST(Token, Lets_Nobody_Switch_Without_The_Right)
{
    TOKEN_PRIVILEGES wanted = {1, {{{CHANGE_NOTIFY, 0}, 0}}};
    const HANDLE event = CreateEventW(nullptr, FALSE, FALSE, nullptr);
    const HANDLE query = Open(TOKEN_QUERY);
    for (const auto& [handle, nError] : {std::pair(query, 5U), std::pair(event, 6U), std::pair(HANDLE(), 6U)})
    {
        EXPECT_FALSE(AdjustTokenPrivileges(handle, FALSE, &wanted, 0, nullptr, nullptr));
        EXPECT_EQ(nError, GetLastError());
    }
    CloseHandle(query);
    CloseHandle(event);
    EXPECT_EQ(SE_PRIVILEGE_ENABLED, Attributes_Of(CHANGE_NOTIFY) & SE_PRIVILEGE_ENABLED);
}
