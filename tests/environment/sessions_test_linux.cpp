#include "module.h"
#include "session.h"

// What only threads of several sessions show.

namespace
{

using Calls = Module::Calls;

TEST(Sessions, A_Thread_Is_Of_The_Session_Of_Its_Token)
{
    Lib_Result result;
    unsigned int nSession = 0;
    {
        const Session client(3);
        EXPECT_TRUE(Acquire_Session_ID(nSession, result));
    }
    EXPECT_EQ(3u, nSession);
    EXPECT_EQ(Lib_Result(), result) << "no step failed";

    {
        const Denied_Session client;
        EXPECT_TRUE(Acquire_Session_ID(nSession, result)) << "denied access is no failure";
    }
    EXPECT_EQ(0xFFFFFFFF, nSession) << "and never the session of the process";
    EXPECT_EQ(Lib_Result(ERROR_ACCESS_DENIED, 1), result);
}

TEST(Sessions, Each_Has_Its_Environment_Whatever_The_Thread)
{
    Module module;
    Lib_Environment* const pOwn = module.Establish();
    const unsigned int nThird = pOwn->Get_Environment_Params()->Get_Session_ID() + 1;
    Lib_Environment* pThird = nullptr;
    {
        const Session client(nThird);
        Lib_Result result;
        EXPECT_TRUE(module->Establish_Environment(result));
        EXPECT_EQ(Lib_Result(0x80090011, 1), result) << "from looking for it";
        pThird = module.Get_Environment();
        EXPECT_NE(pOwn, pThird);
        result.Reset_Result();
        EXPECT_TRUE(module->Establish_Environment(result));
        EXPECT_EQ(Lib_Result(), result);
    }
    EXPECT_EQ(nThird, pThird->Get_Environment_Params()->Get_Session_ID());
    std::thread(
        [&]
        {
            const Session client(nThird);
            EXPECT_EQ(pThird, module.Get_Environment());
        })
        .join();
    EXPECT_EQ(pOwn, module.Get_Environment());
    EXPECT_TRUE(module.Release(pThird)) << "from whatever session";
    EXPECT_TRUE(module.Release(pThird));
    EXPECT_EQ((Calls{"create 1", "create 2", "prepare 2", "ready 2", "free 2"}), module.Take_Calls());
    EXPECT_TRUE(module->Is_Valid_Environment(pOwn));
}

TEST(Sessions, Callers_Of_Unknown_Sessions_Are_Known_By_Their_Thread)
{
    const Module module;
    Lib_Environment* const pOwn = module.Establish();
    Lib_Environment* pOther = nullptr;
    std::thread(
        [&]
        {
            const Denied_Session client;
            pOther = module.Establish();
            EXPECT_EQ(pOther, module.Get_Environment());
        })
        .join();
    EXPECT_NE(pOwn, pOther);
    EXPECT_EQ(pOwn, module.Get_Environment()) << "a known session finds no unknown one";
    const Denied_Session client;
    EXPECT_EQ(pOwn, module.Get_Environment()) << "the thread's own, of when its session was known";
    EXPECT_TRUE(module.Release(pOther));
}

TEST(Sessions, What_Is_Left_Is_Freed_In_The_Order_Of_Walking)
{
    static std::vector<Lib_Environment*> s_Walked;
    const auto walk = [](Lib_Environment* pEnvironment, long long)
    {
        s_Walked.push_back(pEnvironment);
        return true;
    };
    constexpr unsigned int nSessions = 40;
    Module module;
    std::vector<Lib_Environment*> environments(nSessions);
    for (unsigned int i = 0; i < 3 * nSessions; ++i) // the second time in memory of the first, in no order
    {
        const unsigned int nSession = i * 17 % nSessions;
        const Session client(nSession + 1);
        if (i >= nSessions && i < 2 * nSessions)
        {
            EXPECT_TRUE(module.Release(environments[nSession]));
        }
        else
        {
            environments[nSession] = module.Establish();
        }
    }
    s_Walked.clear();
    module->Enum_Environments(walk, 0);
    ASSERT_EQ(nSessions, s_Walked.size());
    std::vector<void*> expected;
    for (const Lib_Environment* const pEnvironment : s_Walked)
        expected.push_back(pEnvironment->Get_User_Data());

    std::vector<void*> freed;
    module.m_Free = [&](void* pData, Lib_Result&)
    {
        const Lib_Environment* const pEnvironment = module->Get_Environment_For_User_Data(pData);
        EXPECT_EQ(s_Walked[freed.size()], pEnvironment) << "it and those after it are there";
        freed.push_back(pData);
        return true;
    };
    module.Take_Calls();
    module.Destroy_Manager();
    EXPECT_EQ(expected, freed);
    EXPECT_EQ(nSessions, module.Take_Calls().size()) << "no other callback";
}

TEST(Sessions, A_Callback_May_Release_The_Environments_Of_Others_While_The_Manager_Goes)
{
    Module module;
    std::vector<Lib_Environment*> environments;
    for (unsigned int i = 1; i <= 16; ++i)
    {
        const Session client(i * 5 % 17);
        environments.push_back(module.Establish());
    }
    module.Take_Calls();
    bool bNested = false;
    module.m_Free = [&](void* pData, Lib_Result&)
    {
        Lib_Environment* const pEnvironment = module->Get_Environment_For_User_Data(pData);
        std::erase(environments, pEnvironment);
        if (!std::exchange(bNested, true) && !environments.empty())
        {
            EXPECT_TRUE(module.Release(environments[environments.size() / 2]));
        }
        bNested = false;
        return true;
    };
    module.Destroy_Manager();
    EXPECT_TRUE(environments.empty());
    Calls calls = module.Take_Calls();
    EXPECT_EQ(16, std::erase_if(calls, [](const std::string& call) { return call.starts_with("free"); }));
}

} // namespace
