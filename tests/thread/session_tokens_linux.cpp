#include "lib_platform.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

#include <sys/wait.h>
#include <unistd.h>

// Tokens made for sessions, and threads that bear them.

namespace
{

constexpr DWORD EVERYTHING = TOKEN_ALL_ACCESS;

/// What a thread's token tells of its session: 0xFFFFFFFE if it bears none, 0xFFFFFFFF if that is denied.
DWORD Session_Of(HANDLE thread)
{
    HANDLE token = nullptr;
    if (!OpenThreadToken(thread, TOKEN_QUERY, TRUE, &token))
    {
        return GetLastError() == ERROR_NO_TOKEN ? 0xFFFFFFFE : 0xFFFFFFFF;
    }
    DWORD session = 0;
    DWORD needed = 0;
    EXPECT_TRUE(GetTokenInformation(token, TokenSessionId, &session, sizeof session, &needed));
    CloseHandle(token);
    return session;
}

constexpr DWORD NONE = 0xFFFFFFFE;
constexpr DWORD DENIED = 0xFFFFFFFF;

/// Bears a token for a session and has no handle to it.
void Bear(DWORD session, DWORD granted)
{
    const HANDLE token = Lib_Create_Session_Token(session, granted);
    ASSERT_NE(nullptr, token);
    EXPECT_TRUE(SetThreadToken(nullptr, token));
    EXPECT_TRUE(CloseHandle(token));
}

bool Opens_Process_Token(DWORD access)
{
    HANDLE token = nullptr;
    SetLastError(0);
    if (!OpenProcessToken(GetCurrentProcess(), access, &token))
    {
        EXPECT_EQ(DWORD{ERROR_ACCESS_DENIED}, GetLastError());
        return false;
    }
    return CloseHandle(token) != 0;
}

class Session_Token : public testing::Test
{
protected:
    ~Session_Token() override { RevertToSelf(); }
};

} // namespace

TEST_F(Session_Token, Is_Borne_Until_It_Is_Put_Off)
{
    Bear(3, TOKEN_QUERY);
    EXPECT_EQ(3U, Session_Of(GetCurrentThread())) << "nobody has a handle to it any more";
    std::thread([] { EXPECT_EQ(NONE, Session_Of(GetCurrentThread())) << "it is one thread's"; }).join();
    Bear(0, TOKEN_QUERY);
    EXPECT_EQ(0U, Session_Of(GetCurrentThread()));
    EXPECT_TRUE(SetThreadToken(nullptr, nullptr));
    EXPECT_EQ(NONE, Session_Of(GetCurrentThread()));
    Bear(0xFFFFFFFE, TOKEN_QUERY);
    EXPECT_TRUE(RevertToSelf());
    EXPECT_EQ(NONE, Session_Of(GetCurrentThread()));
}

TEST_F(Session_Token, Grants_What_It_Was_Made_For)
{
    Bear(3, TOKEN_IMPERSONATE | TOKEN_DUPLICATE);
    EXPECT_EQ(DENIED, Session_Of(GetCurrentThread()));
    HANDLE token = nullptr;
    ASSERT_TRUE(OpenThreadToken(GetCurrentThread(), TOKEN_IMPERSONATE, TRUE, &token));
    DWORD told = 0;
    EXPECT_FALSE(GetTokenInformation(token, TokenSessionId, &told, sizeof told, &told));
    EXPECT_EQ(DWORD{ERROR_ACCESS_DENIED}, GetLastError());
    EXPECT_TRUE(SetThreadToken(nullptr, token));
    CloseHandle(token);
    EXPECT_FALSE(OpenThreadToken(GetCurrentThread(), TOKEN_IMPERSONATE, TRUE, nullptr));
    EXPECT_EQ(DWORD{ERROR_INVALID_PARAMETER}, GetLastError());

    Bear(3, GENERIC_READ);
    EXPECT_EQ(3U, Session_Of(GetCurrentThread()));
    EXPECT_EQ(nullptr, Lib_Create_Session_Token(0xFFFFFFFF, EVERYTHING));
    EXPECT_EQ(DWORD{ERROR_INVALID_PARAMETER}, GetLastError());
    EXPECT_EQ(nullptr, Lib_Create_Session_Token(3, 0x01000000));
    EXPECT_EQ(DWORD{ERROR_INVALID_PARAMETER}, GetLastError());
}

TEST_F(Session_Token, Is_No_Token_Of_A_Process)
{
    HANDLE token = nullptr;
    ASSERT_TRUE(OpenProcessToken(GetCurrentProcess(), TOKEN_IMPERSONATE | TOKEN_QUERY, &token));
    EXPECT_FALSE(SetThreadToken(nullptr, token));
    EXPECT_EQ(DWORD{ERROR_BAD_TOKEN_TYPE}, GetLastError());
    EXPECT_EQ(NONE, Session_Of(GetCurrentThread()));

    HANDLE blind = nullptr;
    ASSERT_TRUE(DuplicateHandle(GetCurrentProcess(), GetCurrentThread(), GetCurrentProcess(), &blind,
                                THREAD_SET_THREAD_TOKEN, FALSE, 0));
    EXPECT_EQ(DENIED, Session_Of(blind));
    EXPECT_EQ(DWORD{ERROR_ACCESS_DENIED}, GetLastError());
    CloseHandle(blind);

    DWORD told = 0;
    EXPECT_FALSE(GetTokenInformation(token, TokenSessionId, &told, 3, &told));
    EXPECT_EQ(DWORD{ERROR_BAD_LENGTH}, GetLastError());
    for (const int none : {0, -1, 51, 1000})
    {
        EXPECT_FALSE(GetTokenInformation(token, static_cast<TOKEN_INFORMATION_CLASS>(none), &told,
                                         sizeof told, &told));
        EXPECT_EQ(DWORD{ERROR_INVALID_PARAMETER}, GetLastError());
    }
    CloseHandle(token);
}

