#include "probes.h"

#include <initializer_list>
#include <optional>
#include <vector>

// Events and mutexes in the platform's names.

INSTANTIATE_TEST_SUITE_P(Kinds, Objects, testing::Values("Unnamed", "Named", "Mixed"),
                         [](const auto& kind) { return std::string(kind.param); });

TEST_P(Objects, Events_Stay_Set_Or_Reset_Themselves)
{
    const Owned manual = make_Event(true, true);
    EXPECT_EQ(WAIT_OBJECT_0, Try(manual));
    EXPECT_EQ(WAIT_OBJECT_0, Try(manual));
    EXPECT_TRUE(ResetEvent(manual));
    EXPECT_EQ(TIMED_OUT, Try(manual));

    const Owned automatic = make_Event(false, false);
    EXPECT_EQ(TIMED_OUT, Try(automatic));
    EXPECT_TRUE(SetEvent(automatic));
    EXPECT_TRUE(SetEvent(automatic));
    EXPECT_EQ(WAIT_OBJECT_0, Try(automatic));
    EXPECT_EQ(TIMED_OUT, Try(automatic));

    for (const HANDLE event : std::initializer_list<HANDLE>{manual, automatic})
    {
        EXPECT_TRUE(SetEvent(event));
        EXPECT_TRUE(PulseEvent(event));
        EXPECT_EQ(TIMED_OUT, Try(event)) << "a pulse without waiters only resets";
    }
}

TEST_P(Objects, Events_Release_One_Sleeper_Or_All)
{
    for (auto* const pOperation : {SetEvent, PulseEvent})
    {
        for (const bool manual : {false, true})
        {
            const Owned event = make_Event(manual, false);
            const auto sleep = [&] { EXPECT_EQ(WAIT_OBJECT_0, WaitForSingleObject(event, 10000)); };
            {
                const Sleeper sleepers[] = {Sleeper(sleep), Sleeper(sleep), Sleeper(sleep)};
                EXPECT_TRUE(pOperation(event));
                if (!manual)
                {
                    EXPECT_TRUE(SetEvent(event) && SetEvent(event)) << "one signal for each sleeper";
                }
                if (manual || pOperation == SetEvent)
                {
                    EXPECT_TRUE(ResetEvent(event)) << "takes back none that was handed to a sleeper";
                }
            }
            EXPECT_EQ(TIMED_OUT, Try(event)) << "nothing is left";
        }
    }
}

TEST_P(Objects, A_Pulse_Leaves_Nothing_For_A_Wait_For_All_That_Misses_Something)
{
    const Owned event = make_Event(false, false);
    const Owned other = make_Event(false, false);
    DWORD dwAnswer = 0;
    Sleeper sleeper([&] { dwAnswer = Wait_All(200, event, other); });
    EXPECT_TRUE(PulseEvent(event));
    EXPECT_EQ(TIMED_OUT, Try(event));
    EXPECT_TRUE(SetEvent(other));
    sleeper.Join();
    EXPECT_EQ(TIMED_OUT, dwAnswer);
    EXPECT_EQ(WAIT_OBJECT_0, Try(other));
}

TEST_P(Objects, A_Mutex_Belongs_To_One_Thread_As_Often_As_It_Takes_It)
{
    const Owned mutex = make_Mutex(true);
    EXPECT_EQ(WAIT_OBJECT_0, Try(mutex));
    EXPECT_EQ(DWORD{ERROR_NOT_OWNER}, On_Other_Thread([&] { return Error_Of(ReleaseMutex(mutex)); }));
    for (int i = 0; i < 2; ++i)
    {
        EXPECT_EQ(TIMED_OUT, On_Other_Thread([&] { return Try(mutex); }));
        EXPECT_TRUE(ReleaseMutex(mutex));
    }
    EXPECT_EQ(DWORD{ERROR_NOT_OWNER}, Error_Of(ReleaseMutex(mutex)));
    EXPECT_TRUE(On_Other_Thread([&] { return Try(mutex) == WAIT_OBJECT_0 && ReleaseMutex(mutex); }));
}

