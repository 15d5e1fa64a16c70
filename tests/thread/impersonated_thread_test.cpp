#include "client.h"
#include "lib_thread.h"

using namespace test_support;

namespace
{

std::atomic<unsigned int> s_nRuns{0};
std::atomic<unsigned int> s_nThread{0};

constexpr unsigned int FOR_CLIENT = 11;
constexpr unsigned int FOR_ITSELF = 22;

const Lib_Result UNTOUCHED(1234, 2);
const Lib_Result NO_TOKEN(1008, 1);
const Lib_Result INVALID_HANDLE(6, 1);

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

DWORD Exit_Code(const Owned& thread)
{
    DWORD code = 0;
    EXPECT_EQ(WAIT_OBJECT_0, WaitForSingleObject(thread, INFINITE));
    EXPECT_TRUE(GetExitCodeThread(thread, &code));
    return code;
}

class Impersonated_Thread : public testing::Test
{
protected:
    Impersonated_Thread() { s_nRuns = 0; }
    ~Impersonated_Thread() override { RevertToSelf(); }

    Owned create(unsigned int nFlags = 0, void* hSource = nullptr, unsigned int* pnID = nullptr)
    {
        m_Result = UNTOUCHED;
        HANDLE thread = nullptr;
        EXPECT_TRUE(Lib_Create_Impersonated_Thread_Ex(nullptr, 0, Work, nullptr, nFlags, m_Result, pnID,
                                                      hSource, &thread));
        return Owned(thread);
    }

    Lib_Result m_Result;
};

} // namespace

TEST_F(Impersonated_Thread, Runs_For_Itself_If_Nobody_Is_Impersonated)
{
    unsigned int id = 0;
    EXPECT_EQ(FOR_ITSELF, Exit_Code(create(0, nullptr, &id)));
    EXPECT_EQ(s_nThread, id);
    EXPECT_EQ(NO_TOKEN, m_Result);

    const Owned done = Make_Event(true, false); // without a handle
    EXPECT_TRUE(
        Lib_Create_Impersonated_Thread_Ex(nullptr, 0, Work, done, 0, m_Result, nullptr, nullptr, nullptr));
    EXPECT_EQ(WAIT_OBJECT_0, WaitForSingleObject(done, INFINITE));
}

TEST_F(Impersonated_Thread, Works_For_The_Client_Of_Its_Maker)
{
    ASSERT_TRUE(Impersonate_Client());
    const Owned running = create();
    EXPECT_EQ(FOR_CLIENT, Exit_Code(running));
    EXPECT_EQ(UNTOUCHED, m_Result);

    const Owned suspended = create(CREATE_SUSPENDED);
    EXPECT_TRUE(RevertToSelf());
    EXPECT_EQ(TIMED_OUT, WaitForSingleObject(suspended, 30));
    EXPECT_EQ(1U, s_nRuns);
    HANDLE token = nullptr;
    EXPECT_TRUE(OpenThreadToken(suspended, TOKEN_QUERY, TRUE, &token));
    CloseHandle(token);
    EXPECT_EQ(1U, ResumeThread(suspended));
    EXPECT_EQ(FOR_CLIENT, Exit_Code(suspended));
}

TEST_F(Impersonated_Thread, Takes_The_Token_Of_The_Thread_That_Is_Named)
{
    ASSERT_TRUE(Impersonate_Client());
    const Owned source = create(CREATE_SUSPENDED);
    RevertToSelf();
    EXPECT_EQ(FOR_CLIENT, Exit_Code(create(0, source)));
    EXPECT_EQ(UNTOUCHED, m_Result);

    // And of none other: the caller's does not count.
    HANDLE handle = source;
    EXPECT_TRUE(SetThreadToken(&handle, nullptr));
    ASSERT_TRUE(Impersonate_Client());
    EXPECT_EQ(FOR_ITSELF, Exit_Code(create(0, source)));
    EXPECT_EQ(NO_TOKEN, m_Result);
    EXPECT_TRUE(TerminateThread(source, 0));

    Owned event = Make_Event(true, false);
    handle = event;
    EXPECT_EQ(FOR_ITSELF, Exit_Code(create(0, handle))) << "no thread";
    EXPECT_EQ(INVALID_HANDLE, m_Result);
    event.Close();
    EXPECT_EQ(FOR_ITSELF, Exit_Code(create(0, handle))) << "no handle at all";
    EXPECT_EQ(INVALID_HANDLE, m_Result);
}
