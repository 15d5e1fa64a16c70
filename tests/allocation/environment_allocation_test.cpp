#include "failing_allocator.h"
#include "lib_environment.h"
#include "lib_foundation.h"

#include <memory>
#include <thread>

using namespace test_support;

namespace
{

int s_nCreated;
int s_nFreed;

void* create(Lib_Environment*, Lib_Result&) { return &(++s_nCreated, s_nCreated); }

bool free(void* pData, Lib_Result&)
{
    s_nFreed += pData != nullptr;
    return true;
}

bool look(Lib_Environment*, long long) { return true; }

void use(Lib_Environment_Manager& manager)
{
    Lib_Result result;
    EXPECT_TRUE(manager.Establish_Environment(result));
    EXPECT_TRUE(manager.Establish_Environment(result));
    EXPECT_NE(nullptr, manager.Get_User_Data(result));
    Lib_Environment* const pEnvironment = manager.Get_Environment(result);
    manager.Enum_Environments(look, 0);
    EXPECT_TRUE(manager.Release_Environment(pEnvironment, result));
    EXPECT_TRUE(manager.Release_Environment(pEnvironment, result));
    EXPECT_FALSE(manager.Is_Valid_Environment(pEnvironment));
    EXPECT_TRUE(manager.Establish_Environment(result)); // for the destructor
}

/// Whether another thread gets the lock: if not, this never returns.
void expect_Unlocked(const Lib_Environment_Manager& manager)
{
    std::thread([&] { manager.Lock(), manager.Unlock(); }).join();
}

TEST(Environment_Allocation, The_Whole_Road_Loses_Nothing_And_Stays_Unlocked)
{
    Lib_Result result;
    unsigned int nSession = 0;
    EXPECT_TRUE(Acquire_Session_ID(nSession, result)); // what the platform keeps for this thread is made
    const unsigned int nFailures = Fail_Each_Allocation_Without_Loss(
        [](unsigned int nNth)
        {
            s_nCreated = s_nFreed = 0;
            std::unique_ptr<Lib_Environment_Manager> pManager;
            const Failing_Allocation failure(nNth);
            try
            {
                pManager = std::make_unique<Lib_Environment_Manager>(create, free, nullptr, nullptr);
                use(*pManager);
            }
            catch (const std::bad_alloc&)
            {
                if (pManager != nullptr)
                {
                    EXPECT_EQ(s_nCreated, s_nFreed) << "user data of an environment that came to nothing";
                    expect_Unlocked(*pManager);
                }
            }
            const bool bFailed = failure.Has_Failed();
            pManager.reset();
            EXPECT_EQ(s_nCreated, s_nFreed);
            return bFailed;
        });
    EXPECT_EQ(3u + 2 * 4u, nFailures)
        << "manager, mutex and set; twice environment, parameters, node and its value";
}

} // namespace
