#include "client.h"
#include "lib_thread.h"

#include <gtest/gtest.h>

#include <atomic>

using namespace test_support;

namespace
{

std::atomic<unsigned int> s_nRuns{0};
std::atomic<unsigned int> s_nThread{0};

constexpr unsigned int FOR_CLIENT = 11;
constexpr unsigned int FOR_ITSELF = 22;

/// The exit code tells for whom the thread worked; the argument is an event to set, if any.
unsigned int Work(void* argument)
{
    ++s_nRuns;
    s_nThread = GetCurrentThreadId();
    const unsigned int code = Works_For_Client() ? FOR_CLIENT : FOR_ITSELF;
    if (argument != nullptr)
    {
        SetEvent(argument);
    }
    return code;
}

/// Waits for the end, and closes the handle.
DWORD Exit_Code(HANDLE thread)
{
    DWORD code = 0;
    EXPECT_EQ(DWORD{WAIT_OBJECT_0}, WaitForSingleObject(thread, INFINITE));
    EXPECT_TRUE(GetExitCodeThread(thread, &code));
    EXPECT_TRUE(CloseHandle(thread));
    return code;
}

class Impersonated_Thread : public testing::Test
{
protected:
    Impersonated_Thread() { s_nRuns = 0; }
    ~Impersonated_Thread() override { RevertToSelf(); }

    /// The new thread's handle.
    HANDLE create(unsigned int nFlags = 0, void* hSource = nullptr, unsigned int* pnID = nullptr)
    {
        HANDLE thread = nullptr;
        EXPECT_TRUE(Lib_Create_Impersonated_Thread_Ex(nullptr, 0, Work, nullptr, nFlags, m_Result, pnID,
                                                      hSource, &thread));
        EXPECT_NE(nullptr, thread);
        return thread;
    }

    void expect_Result(unsigned int nCode, unsigned int nSource)
    {
        EXPECT_EQ(nCode, m_Result.Get_Result_Code());
        EXPECT_EQ(nSource, m_Result.Get_Result_Source());
    }

    Lib_Result m_Result;
};

} // namespace

TEST_F(Impersonated_Thread, Runs_For_Itself_If_Nobody_Is_Impersonated)
{
    unsigned int id = 0;
    EXPECT_EQ(FOR_ITSELF, Exit_Code(create(0, nullptr, &id)));
    EXPECT_EQ(s_nThread, id);
    expect_Result(1008, 1);
}

TEST_F(Impersonated_Thread, Works_For_The_Client_Of_Its_Maker)
{
    ASSERT_TRUE(Impersonate_Client());
    m_Result.Set_Result(1234, 2);
    const HANDLE thread = create();
    RevertToSelf();
    EXPECT_EQ(FOR_CLIENT, Exit_Code(thread));
    expect_Result(1234, 2);
}

TEST_F(Impersonated_Thread, Stays_Suspended_With_The_Token_If_Asked_To)
{
    ASSERT_TRUE(Impersonate_Client());
    const HANDLE thread = create(CREATE_SUSPENDED);
    EXPECT_TRUE(RevertToSelf());
    EXPECT_EQ(DWORD{WAIT_TIMEOUT}, WaitForSingleObject(thread, 30));
    EXPECT_EQ(0U, s_nRuns);
    HANDLE token = nullptr;
    EXPECT_TRUE(OpenThreadToken(thread, TOKEN_QUERY, TRUE, &token));
    CloseHandle(token);
    EXPECT_EQ(1U, ResumeThread(thread));
    EXPECT_EQ(FOR_CLIENT, Exit_Code(thread));
    expect_Result(0, 0);
}

TEST_F(Impersonated_Thread, Runs_On_When_Its_Handle_Is_Not_Wanted)
{
    const HANDLE done = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    EXPECT_TRUE(
        Lib_Create_Impersonated_Thread_Ex(nullptr, 0, Work, done, 0, m_Result, nullptr, nullptr, nullptr));
    EXPECT_EQ(DWORD{WAIT_OBJECT_0}, WaitForSingleObject(done, INFINITE));
    CloseHandle(done);
    EXPECT_EQ(1U, s_nRuns);
}

TEST_F(Impersonated_Thread, Takes_The_Token_Of_The_Thread_That_Is_Named)
{
    ASSERT_TRUE(Impersonate_Client());
    const HANDLE source = create(CREATE_SUSPENDED);
    RevertToSelf();
    EXPECT_EQ(FOR_CLIENT, Exit_Code(create(0, source)));
    expect_Result(0, 0);

    // And of none other: the caller's does not count.
    EXPECT_TRUE(SetThreadToken(const_cast<HANDLE*>(&source), nullptr));
    ASSERT_TRUE(Impersonate_Client());
    EXPECT_EQ(FOR_ITSELF, Exit_Code(create(0, source)));
    expect_Result(1008, 1);
    EXPECT_TRUE(TerminateThread(source, 0));
    CloseHandle(source);
}

TEST_F(Impersonated_Thread, Goes_Without_A_Token_That_It_Cannot_Have)
{
    ASSERT_TRUE(Impersonate_Client());
    const HANDLE event = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    EXPECT_EQ(FOR_ITSELF, Exit_Code(create(0, event)));
    expect_Result(6, 1);
    CloseHandle(event);
    EXPECT_EQ(FOR_ITSELF, Exit_Code(create(0, event))) << "no handle at all";
    expect_Result(6, 1);
}
