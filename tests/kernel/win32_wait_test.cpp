#include "win32_threads.h"

#include <array>
#include <chrono>
#include <vector>

using namespace test_support;

namespace
{

constexpr auto TIMED_OUT = static_cast<DWORD>(WAIT_TIMEOUT);

template <class... Handles>
DWORD wait_Any(DWORD milliseconds, const Handles&... handles)
{
    const HANDLE all[] = {handles...};
    return WaitForMultipleObjects(sizeof...(handles), all, FALSE, milliseconds);
}

template <class... Handles>
DWORD wait_All(DWORD milliseconds, const Handles&... handles)
{
    const HANDLE all[] = {handles...};
    return WaitForMultipleObjects(sizeof...(handles), all, TRUE, milliseconds);
}

} // namespace

TEST(Win32_Wait, For_Any_Takes_The_Lowest_And_No_More)
{
    const Owned first = Make_Event(false, false);
    const Owned second = Make_Event(false, true);
    const Owned third = Make_Event(false, true);
    EXPECT_EQ(WAIT_OBJECT_0 + 1, wait_Any(0, first, second, third));
    EXPECT_EQ(TIMED_OUT, Try(second));
    EXPECT_EQ(WAIT_OBJECT_0 + 2, wait_Any(0, first, second, third));
    EXPECT_EQ(TIMED_OUT, wait_Any(0, first, second, third));
    EXPECT_EQ(TIMED_OUT, wait_Any(10, first, second, third));
    EXPECT_TRUE(SetEvent(first));
    EXPECT_EQ(WAIT_OBJECT_0, wait_Any(0, first, first));
}

TEST(Win32_Wait, For_All_Takes_All_Or_Nothing)
{
    const Owned event = Make_Event(false, true);
    const Owned mutex = Make_Mutex(false);
    const Owned missing = Make_Event(false, false);
    EXPECT_EQ(TIMED_OUT, wait_All(0, event, mutex, missing));
    EXPECT_EQ(TIMED_OUT, wait_All(10, event, mutex, missing));
    EXPECT_TRUE(On_Other_Thread([&] { return Try(mutex) == WAIT_OBJECT_0 && ReleaseMutex(mutex); }));
    EXPECT_EQ(WAIT_OBJECT_0, Try(event));

    EXPECT_TRUE(SetEvent(event));
    EXPECT_TRUE(SetEvent(missing));
    EXPECT_EQ(WAIT_OBJECT_0, wait_All(0, event, mutex, missing));
    EXPECT_EQ(TIMED_OUT, Try(event));
    EXPECT_EQ(TIMED_OUT, Try(missing));
    EXPECT_TRUE(ReleaseMutex(mutex));
    EXPECT_FALSE(ReleaseMutex(mutex));
}

TEST(Win32_Wait, For_All_Is_Served_While_It_Sleeps)
{
    const Owned first = Make_Event(false, false);
    const Owned second = Make_Event(true, false);
    const Owned mutex = Make_Mutex(true);
    DWORD dwAnswer = 0;
    std::thread waiter(
        [&]
        {
            dwAnswer = wait_All(10000, first, mutex, second);
            EXPECT_TRUE(ReleaseMutex(mutex));
        });
    Let_Others_Sleep();
    EXPECT_TRUE(SetEvent(first));
    EXPECT_EQ(WAIT_OBJECT_0, Try(first)); // it was not taken yet, and goes to who comes now
    EXPECT_TRUE(SetEvent(second));
    EXPECT_TRUE(ReleaseMutex(mutex));
    Let_Others_Sleep();
    EXPECT_EQ(WAIT_OBJECT_0, Try(mutex));
    EXPECT_TRUE(ReleaseMutex(mutex));
    EXPECT_TRUE(SetEvent(first));
    waiter.join();
    EXPECT_EQ(WAIT_OBJECT_0, dwAnswer);
    EXPECT_EQ(TIMED_OUT, Try(first));
    EXPECT_EQ(WAIT_OBJECT_0, Try(second));
}

TEST(Win32_Wait, For_All_Tells_Of_An_Abandoned_Mutex)
{
    const Owned event = Make_Event(true, true);
    const Owned mutex = Make_Mutex(false);
    EXPECT_EQ(WAIT_OBJECT_0, On_Other_Thread([&] { return Try(mutex); }));
    const DWORD dwAnswer = wait_All(1000, event, mutex);
    EXPECT_TRUE(dwAnswer >= WAIT_ABANDONED_0 && dwAnswer <= WAIT_ABANDONED_0 + 1) << dwAnswer;
    EXPECT_TRUE(ReleaseMutex(mutex));
}

