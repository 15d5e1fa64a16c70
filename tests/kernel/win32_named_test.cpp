#include "win32_threads.h"

#include <array>
#include <atomic>
#include <chrono>
#include <string>
#include <vector>

using namespace test_support;

// Named events and mutexes as one process sees them. Names are this program's own, so that several runs at a
// time don't meet.

namespace
{

constexpr auto TIMED_OUT = static_cast<DWORD>(WAIT_TIMEOUT);

/// A text of 16-bit units, ended by a NUL.
using Name = std::vector<wchar_t>;

Name make_Name(const char* tail, const char* prefix = "")
{
    const std::string strText = prefix + ("qn-" + std::to_string(GetCurrentProcessId()) + "-") + tail;
    Name name(strText.begin(), strText.end());
    name.push_back(0);
    return name;
}

Name make_Long_Name(std::size_t length, wchar_t filling, wchar_t last)
{
    Name name = make_Name("long-");
    name.resize(length, filling);
    name[name.size() - 2] = filling;
    for (wchar_t& unit : name)
        unit = unit == 0 ? filling : unit;
    name.back() = last;
    name.push_back(0);
    return name;
}

Owned make_Event(const Name& name, bool manual, bool set)
{
    return Owned(CreateEventW(nullptr, manual, set, name.data()));
}

Owned make_Mutex(const Name& name, bool owned) { return Owned(CreateMutexW(nullptr, owned, name.data())); }

/// Runs the function on a thread that is given time to fall asleep in it.
template <class Function>
std::thread start_Sleeper(Function function)
{
    std::thread thread(function);
    Let_Others_Sleep();
    return thread;
}

} // namespace

TEST(Win32_Named, Handles_Of_One_Name_Stand_For_One_Object)
{
    const Name name = make_Name("one");
    const Owned first = make_Event(name, false, false);
    EXPECT_EQ(0U, GetLastError());
    const Owned second(CreateEventW(nullptr, TRUE, TRUE, name.data()));
    EXPECT_EQ(static_cast<DWORD>(ERROR_ALREADY_EXISTS), GetLastError());
    const Owned third(OpenEventW(EVENT_ALL_ACCESS, FALSE, name.data()));
    EXPECT_EQ(TIMED_OUT, Try(second)) << "the state of an object that exists is left alone";
    EXPECT_TRUE(SetEvent(third));
    EXPECT_EQ(WAIT_OBJECT_0, Try(first));
    EXPECT_EQ(TIMED_OUT, Try(second)) << "it resets itself, whatever its second maker asked for";
}

TEST(Win32_Named, Names_Are_Told_Apart_By_Case_And_Space)
{
    const Owned lower = make_Event(make_Name("case"), false, true);
    const Owned upper = make_Event(make_Name("CASE"), false, false);
    EXPECT_EQ(0U, GetLastError());
    const Owned machine = make_Event(make_Name("case", "Global\\"), false, false);
    EXPECT_EQ(0U, GetLastError());
    EXPECT_EQ(TIMED_OUT, Try(upper));
    EXPECT_EQ(TIMED_OUT, Try(machine));
    const Owned same(OpenEventW(SYNCHRONIZE, FALSE, make_Name("case", "Local\\").data()));
    EXPECT_EQ(WAIT_OBJECT_0, Try(same));
}

TEST(Win32_Named, A_Name_Holds_Any_Unit)
{
    Name odd = make_Name("odd");
    const wchar_t units[] = {'/', '.',  '%',  '#',    ' ',    ':',    '*',
                             1,   0x7F, 0xE4, 0x3042, 0xD800, 0xDC00, 0xFFFE};
    odd.insert(odd.end() - 1, std::begin(units), std::end(units));
    const Owned first = make_Event(odd, false, true);
    EXPECT_EQ(0U, GetLastError());
    odd[odd.size() - 2] = 0xFFFD;
    const Owned second = make_Event(odd, false, false);
    EXPECT_EQ(0U, GetLastError()) << "the last unit tells them apart";
    EXPECT_EQ(TIMED_OUT, Try(second));
    EXPECT_EQ(WAIT_OBJECT_0, Try(first));
}

