#include "win32_threads.h"

#include <vector>

using namespace test_support;

TEST(Win32_Mutex, Belongs_To_One_Thread_As_Often_As_It_Takes_It)
{
    const Owned mutex = Make_Mutex(true);
    EXPECT_EQ(WAIT_OBJECT_0, Try(mutex));
    EXPECT_EQ(static_cast<DWORD>(WAIT_TIMEOUT), On_Other_Thread([&] { return Try(mutex); }));
    EXPECT_EQ(288u, On_Other_Thread([&] { return Error_Of(ReleaseMutex(mutex)); }));
    EXPECT_TRUE(ReleaseMutex(mutex));
    EXPECT_EQ(static_cast<DWORD>(WAIT_TIMEOUT), On_Other_Thread([&] { return Try(mutex); }));
    EXPECT_TRUE(ReleaseMutex(mutex));
    EXPECT_EQ(288u, Error_Of(ReleaseMutex(mutex)));
    EXPECT_TRUE(On_Other_Thread([&] { return Try(mutex) == WAIT_OBJECT_0 && ReleaseMutex(mutex); }));
}

TEST(Win32_Mutex, Tells_The_Next_Owner_That_It_Was_Abandoned)
{
    const Owned mutex = Make_Mutex(false);
    const auto die_Owning = [&] { return Try(mutex) == WAIT_OBJECT_0 && Try(mutex) == WAIT_OBJECT_0; };
    EXPECT_TRUE(On_Other_Thread(die_Owning));
    EXPECT_EQ(static_cast<DWORD>(WAIT_ABANDONED), Try(mutex));
    EXPECT_EQ(WAIT_OBJECT_0, Try(mutex));
    EXPECT_TRUE(ReleaseMutex(mutex));
    EXPECT_TRUE(ReleaseMutex(mutex));
    EXPECT_EQ(288u, Error_Of(ReleaseMutex(mutex)));
    EXPECT_EQ(WAIT_OBJECT_0, Try(mutex));
    EXPECT_TRUE(ReleaseMutex(mutex));
}

TEST(Win32_Mutex, Goes_To_A_Sleeper_When_Its_Owner_Ends)
{
    const Owned mutex = Make_Mutex(false);
    const Owned never = Make_Event(true, false);
    const Owned taken = Make_Event(true, false);
    std::thread owner(
        [&]
        {
            EXPECT_EQ(WAIT_OBJECT_0, Try(mutex));
            SetEvent(taken);
            Let_Others_Sleep();
        });
    EXPECT_EQ(WAIT_OBJECT_0, WaitForSingleObject(taken, 10000));
    const HANDLE any[] = {never, mutex};
    EXPECT_EQ(WAIT_ABANDONED_0 + 1, WaitForMultipleObjects(2, any, FALSE, 10000));
    owner.join();
    EXPECT_TRUE(ReleaseMutex(mutex));
}

TEST(Win32_Mutex, Excludes)
{
    const Owned mutex = Make_Mutex(false);
    int nShared = 0; // guarded by the mutex alone
    std::vector<std::thread> threads;
    for (int i = 0; i < 3; ++i)
    {
        threads.emplace_back(
            [&]
            {
                for (int n = 0; n < 3000; ++n)
                {
                    WaitForSingleObject(mutex, INFINITE);
                    ++nShared;
                    ReleaseMutex(mutex);
                }
            });
    }
    for (std::thread& thread : threads)
    {
        thread.join();
    }
    EXPECT_EQ(9000, nShared);
}

TEST(Win32_Mutex, Closed_While_Owned_Does_No_Harm)
{
    for (const bool by_owner : {true, false})
    {
        Owned mutex = Make_Mutex(true);
        Owned other = Make_Mutex(true);
        by_owner ? mutex.Close() : std::thread([&] { mutex.Close(); }).join();
        EXPECT_TRUE(ReleaseMutex(other));
    }
}
