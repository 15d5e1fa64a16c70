#include "client.h"
#include "lib_thread.h"

using namespace test_support;

namespace
{

/// Whether a thread that is made after that one works for the client.
bool Works_When_Made_After(HANDLE source, Lib_Result& result)
{
    void* thread = nullptr;
    const auto tell = [](void*) { return Works_For_Client() ? 1U : 2U; };
    EXPECT_TRUE(
        Lib_Create_Impersonated_Thread_Ex(nullptr, 0, tell, nullptr, 0, result, nullptr, source, &thread));
    const Owned owned(thread);
    EXPECT_EQ(WAIT_OBJECT_0, WaitForSingleObject(thread, INFINITE));
    DWORD code = 0;
    EXPECT_TRUE(GetExitCodeThread(thread, &code));
    return code == 1;
}

} // namespace

TEST(Impersonated_Thread_Rights, Decide_About_The_Token)
{
    Lib_Result result;
    ASSERT_TRUE(Impersonate_Client());
    EXPECT_TRUE(Works_When_Made_After(nullptr, result));
    EXPECT_EQ(Lib_Result(), result);

    // A handle that doesn't let one ask for the token.
    EXPECT_FALSE(Works_When_Made_After(Duplicate_Of(GetCurrentThread(), SYNCHRONIZE), result));
    EXPECT_EQ(Lib_Result(ERROR_ACCESS_DENIED, 1), result);

    const Owned token(Lib_Create_Session_Token(3, TOKEN_QUERY)); // not to be borne by others
    EXPECT_TRUE(SetThreadToken(nullptr, token));
    result.Reset_Result();
    EXPECT_FALSE(Works_When_Made_After(nullptr, result));
    EXPECT_EQ(Lib_Result(ERROR_ACCESS_DENIED, 1), result);
    RevertToSelf();
}