TEST(Win32_Named, Long_Names_Are_Told_Apart_By_Each_Unit)
{
    for (const wchar_t filling : {L'x', static_cast<wchar_t>(0x4E00)})
    {
        const Owned first = make_Event(make_Long_Name(259, filling, 'a'), false, true);
        EXPECT_EQ(0U, GetLastError());
        const Owned second = make_Event(make_Long_Name(259, filling, 'b'), false, false);
        EXPECT_EQ(0U, GetLastError());
        const Owned again(OpenEventW(SYNCHRONIZE, FALSE, make_Long_Name(259, filling, 'a').data()));
        EXPECT_EQ(TIMED_OUT, Try(second));
        EXPECT_EQ(WAIT_OBJECT_0, Try(again));
    }
}

TEST(Win32_Named, What_Is_Missing_Or_Of_Another_Kind_Is_Refused)
{
    const Name name = make_Name("kind");
    EXPECT_EQ(static_cast<DWORD>(ERROR_FILE_NOT_FOUND),
              Error_Of(OpenEventW(SYNCHRONIZE, FALSE, name.data())));
    EXPECT_EQ(static_cast<DWORD>(ERROR_FILE_NOT_FOUND),
              Error_Of(OpenMutexW(SYNCHRONIZE, FALSE, name.data())));
    const Owned mutex = make_Mutex(name, false);
    EXPECT_EQ(static_cast<DWORD>(ERROR_INVALID_HANDLE),
              Error_Of(CreateEventW(nullptr, FALSE, FALSE, name.data())));
    EXPECT_EQ(static_cast<DWORD>(ERROR_INVALID_HANDLE),
              Error_Of(OpenEventW(SYNCHRONIZE, FALSE, name.data())));
    EXPECT_EQ(static_cast<DWORD>(ERROR_PATH_NOT_FOUND),
              Error_Of(CreateMutexW(nullptr, FALSE, make_Name("\\behind").data())));
}

TEST(Win32_Named, The_Name_Goes_With_The_Last_Handle)
{
    const Name name = make_Name("gone");
    Owned first = make_Event(name, true, true);
    Owned second(OpenEventW(SYNCHRONIZE, FALSE, name.data()));
    first.Close();
    EXPECT_EQ(WAIT_OBJECT_0, Try(second));
    EXPECT_NE(nullptr, Owned(OpenEventW(SYNCHRONIZE, FALSE, name.data())));
    second.Close();
    EXPECT_EQ(static_cast<DWORD>(ERROR_FILE_NOT_FOUND),
              Error_Of(OpenEventW(SYNCHRONIZE, FALSE, name.data())));
    const Owned mutex = make_Mutex(name, false);
    EXPECT_EQ(0U, GetLastError());
}

TEST(Win32_Named, The_Name_Of_An_Owned_Mutex_Goes_With_The_Last_Handle)
{
    const Name name = make_Name("owned");
    Owned mutex = make_Mutex(name, true);
    mutex.Close();
    mutex = make_Mutex(name, false);
    EXPECT_EQ(0U, GetLastError());
    EXPECT_EQ(WAIT_OBJECT_0, On_Other_Thread([&] { return Try(mutex); })) << "a new mutex is nobody's";
}

TEST(Win32_Named, A_Mutex_Counts_And_Has_One_Owner)
{
    const Name name = make_Name("mutex");
    const Owned mutex = make_Mutex(name, true);
    const Owned other = make_Mutex(name, true);
    EXPECT_EQ(static_cast<DWORD>(ERROR_ALREADY_EXISTS), GetLastError());
    EXPECT_EQ(WAIT_OBJECT_0, Try(other));
    EXPECT_EQ(TIMED_OUT, On_Other_Thread([&] { return Try(mutex); }));
    EXPECT_EQ(static_cast<DWORD>(ERROR_NOT_OWNER),
              On_Other_Thread([&] { return Error_Of(ReleaseMutex(mutex)); }));
    EXPECT_TRUE(ReleaseMutex(mutex));
    EXPECT_EQ(TIMED_OUT, On_Other_Thread([&] { return Try(mutex); }));
    EXPECT_TRUE(ReleaseMutex(other));
    EXPECT_EQ(static_cast<DWORD>(ERROR_NOT_OWNER), Error_Of(ReleaseMutex(mutex)));
    EXPECT_EQ(WAIT_OBJECT_0, Try(mutex));
    EXPECT_TRUE(ReleaseMutex(mutex));
}

