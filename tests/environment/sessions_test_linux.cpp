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
    for (unsigned int i = 0; i < 3 * nSessions; ++i) // made, released, and made in memory of no order
    {
        const unsigned int nSession = i * 17 % nSessions;
        const Session client(nSession + 1);
        if (i / nSessions == 1)
        {
            EXPECT_TRUE(module.Release(environments[nSession]));
        }
        else
        {
            environments[nSession] = module.Establish();
        }
    }
    module.Take_Calls();
    s_Walked.clear();
    module->Enum_Environments(walk, 0);
    ASSERT_EQ(nSessions, s_Walked.size());
    std::size_t nFreed = 0;
    module.m_Free = [&](void* pData, Lib_Result&)
    {
        EXPECT_EQ(s_Walked[nFreed++], module->Get_Environment_For_User_Data(pData)) << "which is still there";
        return true;
    };
    module.Destroy_Manager();
    EXPECT_EQ(nSessions, nFreed);
    EXPECT_EQ(nSessions, module.Take_Calls().size()) << "no other callback";
}

} // namespace
