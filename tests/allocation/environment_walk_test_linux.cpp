#include "failing_allocator.h"
#include "lib_environment.h"
#include "lib_foundation.h"
#include "lib_platform.h"

#include <memory>
#include <thread>
#include <vector>

using namespace test_support;

// A walk takes memory where the set branches, which takes environments of several sessions.

namespace
{

Lib_Environment_Manager* s_pManager;

bool establish(unsigned int dwSession)
{
    const HANDLE hToken = Lib_Create_Session_Token(dwSession, TOKEN_QUERY);
    EXPECT_TRUE(SetThreadToken(nullptr, hToken));
    EXPECT_TRUE(CloseHandle(hToken));
    Lib_Result result;
    const bool bDone = s_pManager->Establish_Environment(result);
    RevertToSelf();
    return bDone;
}

/// That of session 1 is put into the set after that of session 2, which is made while it is being made.
void* create(Lib_Environment* pEnvironment, Lib_Result&)
{
    if (pEnvironment->Get_Environment_Params()->Get_Session_ID() == 1)
    {
        EXPECT_TRUE(establish(2));
    }
    return pEnvironment;
}

Lib_Environment* s_pLast;

bool take_Last(Lib_Environment* pEnvironment, long long)
{
    s_pLast = pEnvironment;
    return true;
}

template <class Call>
bool throws(const Call& call)
{
    return Call_Failing(1, call).m_bThrown;
}

TEST(Environment_Allocation, A_Walk_Without_Memory_Changes_Nothing_And_Stays_Unlocked)
{
    // Addresses mostly rise or fall in the order in which environments are made; then the second becomes the
    // root, with one at each side. Otherwise another try finds other memory.
    std::vector<std::unique_ptr<Lib_Environment>> others;
    for (; others.size() < 50; others.push_back(std::make_unique<Lib_Environment>(nullptr)))
    {
        Lib_Environment_Manager manager(create, nullptr, nullptr, nullptr);
        s_pManager = &manager;
        EXPECT_TRUE(establish(1));
        EXPECT_TRUE(establish(3));
        manager.Enum_Environments(take_Last, 0);
        Lib_Environment* const pLast = s_pLast;
        if (!throws([&] { manager.Enum_Environments(take_Last, 0); }))
        {
            continue;
        }
        Lib_Result result;
        EXPECT_TRUE(throws([&] { manager.Is_Valid_Environment(pLast); }));
        EXPECT_TRUE(throws([&] { manager.Get_Environment_For_User_Data(nullptr); }));
        EXPECT_TRUE(throws([&] { manager.Get_Environment(result); }));
        EXPECT_TRUE(throws([&] { manager.Get_User_Data(result); }));
        EXPECT_TRUE(throws([&] { manager.Establish_Environment(result); }));
        EXPECT_TRUE(throws([&] { manager.Check_Environment_And_Release(pLast, result); }));
        EXPECT_TRUE(throws([&] { manager.Release_Environment(pLast, result); }));
        EXPECT_EQ(1u, pLast->Get_Usage_Counter()) << "none was taken away";
        std::thread([&] { EXPECT_TRUE(manager.Is_Valid_Environment(pLast)); }).join();
        return;
    }
    GTEST_SKIP() << "this allocator never puts the second environment between the others";
}

} // namespace