TEST(Win32_Named, A_Mutex_Of_An_Ended_Thread_Is_Abandoned_Once)
{
    const Owned mutex = make_Mutex(make_Name("abandoned"), false);
    const Owned event = make_Event(make_Name("abandoned-event"), false, false);
    On_Other_Thread([&] { return Try(mutex); });
    const HANDLE both[] = {event, mutex};
    EXPECT_EQ(WAIT_ABANDONED_0 + 1, WaitForMultipleObjects(2, both, FALSE, 0));
    EXPECT_EQ(WAIT_OBJECT_0, Try(mutex));
    EXPECT_TRUE(ReleaseMutex(mutex));
    EXPECT_TRUE(ReleaseMutex(mutex));
    On_Other_Thread([&] { return Try(mutex); });
    EXPECT_TRUE(SetEvent(event));
    const DWORD dwAll = WaitForMultipleObjects(2, both, TRUE, 0); // which one is not told everywhere
    EXPECT_TRUE(dwAll == WAIT_ABANDONED_0 || dwAll == WAIT_ABANDONED_0 + 1) << dwAll;
    EXPECT_TRUE(ReleaseMutex(mutex));
    EXPECT_EQ(WAIT_OBJECT_0, Try(mutex));
    EXPECT_TRUE(ReleaseMutex(mutex));
}

TEST(Win32_Named, Sleepers_Are_Released)
{
    const Owned event = make_Event(make_Name("released"), false, false);
    std::atomic<int> nReleased{0};
    const auto sleep = [&] { nReleased += WaitForSingleObject(event, 10000) == WAIT_OBJECT_0 ? 1 : 0; };
    std::thread first = start_Sleeper(sleep);
    std::thread second = start_Sleeper(sleep);
    EXPECT_TRUE(SetEvent(event));
    EXPECT_TRUE(SetEvent(event));
    first.join();
    second.join();
    EXPECT_EQ(2, nReleased);
    EXPECT_EQ(TIMED_OUT, Try(event));

    std::thread third = start_Sleeper(sleep);
    EXPECT_TRUE(SetEvent(event));
    EXPECT_TRUE(ResetEvent(event));
    third.join();
    EXPECT_EQ(3, nReleased) << "a reset takes back no signal that was handed to a sleeper";
}

TEST(Win32_Named, A_Manual_Event_Releases_Everybody)
{
    const Owned event = make_Event(make_Name("manual"), true, false);
    std::atomic<int> nReleased{0};
    const auto sleep = [&] { nReleased += WaitForSingleObject(event, 10000) == WAIT_OBJECT_0 ? 1 : 0; };
    for (const bool bPulse : {false, true})
    {
        nReleased = 0;
        std::thread first = start_Sleeper(sleep);
        std::thread second = start_Sleeper(sleep);
        EXPECT_TRUE(bPulse ? PulseEvent(event) : SetEvent(event) && ResetEvent(event));
        first.join();
        second.join();
        EXPECT_EQ(2, nReleased);
        EXPECT_EQ(TIMED_OUT, Try(event));
    }
    EXPECT_TRUE(SetEvent(event));
    EXPECT_EQ(WAIT_OBJECT_0, Try(event));
    EXPECT_EQ(WAIT_OBJECT_0, Try(event));
    EXPECT_TRUE(PulseEvent(event));
    EXPECT_EQ(TIMED_OUT, Try(event));
}

