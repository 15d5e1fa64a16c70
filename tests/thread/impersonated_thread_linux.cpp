#include "client.h"
#include "lib_thread.h"

#include <gtest/gtest.h>

using namespace test_support;

namespace
{

DWORD Exit_Code_Of_New_Thread(HANDLE source, Lib_Result& result)
{
    void* thread = nullptr;
    const auto tell = [](void*) { return Works_For_Client() ? 1U : 2U; };
    EXPECT_TRUE(
        Lib_Create_Impersonated_Thread_Ex(nullptr, 0, tell, nullptr, 0, result, nullptr, source, &thread));
    EXPECT_EQ(DWORD{WAIT_OBJECT_0}, WaitForSingleObject(thread, INFINITE));
    DWORD code = 0;
    EXPECT_TRUE(GetExitCodeThread(thread, &code));
    CloseHandle(thread);
    return code;
}

} // namespace

TEST(Impersonated_Thread_Rights, Decide_About_The_Token)
{
    Lib_Result result;
    ASSERT_TRUE(Impersonate_Client());
    EXPECT_EQ(1U, Exit_Code_Of_New_Thread(nullptr, result));
    EXPECT_EQ(0U, result.Get_Result_Code());

    HANDLE weak = nullptr; // doesn't let one ask for the token
    ASSERT_TRUE(DuplicateHandle(GetCurrentProcess(), GetCurrentThread(), GetCurrentProcess(), &weak,
                                SYNCHRONIZE, FALSE, 0));
    EXPECT_EQ(2U, Exit_Code_Of_New_Thread(weak, result));
    EXPECT_EQ(DWORD{ERROR_ACCESS_DENIED}, result.Get_Result_Code());
    EXPECT_EQ(1U, result.Get_Result_Source());
    CloseHandle(weak);

    const HANDLE token = Lib_Create_Session_Token(3, TOKEN_QUERY); // not to be borne by others
    EXPECT_TRUE(SetThreadToken(nullptr, token));
    CloseHandle(token);
    result.Reset_Result();
    EXPECT_EQ(2U, Exit_Code_Of_New_Thread(nullptr, result));
    EXPECT_EQ(DWORD{ERROR_ACCESS_DENIED}, result.Get_Result_Code());
    RevertToSelf();
}

TEST(Impersonated_Thread_Rights, A_Thread_That_Cannot_Be_Made_Leaves_The_Platforms_Code)
{
    Lib_Result result;
    void* thread = &result;
    unsigned int id = 5;
    const auto never = [](void*) { return 0U; };
    EXPECT_FALSE(Lib_Create_Impersonated_Thread_Ex(nullptr, 0, never, nullptr, 0x80000000, result, &id,
                                                   nullptr, &thread));
    EXPECT_EQ(DWORD{ERROR_INVALID_PARAMETER}, result.Get_Result_Code());
    EXPECT_EQ(1U, result.Get_Result_Source());
    EXPECT_EQ(&result, thread);
    EXPECT_EQ(5U, id);
}
