#include "lib_platform.h"

#include <gtest/gtest.h>

#include <cstddef>

// Tokens of threads and processes, as both targets tell of them.

namespace
{

/// A handle to the calling thread with these rights.
HANDLE Own_Thread(DWORD access)
{
    HANDLE thread = nullptr;
    EXPECT_TRUE(DuplicateHandle(GetCurrentProcess(), GetCurrentThread(), GetCurrentProcess(), &thread, access,
                                FALSE, 0));
    return thread;
}

class Thread_Token : public testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(OpenProcessToken(GetCurrentProcess(), TOKEN_QUERY, &m_Process_Token));
    }
    ~Thread_Token() override { CloseHandle(m_Process_Token); }

    void expect_Not_Opened(DWORD dwError, HANDLE thread, DWORD access)
    {
        HANDLE token = &token;
        SetLastError(0);
        EXPECT_FALSE(OpenThreadToken(thread, access, TRUE, &token));
        EXPECT_EQ(dwError, GetLastError());
    }

    HANDLE m_Process_Token = nullptr;
};

} // namespace

TEST_F(Thread_Token, Is_Missing_Unless_A_Client_Is_Worked_For)
{
    expect_Not_Opened(ERROR_NO_TOKEN, GetCurrentThread(), TOKEN_QUERY);
    const HANDLE thread = Own_Thread(THREAD_QUERY_INFORMATION);
    expect_Not_Opened(ERROR_NO_TOKEN, thread, TOKEN_IMPERSONATE);
    EXPECT_TRUE(RevertToSelf());
    EXPECT_TRUE(SetThreadToken(nullptr, nullptr));
    expect_Not_Opened(ERROR_NO_TOKEN, thread, TOKEN_IMPERSONATE);
    CloseHandle(thread);

    const HANDLE blind = Own_Thread(SYNCHRONIZE);
    HANDLE weak = blind;
    EXPECT_FALSE(SetThreadToken(&weak, nullptr));
    EXPECT_EQ(DWORD{ERROR_ACCESS_DENIED}, GetLastError());
    CloseHandle(blind);

    expect_Not_Opened(ERROR_INVALID_HANDLE, nullptr, TOKEN_QUERY);
    expect_Not_Opened(ERROR_INVALID_HANDLE, m_Process_Token, TOKEN_QUERY);
    expect_Not_Opened(ERROR_INVALID_HANDLE, GetCurrentProcess(), TOKEN_QUERY);
}

TEST_F(Thread_Token, Is_No_Other_Object_And_Needs_The_Right)
{
    EXPECT_FALSE(SetThreadToken(nullptr, m_Process_Token));
    EXPECT_EQ(DWORD{ERROR_ACCESS_DENIED}, GetLastError()) << "the handle lets nobody impersonate";
    const HANDLE event = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    EXPECT_FALSE(SetThreadToken(nullptr, event));
    EXPECT_EQ(DWORD{ERROR_INVALID_HANDLE}, GetLastError());
    CloseHandle(event);
    expect_Not_Opened(ERROR_NO_TOKEN, GetCurrentThread(), TOKEN_QUERY);
}

TEST_F(Thread_Token, Of_The_Process_Tells_Its_Session_And_User)
{
    DWORD session = 0xFFFFFFFF;
    DWORD needed = 0;
    ASSERT_TRUE(GetTokenInformation(m_Process_Token, TokenSessionId, &session, sizeof session, &needed));
    EXPECT_EQ(4U, needed);
    EXPECT_NE(0xFFFFFFFFU, session);
    needed = 0;
    EXPECT_FALSE(GetTokenInformation(m_Process_Token, TokenSessionId, &session, 3, &needed));
    EXPECT_TRUE(GetLastError() == ERROR_BAD_LENGTH || GetLastError() == ERROR_INSUFFICIENT_BUFFER);
    EXPECT_EQ(4U, needed);

    EXPECT_FALSE(GetTokenInformation(m_Process_Token, TokenUser, nullptr, 0, &needed));
    EXPECT_EQ(DWORD{ERROR_INSUFFICIENT_BUFFER}, GetLastError());
    union
    {
        TOKEN_USER m_User;
        BYTE m_Bytes[200];
    } told = {};
    ASSERT_LE(needed, sizeof told);
    ASSERT_TRUE(GetTokenInformation(m_Process_Token, TokenUser, &told, needed, &needed));
    ASSERT_TRUE(IsValidSid(told.m_User.User.Sid));
    EXPECT_EQ(told.m_Bytes + sizeof(TOKEN_USER), static_cast<BYTE*>(told.m_User.User.Sid));
    EXPECT_EQ(needed, sizeof(TOKEN_USER) + GetLengthSid(told.m_User.User.Sid));
    EXPECT_EQ(0U, told.m_User.User.Attributes);
}
