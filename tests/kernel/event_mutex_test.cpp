#include "probes.h"

namespace
{

TEST(Event, Manual_Ones_Stay_And_Others_Release_One_Waiter)
{
    Lib_Event manual;
    ASSERT_TRUE(manual.Create(nullptr, true, true));
    EXPECT_TRUE(manual.Wait_Until_Object_0(0));
    EXPECT_TRUE(manual.Wait_Until_Object_0(0));
    EXPECT_TRUE(manual.Reset());
    EXPECT_FALSE(manual.Wait_Until_Object_0(0));
    EXPECT_TRUE(manual.Set());
    EXPECT_TRUE(manual.Pulse());
    EXPECT_FALSE(manual.Wait_Until_Object_0(0)) << "a pulse leaves the event reset";

    Lib_Event automatic;
    ASSERT_TRUE(automatic.Create(nullptr, false, true));
    EXPECT_TRUE(automatic.Wait_Until_Object_0(0));
    EXPECT_FALSE(automatic.Wait_Until_Object_0(0));
    EXPECT_FALSE(automatic.Release());
}

TEST(Event, An_Empty_One_Signals_Nothing_And_Asks_Nothing)
{
    const Lib_Event empty;
    SetLastError(12345);
    EXPECT_FALSE(empty.Set());
    EXPECT_FALSE(empty.Reset());
    EXPECT_FALSE(empty.Pulse());
    EXPECT_FALSE(Lib_Mutex().Release());
    EXPECT_EQ(12345u, GetLastError());
}

TEST(Event, Opens_With_The_Access_And_Flag_That_Were_Asked_For)
{
    Lib_Event event;
    ASSERT_TRUE(event.Create(nullptr, true, false, Fresh_Name()));
    Lib_Event opened;
    unsigned long dwFlags = 0;
    ASSERT_TRUE(opened.Open(event.Get_Name(), SYNCHRONIZE, true));
    EXPECT_TRUE(opened.Get_Information(dwFlags));
    EXPECT_EQ(DWORD{HANDLE_FLAG_INHERIT}, dwFlags);
    EXPECT_FALSE(opened.Set());
    EXPECT_EQ(DWORD{ERROR_ACCESS_DENIED}, GetLastError());

    ASSERT_TRUE(opened.Open(nullptr, EVENT_MODIFY_STATE, false));
    EXPECT_TRUE(opened.Get_Information(dwFlags));
    EXPECT_EQ(0ul, dwFlags);
    EXPECT_TRUE(opened.Set());
    EXPECT_EQ(0xFFFFFFFFul, opened.Wait(0));
    EXPECT_TRUE(event.Wait_Until_Object_0(0));
}

TEST(Mutex, Belongs_To_The_Thread_Through_Every_Copy)
{
    Lib_Mutex mutex;
    ASSERT_TRUE(mutex.Create(nullptr, true));
    Lib_Mutex copy(mutex);
    EXPECT_TRUE(copy.Wait_Until_Object_0(0)) << "its owner takes it again";
    EXPECT_FALSE(On_Other_Thread([&] { return mutex.Wait_Until_Object_0(0); }));
    EXPECT_FALSE(On_Other_Thread([&] { return copy.Release(); }));
    EXPECT_TRUE(mutex.Release());
    EXPECT_TRUE(copy.Release());
    EXPECT_FALSE(copy.Release());
    EXPECT_EQ(DWORD{ERROR_NOT_OWNER}, GetLastError());
    EXPECT_TRUE(On_Other_Thread([&] { return mutex.Wait_Until_Object_0(0) && copy.Release(); }));
}

TEST(Mutex, An_Abandoned_One_Is_The_Waiters_Though_The_Short_Answer_Is_False)
{
    Lib_Mutex mutex;
    ASSERT_TRUE(mutex.Create(nullptr, false));
    EXPECT_TRUE(On_Other_Thread([&] { return mutex.Wait_Until_Object_0(0); }));
    EXPECT_EQ(0x80ul, mutex.Wait(0));
    EXPECT_TRUE(mutex.Release());
    EXPECT_TRUE(On_Other_Thread([&] { return mutex.Wait_Until_Object_0(0); }));
    EXPECT_FALSE(mutex.Wait_Until_Object_0(0));
    EXPECT_TRUE(mutex.Release());
}

// One object of each kind, used by two threads while nobody changes it.
TEST(Threads, Wait_And_Signal_On_One_Object)
{
    constexpr unsigned int nRounds = 2000;
    Lib_Event ping;
    Lib_Event pong;
    Lib_Mutex mutex;
    ASSERT_TRUE(ping.Create(nullptr, false, false));
    ASSERT_TRUE(pong.Create(nullptr, false, false, Fresh_Name()));
    ASSERT_TRUE(mutex.Create(nullptr, false));
    unsigned int nHand_Overs = 0; // guarded by the events
    unsigned int nLocked = 0;     // guarded by the mutex
    const auto count_Locked = [&]
    {
        EXPECT_TRUE(mutex.Wait_Until_Object_0(INFINITE));
        ++nLocked;
        EXPECT_TRUE(mutex.Release());
    };
    std::thread other(
        [&]
        {
            for (unsigned int i = 0; i < nRounds; ++i)
            {
                EXPECT_TRUE(ping.Wait_Until_Object_0(INFINITE));
                ++nHand_Overs;
                EXPECT_TRUE(pong.Set());
                count_Locked();
            }
        });
    for (unsigned int i = 0; i < nRounds; ++i)
    {
        EXPECT_TRUE(ping.Set());
        count_Locked();
        EXPECT_TRUE(pong.Wait_Until_Object_0(INFINITE));
        EXPECT_EQ(i + 1, nHand_Overs);
    }
    other.join();
    EXPECT_EQ(2 * nRounds, nLocked);
}

} // namespace
