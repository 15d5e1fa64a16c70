#include "module.h"

#include <cstddef>
#include <new>

namespace
{

TEST(Environment, Counts_Its_Users_Down_To_None)
{
    const Module module;
    Lib_Environment environment(module.operator->());
    EXPECT_EQ(0u, environment.Get_Usage_Counter());
    environment.Decrease_Usage_Counter();
    EXPECT_EQ(0u, environment.Get_Usage_Counter());
    environment.Increase_Usage_Counter();
    environment.Increase_Usage_Counter();
    environment.Decrease_Usage_Counter();
    EXPECT_EQ(1u, environment.Get_Usage_Counter());
    Lib_Result result(5, 2);
    EXPECT_TRUE(environment.Release(result));
    EXPECT_EQ(1u, environment.Get_Usage_Counter()) << "released or not, and destroyed with a user";
    EXPECT_EQ(Lib_Result(5, 2), result);
}

TEST(Environment, Keeps_What_Is_Set_And_Frees_Nothing_Of_It)
{
    Module module;
    int nFirst = 0;
    int nSecond = 0;
    {
        Lib_Environment environment(module.operator->());
        EXPECT_EQ(nullptr, environment.Get_User_Data());
        environment.Set_User_Data(&nFirst);
        environment.Set_User_Data(&nSecond);
        EXPECT_EQ(&nSecond, environment.Get_User_Data());
    }
    EXPECT_EQ(Module::Calls(), module.Take_Calls());
    module.Expect_Unlocked();
}

TEST(Environment, Takes_The_Callers_Identity_Each_Time_It_Is_Established)
{
    const Module module;
    Lib_Environment environment(module.operator->());
    EXPECT_EQ(nullptr, environment.Get_Environment_Params());
    Lib_Result result;
    std::thread([&] { EXPECT_TRUE(environment.Establish(result)); }).join();
    ASSERT_NE(nullptr, environment.Get_Environment_Params());
    EXPECT_NE(GetCurrentThreadId(), environment.Get_Environment_Params()->Get_Thread_ID());
    EXPECT_TRUE(environment.Establish(result));
    EXPECT_EQ(GetCurrentThreadId(), environment.Get_Environment_Params()->Get_Thread_ID());
    EXPECT_EQ(GetCurrentProcessId(), environment.Get_Environment_Params()->Get_Process_ID());
}

TEST(Environment, Has_The_Lock_Of_Its_Manager)
{
    const Module module;
    Lib_Environment environment(module.operator->());
    environment.Lock();
    environment.Lock();
    std::atomic<bool> bLocked = false;
    std::thread other(
        [&]
        {
            module->Lock();
            bLocked = true;
            module->Unlock();
        });
    environment.Unlock();
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    EXPECT_FALSE(bLocked);
    environment.Unlock();
    other.join();
    EXPECT_TRUE(bLocked);
}

TEST(Environment, Assignment_Shares_Everything)
{
    const Module module;
    Lib_Environment source(module.operator->());
    Lib_Result result;
    source.Establish(result);
    source.Set_User_Data(&result);
    source.Increase_Usage_Counter();

    alignas(Lib_Environment) std::byte storage[sizeof(Lib_Environment)]; // of the two, one is destroyed
    auto* const pTarget = new (storage) Lib_Environment(nullptr);
    pTarget->Increase_Usage_Counter(); // without a manager there is no lock, and that is all
    pTarget->Increase_Usage_Counter();
    *pTarget = source;
    EXPECT_EQ(source.Get_Environment_Params(), pTarget->Get_Environment_Params());
    EXPECT_EQ(&result, pTarget->Get_User_Data());
    EXPECT_EQ(1u, pTarget->Get_Usage_Counter());
}

} // namespace