TEST_P(Objects, A_Mutex_Of_An_Ended_Thread_Is_Abandoned_Once)
{
    const Owned mutex = make_Mutex(false);
    const Owned event = make_Event(false, false);
    const auto abandon = [&] { return Try(mutex) == WAIT_OBJECT_0 && Try(mutex) == WAIT_OBJECT_0; };
    EXPECT_TRUE(On_Other_Thread(abandon));
    EXPECT_EQ(WAIT_ABANDONED_0 + 1, Wait_Any(0, event, mutex));
    EXPECT_EQ(WAIT_OBJECT_0, Try(mutex));
    EXPECT_TRUE(ReleaseMutex(mutex));
    EXPECT_TRUE(ReleaseMutex(mutex));
    EXPECT_EQ(DWORD{ERROR_NOT_OWNER}, Error_Of(ReleaseMutex(mutex)));

    EXPECT_TRUE(On_Other_Thread(abandon));
    EXPECT_TRUE(SetEvent(event));
    const DWORD dwAll = Wait_All(0, event, mutex); // which one is not told everywhere
    EXPECT_TRUE(dwAll == WAIT_ABANDONED_0 || dwAll == WAIT_ABANDONED_0 + 1) << dwAll;
    EXPECT_TRUE(ReleaseMutex(mutex));
    EXPECT_EQ(WAIT_OBJECT_0, Try(mutex));
    EXPECT_TRUE(ReleaseMutex(mutex));
}

TEST_P(Objects, A_Mutex_Goes_To_A_Sleeper_When_Its_Owner_Ends)
{
    const Owned mutex = make_Mutex(false);
    const Owned never = make_Event(true, false);
    DWORD dwAnswer = 0;
    std::optional<Sleeper> sleeper;
    std::thread(
        [&]
        {
            EXPECT_EQ(WAIT_OBJECT_0, Try(mutex));
            sleeper.emplace([&] { dwAnswer = Wait_Any(10000, never, mutex); });
        })
        .join();
    sleeper->Join();
    EXPECT_EQ(WAIT_ABANDONED_0 + 1, dwAnswer);
}

TEST_P(Objects, A_Mutex_May_Be_Closed_While_It_Is_Owned)
{
    for (const bool by_owner : {true, false})
    {
        Owned mutex = make_Mutex(true);
        const Owned other = make_Mutex(true);
        by_owner ? mutex.Close() : std::thread([&] { mutex.Close(); }).join();
        EXPECT_TRUE(ReleaseMutex(other));
    }
}

TEST_P(Objects, Publish_What_Was_Written_Before_And_Exclude)
{
    constexpr int ROUNDS = 2000;
    const Owned ask = make_Event(false, false);
    const Owned answer = make_Event(false, false);
    const Owned mutex = make_Mutex(false);
    int nHanded = 0; // guarded by the two events alone
    int nLocked = 0; // guarded by the mutex alone
    const auto count_Locked = [&]
    {
        EXPECT_EQ(WAIT_OBJECT_0, WaitForSingleObject(mutex, INFINITE));
        ++nLocked;
        EXPECT_TRUE(ReleaseMutex(mutex));
    };
    std::vector<std::thread> others;
    others.emplace_back(
        [&]
        {
            for (int i = 0; i < ROUNDS; ++i)
            {
                EXPECT_EQ(WAIT_OBJECT_0, WaitForSingleObject(ask, INFINITE));
                ++nHanded;
                EXPECT_TRUE(SetEvent(answer));
                count_Locked();
            }
        });
    others.emplace_back(
        [&]
        {
            for (int i = 0; i < ROUNDS; ++i)
                count_Locked();
        });
    for (int i = 0; i < ROUNDS; ++i)
    {
        nHanded += 2;
        EXPECT_TRUE(SetEvent(ask));
        count_Locked();
        EXPECT_EQ(WAIT_OBJECT_0, WaitForSingleObject(answer, INFINITE));
    }
    for (std::thread& other : others)
        other.join();
    EXPECT_EQ(3 * ROUNDS, nHanded);
    EXPECT_EQ(3 * ROUNDS, nLocked);
}
