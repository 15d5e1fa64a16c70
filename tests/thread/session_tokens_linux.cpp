#include "client.h"
#include "other_thread.h"
#include "sanitizers.h"

#include <sys/wait.h>
#include <unistd.h>

// Tokens made for sessions, and threads that bear them.

using namespace test_support;

namespace
{

constexpr DWORD NONE = 0xFFFFFFFE;
constexpr DWORD DENIED = 0xFFFFFFFF;

/// What a thread's token tells of its session: NONE if it bears none, DENIED if it doesn't tell.
DWORD Session_Of(HANDLE thread)
{
    HANDLE token = nullptr;
    if (!OpenThreadToken(thread, TOKEN_QUERY, TRUE, &token))
    {
        return GetLastError() == ERROR_NO_TOKEN ? NONE : DENIED;
    }
    DWORD session = 0;
    DWORD needed = 0;
    EXPECT_TRUE(GetTokenInformation(token, TokenSessionId, &session, sizeof session, &needed));
    CloseHandle(token);
    return session;
}

DWORD Own_Session() { return Session_Of(GetCurrentThread()); }

/// Bears a token for a session and has no handle to it.
void Bear(DWORD session, DWORD granted) { EXPECT_TRUE(Impersonate_Client(session, granted)); }

bool Opens_Process_Token(DWORD access, HANDLE process = GetCurrentProcess())
{
    HANDLE token = nullptr;
    const bool opened = OpenProcessToken(process, access, &token) != FALSE;
    EXPECT_TRUE(opened ? CloseHandle(token) : GetLastError() == ERROR_ACCESS_DENIED);
    return opened;
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
    EXPECT_EQ(3U, Own_Session()) << "nobody has a handle to it any more";
    EXPECT_EQ(NONE, On_Other_Thread(Own_Session)) << "it is one thread's";
    Bear(0, TOKEN_QUERY);
    EXPECT_EQ(0U, Own_Session());
    EXPECT_TRUE(SetThreadToken(nullptr, nullptr));
    EXPECT_EQ(NONE, Own_Session());
}

TEST_F(Session_Token, Grants_What_It_Was_Made_For_And_Is_No_Token_Of_A_Process)
{
    Bear(3, TOKEN_IMPERSONATE | TOKEN_DUPLICATE);
    EXPECT_EQ(DENIED, Own_Session());
    Bear(3, GENERIC_READ);
    EXPECT_EQ(3U, Own_Session());
    EXPECT_EQ(DENIED, Session_Of(Duplicate_Of(GetCurrentThread(), THREAD_SET_THREAD_TOKEN)));
    EXPECT_EQ(DWORD{ERROR_INVALID_PARAMETER}, Error_Of(Lib_Create_Session_Token(DENIED, TOKEN_ALL_ACCESS)));
    EXPECT_EQ(DWORD{ERROR_INVALID_PARAMETER}, Error_Of(Lib_Create_Session_Token(3, 0x01000000)));

    RevertToSelf();
    HANDLE opened = nullptr;
    ASSERT_TRUE(OpenProcessToken(GetCurrentProcess(), TOKEN_IMPERSONATE | TOKEN_QUERY, &opened));
    const Owned token(opened);
    EXPECT_EQ(DWORD{ERROR_BAD_TOKEN_TYPE}, Error_Of(SetThreadToken(nullptr, token)));
    EXPECT_EQ(NONE, Own_Session());
    for (const int none : {0, -1, 51, 1000})
    {
        DWORD told = 0;
        const auto information = static_cast<TOKEN_INFORMATION_CLASS>(none);
        EXPECT_EQ(DWORD{ERROR_INVALID_PARAMETER},
                  Error_Of(GetTokenInformation(token, information, &told, sizeof told, &told)));
    }
}

TEST_F(Session_Token, Keeps_A_Denied_Client_From_The_Token_Of_The_Service)
{
    Bear(3, TOKEN_IMPERSONATE);
    EXPECT_FALSE(Opens_Process_Token(TOKEN_QUERY));
    EXPECT_FALSE(Opens_Process_Token(TOKEN_QUERY, Duplicate_Of(GetCurrentProcess())));
    EXPECT_TRUE(On_Other_Thread([] { return Opens_Process_Token(TOKEN_QUERY); })) << "other threads may";

    Bear(3, TOKEN_QUERY);
    EXPECT_TRUE(Opens_Process_Token(TOKEN_QUERY));
    EXPECT_FALSE(Opens_Process_Token(TOKEN_QUERY | TOKEN_ADJUST_PRIVILEGES));
    RevertToSelf();
    EXPECT_TRUE(Opens_Process_Token(TOKEN_QUERY | TOKEN_ADJUST_PRIVILEGES));
}

TEST_F(Session_Token, Of_Another_Thread_Is_Reached_Through_Its_Handle)
{
    const Owned go = Make_Event(true, false);
    std::atomic<HANDLE> told{nullptr};
    DWORD seen = 0;
    Sleeper other(
        [&]
        {
            told = Duplicate_Of(GetCurrentThread()).Detach();
            WaitForSingleObject(go, INFINITE);
            seen = Own_Session();
        });
    const Owned thread(told.load());
    HANDLE handle = thread;
    const Owned token(Lib_Create_Session_Token(7, TOKEN_QUERY));
    EXPECT_TRUE(SetThreadToken(&handle, token));
    Bear(3, TOKEN_IMPERSONATE);
    EXPECT_EQ(7U, Session_Of(thread));
    HANDLE opened = nullptr; // with as_self 0 it is the client who asks, and he has less
    EXPECT_EQ(DWORD{ERROR_ACCESS_DENIED}, Error_Of(OpenThreadToken(thread, TOKEN_QUERY, FALSE, &opened)));

    SetEvent(go);
    EXPECT_EQ(WAIT_OBJECT_0, WaitForSingleObject(thread, INFINITE));
    other.Join();
    EXPECT_EQ(7U, seen);
    EXPECT_EQ(NONE, Session_Of(thread)) << "it ended";
    EXPECT_EQ(DWORD{ERROR_ACCESS_DENIED}, Error_Of(SetThreadToken(&handle, token)));
}

TEST_F(Session_Token, Changes_Hands_While_Others_Look)
{
    const Owned own = Duplicate_Of(GetCurrentThread());
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
}

TEST_F(Session_Token, Is_Not_Inherited_By_A_Forked_Child)
{
    if (With_Thread_Sanitizer)
        GTEST_SKIP() << "the thread sanitizer knows no such child";
    Bear(3, TOKEN_QUERY);
    const pid_t child = fork();
    if (child == 0)
    {
        const bool alone = Own_Session() == NONE;
        Bear(4, TOKEN_QUERY);
        _exit(alone && Own_Session() == 4 && Opens_Process_Token(TOKEN_QUERY) ? 0 : 1);
    }
    int status = -1;
    waitpid(child, &status, 0);
    EXPECT_EQ(0, status);
    EXPECT_EQ(3U, Own_Session());
}
