#include "lib_environment.h"
#include "lib_foundation.h"
#include "session.h"

#include <map>
#include <utility>
#include <vector>

namespace
{

/// What the callbacks keep of a session. The manager's lock guards it, but for the users.
struct State
{
    unsigned int m_nSession = 0;
    bool m_bLives = false;
    std::atomic<int> m_nUsers = 0;
};

struct Counts
{
    std::map<unsigned int, State> m_States; // by session
    unsigned int m_nCreated = 0;
    unsigned int m_nFreed = 0;
    unsigned int m_nRefused = 0;
    unsigned int m_nAsked = 0;
    unsigned int m_nPrepared = 0;
};
Counts s_Counts; // guarded by the manager's lock

void* create(Lib_Environment* pEnvironment, Lib_Result&)
{
    const unsigned int nSession = pEnvironment->Get_Environment_Params()->Get_Session_ID();
    State& state = s_Counts.m_States[nSession];
    EXPECT_FALSE(std::exchange(state.m_bLives, true)) << "the session has an environment already";
    state.m_nSession = nSession;
    ++s_Counts.m_nCreated;
    return &state;
}

bool free(void* pData, Lib_Result&)
{
    State& state = *static_cast<State*>(pData);
    EXPECT_TRUE(std::exchange(state.m_bLives, false));
    EXPECT_EQ(0, state.m_nUsers);
    ++s_Counts.m_nFreed;
    return true;
}

bool prepare(void*)
{
    ++s_Counts.m_nPrepared;
    return false; // which does not count
}

/// Every third time it is not ready.
bool ready(void*)
{
    EXPECT_EQ(s_Counts.m_nAsked + 1, s_Counts.m_nPrepared) << "nobody comes between the two";
    const bool bRefuses = ++s_Counts.m_nAsked % 3 == 0;
    s_Counts.m_nRefused += bRefuses;
    return !bRefuses;
}

/// One thread's work of a session.
void work(Lib_Environment_Manager& manager, unsigned int nSession)
{
    const Session client(nSession);
    Lib_Result result;
    ASSERT_TRUE(manager.Establish_Environment(result));
    Lib_Environment* const pEnvironment = manager.Get_Environment(result);
    auto* const pState = static_cast<State*>(manager.Get_User_Data(result));
    ASSERT_NE(nullptr, pState);
    ASSERT_EQ(pState, pEnvironment->Get_User_Data());
    ASSERT_EQ(pState->m_nSession, pEnvironment->Get_Environment_Params()->Get_Session_ID());
    ++pState->m_nUsers;
    ASSERT_LE(1u, pEnvironment->Get_Usage_Counter());
    ASSERT_LE(1, pState->m_nUsers--);
    ASSERT_TRUE(manager.Release_Environment(pEnvironment, result));
}

TEST(Environment_Threads, Share_The_Environments_Of_Their_Sessions)
{
    constexpr unsigned int nRounds = test_support::Windows_Target ? 60 : 5000;
    s_Counts = Counts();
    {
        Lib_Environment_Manager manager(create, free, prepare, ready);
        {
            std::vector<std::jthread> threads;
            for (unsigned int nThread = 0; nThread < 8; ++nThread)
                threads.emplace_back(
                    [&, nThread]
                    {
                        for (unsigned int i = 0; i < nRounds; ++i)
                            work(manager, (nThread + i) % 3 + 1);
                    });
        }
        const auto look = [](Lib_Environment* pEnvironment, long long)
        {
            EXPECT_EQ(0u, pEnvironment->Get_Usage_Counter()) << "it was not ready to go";
            return true;
        };
        manager.Enum_Environments(look, 0);
        EXPECT_EQ(s_Counts.m_nAsked, s_Counts.m_nFreed + s_Counts.m_nRefused);
    }
    EXPECT_LT(0u, s_Counts.m_nCreated);
    EXPECT_EQ(s_Counts.m_nCreated, s_Counts.m_nFreed);
}

} // namespace