TEST(Win32_Named, A_Pulse_Releases_One_And_Leaves_Nothing)
{
    const Owned event = make_Event(make_Name("pulse"), false, false);
    EXPECT_TRUE(PulseEvent(event));
    EXPECT_EQ(TIMED_OUT, Try(event));
    EXPECT_TRUE(SetEvent(event));
    EXPECT_TRUE(PulseEvent(event));
    EXPECT_EQ(TIMED_OUT, Try(event));
    std::atomic<int> nReleased{0};
    const auto sleep = [&] { nReleased += WaitForSingleObject(event, 300) == WAIT_OBJECT_0 ? 1 : 0; };
    std::thread first = start_Sleeper(sleep);
    std::thread second = start_Sleeper(sleep);
    EXPECT_TRUE(PulseEvent(event));
    first.join();
    second.join();
    EXPECT_EQ(1, nReleased);
    EXPECT_EQ(TIMED_OUT, Try(event));
}

TEST(Win32_Named, A_Pulse_Leaves_Nothing_For_A_Wait_For_All_That_Misses_Something)
{
    const Owned event = make_Event(make_Name("pulse-all"), false, false);
    const Owned other = make_Event(make_Name("pulse-other"), false, false);
    const HANDLE both[] = {event, other};
    std::atomic<DWORD> dwAnswer{0};
    std::thread sleeper = start_Sleeper([&] { dwAnswer = WaitForMultipleObjects(2, both, TRUE, 300); });
    EXPECT_TRUE(PulseEvent(event));
    EXPECT_EQ(TIMED_OUT, Try(event));
    EXPECT_TRUE(SetEvent(other));
    sleeper.join();
    EXPECT_EQ(TIMED_OUT, dwAnswer);
    EXPECT_EQ(WAIT_OBJECT_0, Try(other));
}

TEST(Win32_Named, Any_Of_64_Events_Releases_A_Sleeper)
{
    std::vector<Owned> events;
    std::vector<HANDLE> handles;
    for (unsigned int i = 0; i < MAXIMUM_WAIT_OBJECTS; ++i)
    {
        events.push_back(make_Event(make_Name(("many" + std::to_string(i)).c_str()), false, false));
        handles.push_back(events.back());
    }
    for (const DWORD dwPlace : {0u, 60u, 61u, 63u})
    {
        std::atomic<DWORD> dwAnswer{0};
        std::thread sleeper = start_Sleeper(
            [&] { dwAnswer = WaitForMultipleObjects(MAXIMUM_WAIT_OBJECTS, handles.data(), FALSE, 10000); });
        EXPECT_TRUE(SetEvent(handles[dwPlace]));
        sleeper.join();
        EXPECT_EQ(dwPlace, dwAnswer);
        EXPECT_EQ(TIMED_OUT, Try(handles[dwPlace]));
    }
}

TEST(Win32_Named, Waits_Mix_With_Unnamed_Objects)
{
    const Owned named = make_Event(make_Name("mixed"), false, false);
    const Owned mutex = make_Mutex(make_Name("mixed-mutex"), false);
    const Owned unnamed = Make_Event(false, false);
    const HANDLE all[] = {named, unnamed, mutex};
    EXPECT_EQ(WAIT_OBJECT_0 + 2, WaitForMultipleObjects(3, all, FALSE, 0));
    EXPECT_TRUE(ReleaseMutex(mutex));

    for (const DWORD nIndex : {0U, 1U})
    {
        DWORD nAnswer = 0xFF;
        std::thread any = start_Sleeper([&] { nAnswer = WaitForMultipleObjects(2, all, FALSE, 10000); });
        EXPECT_TRUE(SetEvent(all[nIndex]));
        any.join();
        EXPECT_EQ(WAIT_OBJECT_0 + nIndex, nAnswer);
    }
    for (const DWORD nIndex : {0U, 1U})
    {
        DWORD nAnswer = 0xFF;
        std::thread both = start_Sleeper(
            [&]
            {
                nAnswer = WaitForMultipleObjects(3, all, TRUE, 10000);
                ReleaseMutex(mutex);
            });
        EXPECT_TRUE(SetEvent(all[nIndex]));
        Let_Others_Sleep();
        EXPECT_EQ(WAIT_OBJECT_0, Try(all[nIndex])) << "nothing is taken before all can be";
        EXPECT_TRUE(SetEvent(all[nIndex]));
        EXPECT_TRUE(SetEvent(all[1 - nIndex]));
        both.join();
        EXPECT_EQ(WAIT_OBJECT_0, nAnswer);
        EXPECT_EQ(TIMED_OUT, Try(named));
        EXPECT_EQ(TIMED_OUT, Try(unnamed));
    }
}

