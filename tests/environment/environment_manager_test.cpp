#include "handles.h"
#include "module.h"

#include <cstddef>
#include <cstring>
#include <new>
#include <stdexcept>

namespace
{

using Calls = Module::Calls;

const Lib_Result NOT_FOUND(0x80090011, 1);
const Lib_Result UNTOUCHED(4711, 2);

TEST(Environment, Is_A_Record_That_Frees_Nothing)
{
    Module module;
    Lib_Result result = UNTOUCHED;
    {
        Lib_Environment environment(module.operator->());
        EXPECT_EQ(nullptr, environment.Get_User_Data());
        EXPECT_EQ(nullptr, environment.Get_Environment_Params());
        environment.Decrease_Usage_Counter();
        EXPECT_EQ(0u, environment.Get_Usage_Counter());
        environment.Increase_Usage_Counter();
        environment.Set_User_Data(&module);
        environment.Set_User_Data(&result);
        EXPECT_EQ(&result, environment.Get_User_Data());
        EXPECT_TRUE(environment.Release(result));
        EXPECT_EQ(1u, environment.Get_Usage_Counter()) << "released or not, and destroyed with a user";
        EXPECT_EQ(UNTOUCHED, result);

        std::thread([&] { EXPECT_TRUE(environment.Establish(result)); }).join();
        ASSERT_NE(nullptr, environment.Get_Environment_Params());
        EXPECT_NE(GetCurrentThreadId(), environment.Get_Environment_Params()->Get_Thread_ID());
        EXPECT_TRUE(environment.Establish(result)) << "takes the caller's identity each time";
        EXPECT_EQ(GetCurrentThreadId(), environment.Get_Environment_Params()->Get_Thread_ID());

        alignas(Lib_Environment) std::byte storage[sizeof(Lib_Environment)]; // of the two, one is destroyed
        auto* const pTarget = new (storage) Lib_Environment(nullptr);
        pTarget->Increase_Usage_Counter(); // without a manager there is no lock, and that is all
        pTarget->Increase_Usage_Counter();
        *pTarget = environment;
        EXPECT_EQ(environment.Get_Environment_Params(), pTarget->Get_Environment_Params());
        EXPECT_EQ(&result, pTarget->Get_User_Data());
        EXPECT_EQ(1u, pTarget->Get_Usage_Counter());
    }
    EXPECT_EQ(Calls(), module.Take_Calls());
    module.Expect_Unlocked();
}

TEST(Environment, Has_The_Lock_Of_Its_Manager)
{
    const Module module;
    Lib_Environment environment(module.operator->());
    environment.Lock();
    environment.Lock();
    std::atomic<bool> bLocked = false;
    const test_support::Sleeper other(
        [&]
        {
            module->Lock();
            bLocked = true;
            module->Unlock();
        });
    environment.Unlock();
    EXPECT_FALSE(bLocked);
    environment.Unlock();
}

TEST(Environment_Manager, The_First_User_Makes_An_Environment_And_The_Last_Removes_It)
{
    Module module;
    Lib_Result result;
    EXPECT_EQ(nullptr, module->Get_Environment(result));
    EXPECT_EQ(NOT_FOUND, result);
    EXPECT_TRUE(module->Establish_Environment(result));
    EXPECT_FALSE(result.Is_Success()) << "what looking for it left, stays";
    EXPECT_EQ(Calls{"create 1"}, module.Take_Calls());

    Lib_Environment* const pEnvironment = module->Get_Environment(result);
    ASSERT_NE(nullptr, pEnvironment);
    void* const pData = module->Get_User_Data(result);
    EXPECT_EQ(pEnvironment->Get_User_Data(), pData);
    EXPECT_EQ(pEnvironment, module->Get_Environment_For_User_Data(pData));
    EXPECT_EQ(nullptr, module->Get_Environment_For_User_Data(&result));

    std::thread([&] { EXPECT_EQ(pEnvironment, module.Establish()); }).join();
    EXPECT_EQ(2u, pEnvironment->Get_Usage_Counter());
    EXPECT_TRUE(module.Release(pEnvironment));
    EXPECT_EQ(1u, pEnvironment->Get_Usage_Counter());
    EXPECT_EQ(Calls(), module.Take_Calls()) << "one user is left";

    EXPECT_TRUE(module.Release(pEnvironment));
    EXPECT_EQ((Calls{"prepare 1", "ready 1", "free 1"}), module.Take_Calls());
    EXPECT_FALSE(module->Is_Valid_Environment(pEnvironment));
    result = UNTOUCHED;
    EXPECT_EQ(nullptr, module->Get_User_Data(result));
    EXPECT_EQ(NOT_FOUND, result);
}

TEST(Environment_Manager, An_Environment_That_Is_Not_Ready_Stays_Without_Users)
{
    Module module;
    Lib_Environment* const pEnvironment = module.Establish();
    bool bReady = false;
    module.m_Prepare = [](void*) { return false; };
    module.m_Ready = [&](void*) { return bReady; };
    module.Take_Calls();

    Lib_Result result = UNTOUCHED;
    EXPECT_TRUE(module->Release_Environment(pEnvironment, result));
    EXPECT_EQ(Lib_Result(ERROR_BUSY, 1), result);
    EXPECT_TRUE(module->Is_Valid_Environment(pEnvironment));
    EXPECT_EQ(0u, pEnvironment->Get_Usage_Counter());
    EXPECT_TRUE(module->Check_Environment_And_Release(pEnvironment, result));
    EXPECT_EQ((Calls{"prepare 1", "ready 1", "prepare 1", "ready 1"}), module.Take_Calls());

    EXPECT_EQ(pEnvironment, module.Establish()) << "and kept its data";
    EXPECT_EQ(1u, pEnvironment->Get_Usage_Counter());
    result = UNTOUCHED;
    EXPECT_TRUE(module->Check_Environment_And_Release(pEnvironment, result));
    EXPECT_EQ(UNTOUCHED, result) << "it has a user";
    EXPECT_TRUE(module.Release(pEnvironment));
    module.Take_Calls();

    bReady = true;
    EXPECT_TRUE(module.Release(pEnvironment)) << "at 0 already";
    EXPECT_EQ((Calls{"prepare 1", "ready 1", "free 1"}), module.Take_Calls());
    EXPECT_FALSE(module->Is_Valid_Environment(pEnvironment));
}

TEST(Environment_Manager, A_Failed_Creation_Leaves_Nothing_And_A_Failed_Free_Keeps_Nothing)
{
    Module module;
    const auto create = module.m_Create;
    module.m_Create = [&](Lib_Environment* pEnvironment, Lib_Result& result) -> void*
    {
        EXPECT_FALSE(module->Is_Valid_Environment(pEnvironment));
        EXPECT_EQ(nullptr, module.Get_Environment());
        EXPECT_EQ(GetCurrentThreadId(), pEnvironment->Get_Environment_Params()->Get_Thread_ID());
        EXPECT_EQ(0u, pEnvironment->Get_Usage_Counter());
        EXPECT_FALSE(module.Release(pEnvironment));
        result.Set_Result(31, 2);
        return nullptr;
    };
    Lib_Result result;
    EXPECT_FALSE(module->Establish_Environment(result));
    EXPECT_EQ(Lib_Result(31, 2), result);
    EXPECT_EQ(Calls{"create null"}, module.Take_Calls());
    EXPECT_EQ(nullptr, module.Get_Environment());

    module.m_Create = create;
    Lib_Environment* const pEnvironment = module.Establish();
    module.m_Free = [](void*, Lib_Result& reason) { return reason.Set_Result(32, 2), false; };
    result.Reset_Result();
    EXPECT_FALSE(module->Release_Environment(pEnvironment, result));
    EXPECT_EQ(Lib_Result(32, 2), result);
    EXPECT_FALSE(module->Is_Valid_Environment(pEnvironment));
}

TEST(Environment_Manager, Refuses_What_Is_None_Of_Its_Environments)
{
    const Module other;
    Lib_Environment foreign(other.operator->());
    foreign.Increase_Usage_Counter();
    Module module;
    Lib_Environment* const pEnvironment = module.Establish();
    for (Lib_Environment* const pWrong : {&foreign, static_cast<Lib_Environment*>(nullptr)})
    {
        Lib_Result result = UNTOUCHED;
        EXPECT_FALSE(module->Is_Valid_Environment(pWrong));
        EXPECT_FALSE(module->Check_Environment_And_Release(pWrong, result));
        EXPECT_EQ(pWrong ? Lib_Result(0x80090027, 2) : UNTOUCHED, result) << "the source stays";
        EXPECT_FALSE(module->Release_Environment(pWrong, result));
        EXPECT_EQ(Lib_Result(ERROR_INVALID_PARAMETER, 1), result);
    }
    EXPECT_EQ(1u, foreign.Get_Usage_Counter());
    EXPECT_EQ(1u, pEnvironment->Get_Usage_Counter());
    EXPECT_EQ(Calls{"create 1"}, module.Take_Calls());
}

TEST(Environment_Manager, A_Step_Without_Its_Callback_Is_Skipped)
{
    {
        const Module module(nullptr, nullptr, nullptr, nullptr);
        Lib_Environment* const pEnvironment = module.Establish();
        Lib_Result result;
        EXPECT_EQ(nullptr, module->Get_User_Data(result));
        EXPECT_EQ(NOT_FOUND, result);
        EXPECT_EQ(pEnvironment, module->Get_Environment_For_User_Data(nullptr));
        EXPECT_TRUE(module.Release(pEnvironment));
        EXPECT_FALSE(module->Is_Valid_Environment(pEnvironment));
        module.Establish(); // which the manager's destructor removes
    }
    Module no_create(nullptr, Module::st_Free, nullptr, Module::st_Ready);
    EXPECT_TRUE(no_create.Release(no_create.Establish()));
    EXPECT_EQ((Calls{"ready null", "free null"}), no_create.Take_Calls()) << "free runs without data too";

    Module no_free(Module::st_Create, nullptr, Module::st_Prepare, nullptr);
    EXPECT_TRUE(no_free.Release(no_free.Establish()));
    EXPECT_EQ((Calls{"create 1", "prepare 1"}), no_free.Take_Calls());
}

TEST(Environment_Manager, Enumerates_Until_The_Function_Has_Enough)
{
    static unsigned int s_nCalls;
    const auto count = [](Lib_Environment*, long long nContext)
    {
        ++s_nCalls;
        return nContext != -5'000'000'000;
    };
    s_nCalls = 0;
    const Module module;
    module->Enum_Environments(count, 0);
    EXPECT_EQ(0u, s_nCalls);
    module.Establish();
    module->Enum_Environments(count, -5'000'000'000);
    module->Enum_Environments(nullptr, 0);
    EXPECT_EQ(1u, s_nCalls);
}

TEST(Environment_Manager, Callbacks_May_Call_The_Manager)
{
    constexpr std::size_t nCount = 16;
    Module module;
    std::vector<Lib_Environment*> environments;
    const auto create = module.m_Create;
    module.m_Create = [&](Lib_Environment* pEnvironment, Lib_Result& result)
    {
        environments.push_back(pEnvironment);
        if (environments.size() < nCount)
        {
            module.Establish();
        }
        return create(pEnvironment, result);
    };
    module.Establish();
    ASSERT_EQ(nCount, environments.size()) << "each is another environment of this session";

    bool bNested = false;
    unsigned int nFreed = 0;
    module.m_Free = [&](void* pData, Lib_Result&)
    {
        ++nFreed;
        Lib_Environment* const pEnvironment = module->Get_Environment_For_User_Data(pData);
        EXPECT_TRUE(module->Is_Valid_Environment(pEnvironment)) << "still there";
        std::erase(environments, pEnvironment);
        if (!std::exchange(bNested, true) && !environments.empty())
        {
            EXPECT_TRUE(module.Release(environments[environments.size() / 2])) << "of those that are left";
        }
        bNested = false;
        return true;
    };
    module.Destroy_Manager();
    EXPECT_EQ(nCount, nFreed);
    EXPECT_TRUE(environments.empty());
}

TEST(Environment_Manager, What_A_Callback_Throws_Leaves_It_Unlocked)
{
    Module module;
    const auto fail = [](auto&&...) -> bool { throw std::runtime_error("a callback's own"); };
    const auto create = std::exchange(module.m_Create,
                                      [](Lib_Environment*, Lib_Result&) -> void*
                                      { throw std::runtime_error("a callback's own"); });
    Lib_Result result;
    EXPECT_THROW(module->Establish_Environment(result), std::runtime_error);
    EXPECT_EQ(nullptr, module.Get_Environment());
    module.Expect_Unlocked();

    module.m_Create = create;
    Lib_Environment* const pEnvironment = module.Establish();
    module.m_Free = fail;
    const auto ready = std::exchange(module.m_Ready, fail);
    EXPECT_THROW(module.Release(pEnvironment), std::runtime_error);
    EXPECT_TRUE(module->Is_Valid_Environment(pEnvironment));
    EXPECT_EQ(0u, pEnvironment->Get_Usage_Counter());
    module.Expect_Unlocked();

    module.m_Ready = ready;
    EXPECT_THROW(module.Release(pEnvironment), std::runtime_error);
    EXPECT_FALSE(module->Is_Valid_Environment(pEnvironment)) << "its data is not freed twice";
    module.Expect_Unlocked();

    module.Establish();
    const auto look = [](Lib_Environment*, long long) -> bool { throw std::bad_alloc(); };
    EXPECT_THROW(module->Enum_Environments(look, 0), std::bad_alloc);
    module.Expect_Unlocked();
    module.Take_Calls();
    module.Destroy_Manager();
    EXPECT_EQ(Calls{"free 2"}, module.Take_Calls());
}

TEST(Environment_Manager, Assignment_Shares_Environments_And_A_Lock_That_Is_Taken_Over)
{
    const Module module;
    Lib_Environment* const pEnvironment = module.Establish();
    Lib_Environment_Manager target(nullptr, nullptr, nullptr, nullptr);
    std::byte own[sizeof target]; // what the assignment forgets, for the end
    std::memcpy(own, static_cast<void*>(&target), sizeof target);
    target = *module.operator->();
    EXPECT_TRUE(target.Is_Valid_Environment(pEnvironment));
    std::thread([&] { target.Lock(); }).join(); // abandons it
    target.Lock();
    Lib_Result result;
    EXPECT_TRUE(target.Establish_Environment(result));
    EXPECT_EQ(2u, pEnvironment->Get_Usage_Counter());
    module->Unlock();
    module.Expect_Unlocked();
    std::memcpy(static_cast<void*>(&target), own, sizeof target);
}

TEST(Environment_Manager, Frees_What_Is_Left_When_It_Goes)
{
    Module module;
    module.Establish();
    module.Establish();
    module.m_Free = [](void*, Lib_Result&) { return false; };
    module.Take_Calls();
    module.Destroy_Manager();
    EXPECT_EQ(Calls{"free 1"}, module.Take_Calls()) << "whatever the number of users";
}

} // namespace