TEST(Win32_Wait, Handles_Sixty_Four_Objects_And_No_More)
{
    std::array<Owned, 65> events;
    std::array<HANDLE, 65> handles;
    for (std::size_t i = 0; i < events.size(); ++i)
    {
        events[i] = Make_Event(false, i == 63);
        handles[i] = events[i];
    }
    EXPECT_EQ(WAIT_OBJECT_0 + 63, WaitForMultipleObjects(64, handles.data(), FALSE, 0));
    EXPECT_EQ(TIMED_OUT, WaitForMultipleObjects(64, handles.data(), FALSE, 1));
    EXPECT_EQ(TIMED_OUT, WaitForMultipleObjects(64, handles.data(), TRUE, 1));
    EXPECT_EQ(87u, Error_Of(WaitForMultipleObjects(65, handles.data(), FALSE, 0)));
    EXPECT_EQ(87u, Error_Of(WaitForMultipleObjects(0, handles.data(), FALSE, 0)));
}

TEST(Win32_Wait, Refuses_What_Is_No_Handle)
{
    Owned event = Make_Event(false, true);
    const HANDLE hClosed = event;
    EXPECT_EQ(6u, Error_Of(wait_Any(0, event, static_cast<HANDLE>(nullptr))));
    EXPECT_EQ(WAIT_OBJECT_0, Try(event)) << "a wait that failed took something";
    event.Close();
    EXPECT_EQ(6u, Error_Of(WaitForSingleObject(hClosed, 0)));
    EXPECT_EQ(6u, Error_Of(WaitForSingleObject(nullptr, 0)));
    EXPECT_EQ(6u, Error_Of(SetEvent(hClosed)));
    EXPECT_EQ(6u, Error_Of(ReleaseMutex(Make_Event(true, true))));
    EXPECT_EQ(6u, Error_Of(SetEvent(Make_Mutex(false))));
}

TEST(Win32_Wait, Takes_Its_Time)
{
    using Clock = std::chrono::steady_clock;
    const Owned event = Make_Event(false, false);
    const auto begin = Clock::now();
    EXPECT_EQ(TIMED_OUT, WaitForSingleObject(event, 60));
    const auto passed = std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - begin);
    EXPECT_GE(passed.count(), 59);
    EXPECT_LT(passed.count(), 5000);

    // The longest time that is not infinite.
    std::thread setter([&] { Let_Others_Sleep(), SetEvent(event); });
    EXPECT_EQ(WAIT_OBJECT_0, WaitForSingleObject(event, 0xFFFFFFFE));
    setter.join();
}

TEST(Win32_Wait, Is_Not_Disturbed_By_A_Close)
{
    Owned mine = Make_Event(false, false);
    HANDLE hOther = nullptr;
    ASSERT_TRUE(DuplicateHandle(GetCurrentProcess(), mine, GetCurrentProcess(), &hOther, 0, FALSE,
                                DUPLICATE_SAME_ACCESS));
    const Owned other(hOther);
    const HANDLE hMine = mine;
    std::thread closer(
        [&]
        {
            Let_Others_Sleep();
            mine.Close();
            Let_Others_Sleep();
            SetEvent(other);
        });
    EXPECT_EQ(WAIT_OBJECT_0, WaitForSingleObject(hMine, 10000));
    closer.join();
}

TEST(Win32_Wait, For_A_Thread_Ends_With_It)
{
    Owned thread;
    const Owned go = Make_Event(true, false);
    const Owned ready = Make_Event(true, false);
    std::thread other(
        [&]
        {
            HANDLE hSelf = nullptr;
            EXPECT_TRUE(DuplicateHandle(GetCurrentProcess(), GetCurrentThread(), GetCurrentProcess(), &hSelf,
                                        0, FALSE, DUPLICATE_SAME_ACCESS));
            thread = Owned(hSelf);
            SetEvent(ready);
            WaitForSingleObject(go, 10000);
        });
    EXPECT_EQ(WAIT_OBJECT_0, WaitForSingleObject(ready, 10000));
    EXPECT_EQ(TIMED_OUT, WaitForSingleObject(thread, 10));
    EXPECT_TRUE(SetEvent(go));
    EXPECT_EQ(WAIT_OBJECT_0, WaitForSingleObject(thread, 10000));
    EXPECT_EQ(WAIT_OBJECT_0, wait_All(10000, thread, go));
    other.join();
    EXPECT_EQ(TIMED_OUT, WaitForSingleObject(GetCurrentThread(), 1));
    EXPECT_EQ(TIMED_OUT, WaitForSingleObject(GetCurrentProcess(), 1));
}
