#include "handles.h"
#include "lib_environment.h"
#include "lib_foundation.h"

namespace
{

constexpr unsigned int UNKNOWN = 0xFFFFFFFF;

class Params : public Lib_Environment_Params
{
public:
    Params(unsigned int dwSession, unsigned int dwProcess, unsigned int dwThread)
    {
        m_dwSession_ID = dwSession;
        m_dwProcess_ID = dwProcess;
        m_dwThread_ID = dwThread;
    }
    using Lib_Environment_Params::init_IDs;
};

void expect_IDs(const Lib_Environment_Params& params, unsigned int nSession, unsigned int nProcess,
                unsigned int nThread)
{
    EXPECT_EQ(nSession, params.Get_Session_ID());
    EXPECT_EQ(nProcess, params.Get_Process_ID());
    EXPECT_EQ(nThread, params.Get_Thread_ID());
}

TEST(Environment_Params, The_Left_Session_Decides_How_They_Are_Compared)
{
    struct
    {
        Params m_Left;
        Params m_Right;
        bool m_bEqual;
    } const rows[] = {
        {{3, 10, 20}, {3, 11, 21}, true},
        {{3, 10, 20}, {4, 10, 20}, false},
        {{3, 10, 20}, {UNKNOWN, 10, 20}, false},
        {{UNKNOWN, 10, 20}, {3, 10, 20}, true},
        {{UNKNOWN, 10, 20}, {3, 10, 21}, false},
        {{UNKNOWN, 10, 20}, {UNKNOWN, 11, 20}, false},
        {{0, 1, 2}, {0, 3, 4}, true},
    };
    for (const auto& row : rows)
    {
        SCOPED_TRACE(testing::Message()
                     << row.m_Left.Get_Session_ID() << " with " << row.m_Right.Get_Session_ID() << ", "
                     << row.m_Right.Get_Process_ID() << ", " << row.m_Right.Get_Thread_ID());
        EXPECT_EQ(row.m_bEqual, row.m_Left == row.m_Right);
        EXPECT_EQ(!row.m_bEqual, row.m_Left != row.m_Right);
    }
    Lib_Environment_Params copy;
    expect_IDs(copy, 0, 0, 0);
    expect_IDs(copy = Params(3, 10, 20), 3, 10, 20);
}

/// The session of the process, as its token tells it.
unsigned int own_Session()
{
    HANDLE hToken = nullptr;
    EXPECT_TRUE(OpenProcessToken(GetCurrentProcess(), TOKEN_QUERY, &hToken));
    const test_support::Owned token(hToken);
    DWORD dwSession = UNKNOWN;
    DWORD dwLength = 0;
    EXPECT_TRUE(GetTokenInformation(token, TokenSessionId, &dwSession, sizeof dwSession, &dwLength));
    return dwSession;
}

TEST(Environment_Params, A_Thread_That_Impersonates_Nobody_Is_Of_Its_Process)
{
    Lib_Result result(1, 2);
    unsigned int nSession = 77;
    EXPECT_TRUE(Acquire_Session_ID(nSession, result));
    EXPECT_EQ(own_Session(), nSession);
    EXPECT_EQ(Lib_Result(ERROR_NO_TOKEN, 1), result) << "the answer decides, the code stays";

    Params params(1, 2, 3);
    EXPECT_TRUE(params.Initialize(result));
    expect_IDs(params, nSession, GetCurrentProcessId(), GetCurrentThreadId());
    Params same(1, 2, 3);
    EXPECT_TRUE(same.init_IDs(result));
    expect_IDs(same, nSession, GetCurrentProcessId(), GetCurrentThreadId());
}

} // namespace
