#include "probes.h"

#include <array>

TEST_P(Objects, A_Wait_For_Any_Takes_The_Lowest_And_No_More)
{
    const Owned first = make_Event(false, false);
    const Owned second = make_Event(false, true);
    const Owned third = make_Event(false, true);
    EXPECT_EQ(WAIT_OBJECT_0 + 1, Wait_Any(0, first, second, third));
    EXPECT_EQ(TIMED_OUT, Try(second));
    EXPECT_EQ(WAIT_OBJECT_0 + 2, Wait_Any(0, first, second, third));
    EXPECT_EQ(TIMED_OUT, Wait_Any(0, first, second, third));
    EXPECT_EQ(TIMED_OUT, Wait_Any(10, first, second, third));
    EXPECT_TRUE(SetEvent(first));
    EXPECT_EQ(WAIT_OBJECT_0, Wait_Any(0, first, first));
}

TEST_P(Objects, A_Wait_For_All_Takes_All_Or_Nothing)
{
    const Owned event = make_Event(false, true);
    const Owned mutex = make_Mutex(false);
    const Owned missing = make_Event(false, false);
    EXPECT_EQ(TIMED_OUT, Wait_All(0, event, mutex, missing));
    EXPECT_EQ(TIMED_OUT, Wait_All(10, event, mutex, missing));
    EXPECT_TRUE(On_Other_Thread([&] { return Try(mutex) == WAIT_OBJECT_0 && ReleaseMutex(mutex); }));
    EXPECT_EQ(WAIT_OBJECT_0, Try(event));

    EXPECT_TRUE(SetEvent(event));
    EXPECT_TRUE(SetEvent(missing));
    EXPECT_EQ(WAIT_OBJECT_0, Wait_All(0, event, mutex, missing));
    EXPECT_EQ(TIMED_OUT, Try(event));
    EXPECT_EQ(TIMED_OUT, Try(missing));
    EXPECT_TRUE(ReleaseMutex(mutex));
    EXPECT_FALSE(ReleaseMutex(mutex));
}

TEST_P(Objects, A_Wait_For_All_Is_Served_While_It_Sleeps)
{
    const Owned event = make_Event(false, false);
    const Owned manual = make_Event(true, false);
    const Owned mutex = make_Mutex(true);
    Sleeper sleeper(
        [&]
        {
            EXPECT_EQ(WAIT_OBJECT_0, Wait_All(INFINITE, event, mutex, manual));
            EXPECT_TRUE(ReleaseMutex(mutex));
        });
    EXPECT_TRUE(SetEvent(event));
    EXPECT_EQ(WAIT_OBJECT_0, Try(event)) << "nothing is taken before all can be";
    EXPECT_TRUE(SetEvent(manual));
    EXPECT_TRUE(ReleaseMutex(mutex));
    EXPECT_EQ(WAIT_OBJECT_0, Try(mutex)) << "nor is it kept for the sleeper";
    EXPECT_TRUE(ReleaseMutex(mutex));
    EXPECT_TRUE(SetEvent(event));
    sleeper.Join();
    EXPECT_EQ(TIMED_OUT, Try(event));
    EXPECT_EQ(WAIT_OBJECT_0, Try(manual));
}

TEST_P(Objects, A_Wait_Has_Sixty_Four_At_Most)
{
    std::array<Owned, 65> events;
    std::array<HANDLE, 65> handles;
    for (std::size_t i = 0; i < events.size(); ++i)
    {
        events[i] = make_Event(false, false);
        handles[i] = events[i];
    }
    for (const DWORD nPlace : {0u, 61u, 63u})
    {
        DWORD nAnswer = WAIT_FAILED;
        Sleeper any([&] { nAnswer = WaitForMultipleObjects(64, handles.data(), FALSE, INFINITE); });
        EXPECT_TRUE(SetEvent(handles[nPlace]));
        any.Join();
        EXPECT_EQ(nPlace, nAnswer);
        EXPECT_EQ(TIMED_OUT, Try(handles[nPlace]));
    }
    Sleeper all([&] { EXPECT_EQ(0u, WaitForMultipleObjects(64, handles.data(), TRUE, INFINITE)); });
    for (const HANDLE handle : handles)
        EXPECT_TRUE(SetEvent(handle));
    all.Join();
    EXPECT_EQ(TIMED_OUT, Try(handles[63]));

    for (const DWORD nRefused : {65u, 0u})
        EXPECT_EQ(87u, Error_Of(WaitForMultipleObjects(nRefused, handles.data(), FALSE, 0)));
}

TEST_P(Objects, A_Wait_Refuses_What_Is_No_Handle)
{
    Owned event = make_Event(false, true);
    const HANDLE hClosed = event;
    EXPECT_EQ(6u, Error_Of(Wait_Any(0, event, static_cast<HANDLE>(nullptr))));
    EXPECT_EQ(WAIT_OBJECT_0, Try(event)) << "a wait that failed took something";
    event.Close();
    EXPECT_EQ(6u, Error_Of(WaitForSingleObject(hClosed, 0)));
    EXPECT_EQ(6u, Error_Of(WaitForSingleObject(nullptr, 0)));
    EXPECT_EQ(6u, Error_Of(SetEvent(hClosed)));
    EXPECT_EQ(6u, Error_Of(ReleaseMutex(make_Event(true, true))));
    EXPECT_EQ(6u, Error_Of(SetEvent(make_Mutex(false))));
}

TEST_P(Objects, A_Wait_That_Times_Out_Takes_Its_Time_And_Nothing_Else)
{
    const Owned event = make_Event(false, false);
    const Owned mutex = make_Mutex(true);
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(TIMED_OUT, WaitForSingleObject(event, 40));
    EXPECT_EQ(TIMED_OUT, Wait_All(40, event, mutex));
    EXPECT_LE(std::chrono::milliseconds(75), std::chrono::steady_clock::now() - start);
    EXPECT_TRUE(ReleaseMutex(mutex));
    EXPECT_FALSE(ReleaseMutex(mutex));

    // The longest time that is not infinite.
    const Sleeper sleeper([&] { EXPECT_EQ(WAIT_OBJECT_0, WaitForSingleObject(event, 0xFFFFFFFE)); });
    EXPECT_TRUE(SetEvent(event));
}

TEST_P(Objects, A_Wait_Is_Not_Disturbed_By_A_Close)
{
    Owned mine = make_Event(false, false);
    const Owned other = Duplicate_Of(mine);
    const Sleeper sleeper([&, hMine = HANDLE{mine}]
                          { EXPECT_EQ(WAIT_OBJECT_0, WaitForSingleObject(hMine, INFINITE)); });
    mine.Close();
    EXPECT_TRUE(SetEvent(other));
}
