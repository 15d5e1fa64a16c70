#include "layer_probe.h"
#include "lib_environment.h"
#include "lib_foundation.h"

#include <vector>

// What the library's environments do when the layer has no room.

namespace
{

class Environment_Failures : public test_support::Layer_Test
{
protected:
    ~Environment_Failures() override { find_Room(); }

    /// Has the layer find no room for another object or handle.
    void use_Up_Room()
    {
        system_calls.protect_memory = [](void*, std::size_t, int) { return -1; };
        while (const HANDLE hEvent = CreateEventW(nullptr, TRUE, FALSE, nullptr))
        {
            m_Handles.push_back(hEvent);
        }
        HANDLE hCopy = nullptr;
        while (DuplicateHandle(GetCurrentProcess(), m_Handles.front(), GetCurrentProcess(), &hCopy, 0, FALSE,
                               DUPLICATE_SAME_ACCESS))
        {
            m_Handles.push_back(hCopy);
        }
    }

    void find_Room()
    {
        system_calls = m_Saved;
        for (const HANDLE hEach : m_Handles)
        {
            CloseHandle(hEach);
        }
        m_Handles.clear();
    }

    std::vector<HANDLE> m_Handles{CreateEventW(nullptr, TRUE, FALSE, nullptr)};
};

unsigned int s_nCalls;

void* create(Lib_Environment* pEnvironment, Lib_Result&) { return ++s_nCalls, pEnvironment; }
bool free(void*, Lib_Result&) { return ++s_nCalls != 0; }
bool look(Lib_Environment*, long long) { return ++s_nCalls != 0; }

TEST_F(Environment_Failures, A_Manager_Without_A_Mutex_Refuses_To_Work)
{
    s_nCalls = 0;
    use_Up_Room();
    Lib_Environment_Manager manager(create, free, nullptr, nullptr);
    find_Room();
    Lib_Environment environment(&manager);
    const Lib_Result no_mutex(ERROR_INVALID_HANDLE, 1);
    const auto expect_Refused = [&](const auto& call)
    {
        Lib_Result result(4711, 2);
        EXPECT_FALSE(call(result));
        EXPECT_EQ(no_mutex, result);
    };
    expect_Refused([&](Lib_Result& result) { return manager.Establish_Environment(result); });
    expect_Refused([&](Lib_Result& result) { return manager.Get_User_Data(result); });
    expect_Refused([&](Lib_Result& result) { return manager.Release_Environment(&environment, result); });
    EXPECT_EQ(nullptr, manager.Get_Environment_For_User_Data(nullptr));
    manager.Enum_Environments(look, 0);
    manager.Lock();
    manager.Unlock();
    EXPECT_EQ(0u, s_nCalls);
}

TEST_F(Environment_Failures, An_Identity_That_Cannot_Be_Read_Is_No_Environment)
{
    s_nCalls = 0;
    Lib_Environment_Manager manager(create, free, nullptr, nullptr);
    Lib_Result result;
    ASSERT_TRUE(manager.Establish_Environment(result));
    use_Up_Room();
    const Lib_Result no_room(ERROR_NOT_ENOUGH_MEMORY, 1);
    unsigned int nSession = 3;
    EXPECT_FALSE(Acquire_Session_ID(nSession, result));
    EXPECT_EQ(0u, nSession);
    EXPECT_EQ(no_room, result);
    result.Reset_Result();
    EXPECT_FALSE(manager.Establish_Environment(result));
    EXPECT_EQ(no_room, result);
    result.Reset_Result();
    EXPECT_EQ(nullptr, manager.Get_Environment(result));
    EXPECT_EQ(no_room, result);
    EXPECT_EQ(nullptr, manager.Get_User_Data(result));
    EXPECT_EQ(Lib_Result(0x80090011, 1), result);
    EXPECT_EQ(1u, s_nCalls) << "one creation, before";
    find_Room();
    EXPECT_NE(nullptr, manager.Get_User_Data(result));
}

} // namespace