TEST_F(Session_Token, Keeps_A_Denied_Client_From_The_Token_Of_The_Service)
{
    EXPECT_TRUE(Opens_Process_Token(TOKEN_QUERY));
    Bear(3, TOKEN_IMPERSONATE);
    EXPECT_FALSE(Opens_Process_Token(TOKEN_QUERY));
    HANDLE process = nullptr;
    EXPECT_TRUE(DuplicateHandle(GetCurrentProcess(), GetCurrentProcess(), GetCurrentProcess(), &process, 0,
                                FALSE, DUPLICATE_SAME_ACCESS));
    HANDLE token = nullptr;
    EXPECT_FALSE(OpenProcessToken(process, TOKEN_QUERY, &token));
    EXPECT_EQ(DWORD{ERROR_ACCESS_DENIED}, GetLastError());
    CloseHandle(process);
    std::thread([] { EXPECT_TRUE(Opens_Process_Token(TOKEN_QUERY)) << "other threads may"; }).join();

    Bear(3, TOKEN_QUERY);
    EXPECT_TRUE(Opens_Process_Token(TOKEN_QUERY));
    EXPECT_FALSE(Opens_Process_Token(TOKEN_QUERY | TOKEN_ADJUST_PRIVILEGES));
    RevertToSelf();
    EXPECT_TRUE(Opens_Process_Token(TOKEN_QUERY | TOKEN_ADJUST_PRIVILEGES));
}

TEST_F(Session_Token, Of_Another_Thread_Is_Reached_Through_Its_Handle)
{
    std::atomic<HANDLE> thread{nullptr};
    const HANDLE go = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    const HANDLE ready = CreateEventW(nullptr, FALSE, FALSE, nullptr);
    DWORD seen = 0;
    std::thread other(
        [&]
        {
            HANDLE own = nullptr;
            DuplicateHandle(GetCurrentProcess(), GetCurrentThread(), GetCurrentProcess(), &own, 0, FALSE,
                            DUPLICATE_SAME_ACCESS);
            thread = own;
            SetEvent(ready);
            WaitForSingleObject(go, INFINITE);
            seen = Session_Of(GetCurrentThread());
        });
    WaitForSingleObject(ready, INFINITE);
    HANDLE handle = thread;
    const HANDLE token = Lib_Create_Session_Token(7, TOKEN_QUERY);
    EXPECT_TRUE(SetThreadToken(&handle, token));
    EXPECT_EQ(7U, Session_Of(handle));
    EXPECT_EQ(NONE, Session_Of(GetCurrentThread()));

    // With as_self 0 it is the client who asks, and he has less.
    Bear(3, TOKEN_IMPERSONATE);
    HANDLE opened = nullptr;
    EXPECT_FALSE(OpenThreadToken(handle, TOKEN_QUERY, FALSE, &opened));
    EXPECT_EQ(DWORD{ERROR_ACCESS_DENIED}, GetLastError());
    EXPECT_EQ(7U, Session_Of(handle));

    SetEvent(go);
    other.join();
    EXPECT_EQ(7U, seen);
    EXPECT_EQ(DWORD{WAIT_OBJECT_0}, WaitForSingleObject(handle, INFINITE));
    EXPECT_EQ(NONE, Session_Of(handle)) << "it ended";
    EXPECT_FALSE(SetThreadToken(&handle, token));
    EXPECT_EQ(DWORD{ERROR_ACCESS_DENIED}, GetLastError());
    for (const HANDLE each : {handle, token, go, ready})
    {
        EXPECT_TRUE(CloseHandle(each));
    }
}

TEST_F(Session_Token, Changes_Hands_While_Others_Look)
{
    HANDLE own = nullptr;
    ASSERT_TRUE(DuplicateHandle(GetCurrentProcess(), GetCurrentThread(), GetCurrentProcess(), &own, 0, FALSE,
                                DUPLICATE_SAME_ACCESS));
    std::atomic<bool> done{false};
    std::thread reader(
        [&]
        {
            while (!done)
            {
                const DWORD session = Session_Of(own);
                EXPECT_TRUE(session == NONE || session < 100) << session;
            }
        });
    for (DWORD round = 0; round < 5000; ++round)
    {
        Bear(round % 100, TOKEN_QUERY);
        if (round % 3 == 0)
        {
            RevertToSelf();
        }
    }
    done = true;
    reader.join();
    CloseHandle(own);
}

#if !defined(__SANITIZE_THREAD__)
TEST_F(Session_Token, Is_Not_Inherited_By_A_Forked_Child)
{
    Bear(3, TOKEN_QUERY);
    const pid_t child = fork();
    if (child == 0)
    {
        const bool alone = Session_Of(GetCurrentThread()) == NONE;
        Bear(4, TOKEN_QUERY);
        _exit(alone && Session_Of(GetCurrentThread()) == 4 && Opens_Process_Token(TOKEN_QUERY) ? 0 : 1);
    }
    int status = -1;
    waitpid(child, &status, 0);
    EXPECT_EQ(0, status);
    EXPECT_EQ(3U, Session_Of(GetCurrentThread()));
}
#endif