TEST(Win32_Named, Sixty_Four_Objects_In_One_Wait)
{
    std::vector<Owned> events;
    std::vector<HANDLE> handles;
    for (int i = 0; i < 64; ++i)
    {
        const bool bNamed = i % 3 != 0;
        const Name name = make_Name(("many-" + std::to_string(i)).c_str());
        events.push_back(bNamed ? make_Event(name, i % 2 == 0, false) : Make_Event(false, false));
        handles.push_back(events.back());
    }
    DWORD nAnswer = 0xFF;
    std::thread any =
        start_Sleeper([&] { nAnswer = WaitForMultipleObjects(64, handles.data(), FALSE, 10000); });
    EXPECT_TRUE(SetEvent(handles[61]));
    any.join();
    EXPECT_EQ(WAIT_OBJECT_0 + 61, nAnswer);

    std::thread all =
        start_Sleeper([&] { nAnswer = WaitForMultipleObjects(64, handles.data(), TRUE, 10000); });
    for (const HANDLE handle : handles)
        EXPECT_TRUE(SetEvent(handle));
    all.join();
    EXPECT_EQ(WAIT_OBJECT_0, nAnswer);
    EXPECT_EQ(TIMED_OUT, Try(handles[61]));
}

TEST(Win32_Named, A_Wait_That_Times_Out_Takes_Nothing)
{
    const Owned event = make_Event(make_Name("late"), false, false);
    const Owned mutex = make_Mutex(make_Name("late-mutex"), false);
    std::thread(
        [&]
        {
            Try(mutex);
            const auto start = std::chrono::steady_clock::now();
            const HANDLE both[] = {event, mutex};
            EXPECT_EQ(TIMED_OUT, WaitForSingleObject(event, 40));
            EXPECT_EQ(TIMED_OUT, WaitForMultipleObjects(2, both, TRUE, 40));
            EXPECT_LE(std::chrono::milliseconds(75), std::chrono::steady_clock::now() - start);
            ReleaseMutex(mutex);
        })
        .join();
    EXPECT_TRUE(SetEvent(event));
    EXPECT_EQ(WAIT_OBJECT_0, Try(event));
    EXPECT_EQ(WAIT_OBJECT_0, Try(mutex));
    EXPECT_TRUE(ReleaseMutex(mutex));
}

TEST(Win32_Named, Threads_Of_One_Process_Exclude_One_Another)
{
    const Name name = make_Name("exclusion");
    const Owned gate = make_Event(make_Name("exclusion-gate"), true, false);
    int nCount = 0; // guarded by the mutex
    constexpr int THREADS = 4;
    constexpr int ROUNDS = 2000;
    std::vector<std::thread> threads;
    for (int i = 0; i < THREADS; ++i)
    {
        threads.emplace_back(
            [&]
            {
                const Owned mutex(CreateMutexW(nullptr, FALSE, name.data()));
                WaitForSingleObject(gate, 10000);
                for (int j = 0; j < ROUNDS; ++j)
                {
                    EXPECT_EQ(WAIT_OBJECT_0, WaitForSingleObject(mutex, 10000));
                    ++nCount;
                    EXPECT_TRUE(ReleaseMutex(mutex));
                }
            });
    }
    EXPECT_TRUE(SetEvent(gate));
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(THREADS * ROUNDS, nCount);
}
