#include "handles.h"

#include <cstddef>
#include <initializer_list>

// Tokens of threads and processes, as both targets tell of them.

using namespace test_support;

namespace
{

Owned Process_Token()
{
    HANDLE token = nullptr;
    EXPECT_TRUE(OpenProcessToken(GetCurrentProcess(), TOKEN_QUERY, &token));
    return Owned(token);
}

DWORD Error_Of_Opening(HANDLE thread, DWORD access = TOKEN_QUERY)
{
    HANDLE token = nullptr;
    SetLastError(0);
    return Error_Of(OpenThreadToken(thread, access, TRUE, &token));
}

} // namespace

TEST(Thread_Token, Is_Missing_Unless_A_Client_Is_Worked_For)
{
    const Owned thread = Duplicate_Of(GetCurrentThread(), THREAD_QUERY_INFORMATION);
    const Owned process_token = Process_Token();
    EXPECT_EQ(DWORD{ERROR_NO_TOKEN}, Error_Of_Opening(GetCurrentThread()));
    EXPECT_TRUE(RevertToSelf());
    EXPECT_TRUE(SetThreadToken(nullptr, nullptr));
    EXPECT_EQ(DWORD{ERROR_NO_TOKEN}, Error_Of_Opening(thread, TOKEN_IMPERSONATE));
    for (const HANDLE wrong : std::initializer_list<HANDLE>{nullptr, process_token, GetCurrentProcess()})
    {
        EXPECT_EQ(DWORD{ERROR_INVALID_HANDLE}, Error_Of_Opening(wrong));
    }

    const Owned blind = Duplicate_Of(GetCurrentThread(), SYNCHRONIZE);
    HANDLE weak = blind;
    EXPECT_EQ(DWORD{ERROR_ACCESS_DENIED}, Error_Of(SetThreadToken(&weak, nullptr)));
    EXPECT_EQ(DWORD{ERROR_ACCESS_DENIED}, Error_Of(SetThreadToken(nullptr, process_token)))
        << "the handle lets nobody impersonate";
    EXPECT_EQ(DWORD{ERROR_INVALID_HANDLE}, Error_Of(SetThreadToken(nullptr, Make_Event(true, false))));
    EXPECT_EQ(DWORD{ERROR_NO_TOKEN}, Error_Of_Opening(GetCurrentThread()));
}

TEST(Thread_Token, Of_The_Process_Tells_Its_Session_And_User)
{
    const Owned token = Process_Token();
    DWORD session = 0xFFFFFFFF;
    DWORD needed = 0;
    ASSERT_TRUE(GetTokenInformation(token, TokenSessionId, &session, sizeof session, &needed));
    EXPECT_EQ(4U, needed);
    EXPECT_NE(0xFFFFFFFFU, session);
    needed = 0;
    EXPECT_FALSE(GetTokenInformation(token, TokenSessionId, &session, 3, &needed));
    EXPECT_TRUE(GetLastError() == ERROR_BAD_LENGTH || GetLastError() == ERROR_INSUFFICIENT_BUFFER);
    EXPECT_EQ(4U, needed);

    EXPECT_EQ(DWORD{ERROR_INSUFFICIENT_BUFFER},
              Error_Of(GetTokenInformation(token, TokenUser, nullptr, 0, &needed)));
    union
    {
        TOKEN_USER m_User;
        BYTE m_Bytes[200];
    } told = {};
    ASSERT_LE(needed, sizeof told);
    ASSERT_TRUE(GetTokenInformation(token, TokenUser, &told, needed, &needed));
    ASSERT_TRUE(IsValidSid(told.m_User.User.Sid));
    EXPECT_EQ(told.m_Bytes + sizeof(TOKEN_USER), static_cast<BYTE*>(told.m_User.User.Sid));
    EXPECT_EQ(needed, sizeof(TOKEN_USER) + GetLengthSid(told.m_User.User.Sid));
    EXPECT_EQ(0U, told.m_User.User.Attributes);
}
