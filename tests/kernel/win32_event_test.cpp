#include "win32_threads.h"

#include <atomic>
#include <vector>

using namespace test_support;

TEST(Win32_Event, Stays_Set_Or_Resets_Itself)
{
    const Owned manual = Make_Event(true, true);
    EXPECT_EQ(WAIT_OBJECT_0, Try(manual));
    EXPECT_EQ(WAIT_OBJECT_0, Try(manual));
    EXPECT_TRUE(ResetEvent(manual));
    EXPECT_EQ(static_cast<DWORD>(WAIT_TIMEOUT), Try(manual));

    const Owned automatic = Make_Event(false, false);
    EXPECT_EQ(static_cast<DWORD>(WAIT_TIMEOUT), Try(automatic));
    EXPECT_TRUE(SetEvent(automatic));
    EXPECT_TRUE(SetEvent(automatic));
    EXPECT_EQ(WAIT_OBJECT_0, Try(automatic));
    EXPECT_EQ(static_cast<DWORD>(WAIT_TIMEOUT), Try(automatic));
}

TEST(Win32_Event, Pulse_Without_Waiters_Only_Resets)
{
    for (const bool manual : {false, true})
    {
        const Owned event = Make_Event(manual, true);
        EXPECT_TRUE(PulseEvent(event));
        EXPECT_EQ(static_cast<DWORD>(WAIT_TIMEOUT), Try(event));
    }
}

namespace
{

/// How many of three waiting threads come back before a set of the event `end` releases the rest.
int count_Released(HANDLE event, BOOL(WINAPI* operation)(HANDLE))
{
    const Owned end = Make_Event(true, false);
    std::atomic<int> nReleased{0};
    std::atomic<int> nArrived{0};
    std::vector<std::thread> waiters;
    for (int i = 0; i < 3; ++i)
    {
        waiters.emplace_back(
            [&]
            {
                const HANDLE both[] = {event, end};
                ++nArrived;
                nReleased += WaitForMultipleObjects(2, both, FALSE, 10000) == WAIT_OBJECT_0 ? 1 : 0;
            });
    }
    Let_Fall_Asleep(nArrived, 3);
    EXPECT_TRUE(operation(event));
    EXPECT_TRUE(SetEvent(end));
    for (std::thread& waiter : waiters)
    {
        waiter.join();
    }
    return nReleased;
}

} // namespace

TEST(Win32_Event, Releases_One_Waiter_Or_All)
{
    EXPECT_EQ(1, count_Released(Make_Event(false, false), SetEvent));
    EXPECT_EQ(1, count_Released(Make_Event(false, false), PulseEvent));
    EXPECT_EQ(3, count_Released(Make_Event(true, false), SetEvent));
    const Owned manual = Make_Event(true, false);
    EXPECT_EQ(3, count_Released(manual, PulseEvent));
    EXPECT_EQ(static_cast<DWORD>(WAIT_TIMEOUT), Try(manual));
}

TEST(Win32_Event, Two_Sets_Release_Two_Sleepers)
{
    const Owned event = Make_Event(false, false);
    std::atomic<int> nReleased{0};
    std::atomic<int> nArrived{0};
    const auto wait = [&]
    {
        ++nArrived;
        nReleased += WaitForSingleObject(event, 10000) == WAIT_OBJECT_0 ? 1 : 0;
    };
    std::thread first(wait);
    std::thread second(wait);
    Let_Fall_Asleep(nArrived, 2);
    EXPECT_TRUE(SetEvent(event));
    EXPECT_TRUE(SetEvent(event));
    EXPECT_TRUE(ResetEvent(event));
    first.join();
    second.join();
    EXPECT_EQ(2, nReleased);
}

TEST(Win32_Event, Publishes_What_Was_Written_Before_The_Set)
{
    const Owned ask = Make_Event(false, false);
    const Owned answer = Make_Event(false, false);
    int nShared = 0; // guarded by the two events alone
    std::thread other(
        [&]
        {
            for (int i = 0; i < 2000; ++i)
            {
                WaitForSingleObject(ask, INFINITE);
                ++nShared;
                SetEvent(answer);
            }
        });
    for (int i = 0; i < 2000; ++i)
    {
        nShared += 2;
        EXPECT_TRUE(SetEvent(ask));
        EXPECT_EQ(WAIT_OBJECT_0, WaitForSingleObject(answer, INFINITE));
    }
    other.join();
    EXPECT_EQ(6000, nShared);
}
