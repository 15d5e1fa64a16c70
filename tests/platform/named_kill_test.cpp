#include "named_test_objects.h"
#include "test_process.h"

#include <random>

#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace test_support;

// Processes that are killed while they own, wait, signal and make, and what is left for the others.

namespace
{

constexpr DWORD PATIENCE = 10000;

#if defined(__SANITIZE_THREAD__) || defined(__SANITIZE_ADDRESS__)
constexpr int ROUNDS = 30; // a fork is slow there
#else
constexpr int ROUNDS = 300;
#endif
constexpr auto TIMED_OUT = static_cast<DWORD>(WAIT_TIMEOUT);

/// Waits as it is told, word by word, and tells what came of it: 'w' and 'a' for 0 and abandoned (of the
/// mutex), 't' for anything else. Arguments: base of the names, and whether futex_waitv is there.
int play_Waiter(const Part_Arguments& arguments)
{
    if (arguments.at(1) == "without")
    {
        Do_Without_Futex_Waitv();
    }
    const Handle mutex = Mutex(arguments[0] + "m");
    const Handle never = Event(arguments[0] + "n");
    const Handle set = Event(arguments[0] + "s", true, true);
    const Handle unnamed(CreateEventW(nullptr, FALSE, FALSE, nullptr));
    Say_To_Owner('r');
    for (;;)
    {
        const int nWord = Hear_From_Owner();
        const HANDLE any[] = {never, unnamed, mutex};
        const HANDLE all[] = {mutex, set};
        DWORD nAnswer = nWord == '1'   ? WaitForSingleObject(mutex, PATIENCE)
                        : nWord == 'y' ? WaitForMultipleObjects(3, any, FALSE, PATIENCE)
                        : nWord == 'l' ? WaitForMultipleObjects(2, all, TRUE, PATIENCE)
                                       : WAIT_FAILED;
        if (nWord == 'y')
        {
            nAnswer -= nAnswer == TIMED_OUT ? 0 : 2;
        }
        if (nAnswer == WAIT_OBJECT_0 || nAnswer == WAIT_ABANDONED)
        {
            ReleaseMutex(mutex);
        }
        Say_To_Owner(nAnswer == WAIT_OBJECT_0 ? 'w' : nAnswer == WAIT_ABANDONED ? 'a' : 't');
    }
}
const Part waiter("waiter", play_Waiter);

/// A forked owner, which takes the mutex again and again, or once, until it is killed.
pid_t fork_Owner(const std::string& name, bool stay, int line)
{
    const pid_t nOwner = fork();
    if (nOwner == 0)
    {
        const Handle mutex = Mutex(name);
        WaitForSingleObject(mutex, PATIENCE);
        [[maybe_unused]] const auto nWritten = write(line, "o", 1);
        while (!stay)
        {
            ReleaseMutex(mutex);
            WaitForSingleObject(mutex, PATIENCE);
        }
        for (;;)
        {
            pause();
        }
    }
    return nOwner;
}

void end_Child(pid_t child)
{
    kill(child, SIGKILL);
    waitpid(child, nullptr, 0);
}

class Named_Kill : public testing::TestWithParam<const char*>
{
};

} // namespace

TEST_P(Named_Kill, Waiters_Get_The_Mutex_Of_A_Killed_Owner)
{
    const std::string strBase = Own_Name("own");
    const Handle mutex = Mutex(strBase + "m");
    Test_Process first("waiter", {strBase, GetParam()});
    Test_Process second("waiter", {strBase, GetParam()});
    ASSERT_EQ('r', first.Hear());
    ASSERT_EQ('r', second.Hear());
    int lines[2];
    ASSERT_EQ(0, pipe(lines));
    std::minstd_rand random(7);
    for (int i = 0; i < ROUNDS && !HasFailure(); ++i)
    {
        SCOPED_TRACE(testing::Message() << "round " << i);
        const bool bStays = i % 2 == 0;
        const pid_t nOwner = fork_Owner(strBase + "m", bStays, lines[1]);
        char word;
        ASSERT_EQ(1, read(lines[0], &word, 1));
        first.Say("1yl"[i % 3]);
        second.Say("1yl"[i / 3 % 3]);
        usleep(static_cast<useconds_t>(random() % 2000));
        end_Child(nOwner);
        const int nFirst = first.Hear(), nSecond = second.Hear();
        EXPECT_TRUE(nFirst == 'w' || nFirst == 'a') << static_cast<char>(nFirst);
        EXPECT_TRUE(nSecond == 'w' || nSecond == 'a') << static_cast<char>(nSecond);
        // An owner that came and went may have come again after both.
        const DWORD nThird = WaitForSingleObject(mutex, PATIENCE);
        const int nAbandoned = (nFirst == 'a') + (nSecond == 'a') + (nThird == WAIT_ABANDONED);
        EXPECT_NE(TIMED_OUT, nThird);
        EXPECT_LE(nAbandoned, 1);
        if (bStays)
        {
            EXPECT_EQ(1, nAbandoned) << "exactly one is told";
            EXPECT_EQ(WAIT_OBJECT_0, nThird) << "and that one waited before";
        }
        EXPECT_TRUE(ReleaseMutex(mutex));
    }
    close(lines[0]);
    close(lines[1]);
}

TEST_P(Named_Kill, A_Killed_Waiter_Takes_Nobodys_Signal_With_It)
{
    const std::string strName = Own_Name("signal");
    const Handle event = Event(strName);
    std::minstd_rand random(11);
    for (int i = 0; i < ROUNDS / 5 && !HasFailure(); ++i)
    {
        SCOPED_TRACE(testing::Message() << "round " << i);
        pid_t sleepers[2];
        for (pid_t& nSleeper : sleepers)
        {
            nSleeper = fork();
            if (nSleeper == 0)
            {
                if (std::string("without") == GetParam())
                {
                    Do_Without_Futex_Waitv();
                }
                const Handle own = Event(strName);
                _exit(WaitForSingleObject(own, PATIENCE) == WAIT_OBJECT_0 ? 0 : 1);
            }
            ASSERT_TRUE(Becomes_Asleep(nSleeper));
        }
        EXPECT_TRUE(SetEvent(event));
        usleep(static_cast<useconds_t>(random() % 100));
        end_Child(sleepers[0]);
        // The signal went to the one that was killed, or to the other.
        EXPECT_TRUE(SetEvent(event));
        int nStatus = -1;
        EXPECT_EQ(sleepers[1], waitpid(sleepers[1], &nStatus, 0));
        EXPECT_EQ(0, nStatus);
        ResetEvent(event);
    }
}

INSTANTIATE_TEST_SUITE_P(Kernel, Named_Kill, testing::Values("with", "without"),
                         [](const auto& kind) { return std::string(kind.param) + "_futex_waitv"; });

namespace
{

/// Makes an object of each kind, says so, and stays.
int play_Maker(const Part_Arguments& arguments)
{
    const Handle event = Event(arguments.at(0) + "e");
    const Handle mutex = Mutex(arguments[0] + "m", true);
    Say_To_Owner(event != nullptr && mutex != nullptr ? 'r' : 'f');
    Hear_From_Owner();
    return 0;
}
const Part maker("maker", play_Maker);

} // namespace

TEST(Named_Kill, The_Name_Of_A_Killed_Last_User_Is_Free)
{
    const std::string strBase = Own_Name("last");
    for (const bool bOpen : {true, false})
    {
        Test_Process process("maker", {strBase});
        ASSERT_EQ('r', process.Hear());
        EXPECT_NE(nullptr, Open_Mutex(strBase + "m"));
        process.Kill();
        if (bOpen)
        {
            EXPECT_EQ(nullptr, Open_Event(strBase + "e"));
            EXPECT_EQ(static_cast<DWORD>(ERROR_FILE_NOT_FOUND), GetLastError());
        }
        const Handle event = Event(strBase + "e");
        EXPECT_EQ(0U, GetLastError());
        const Handle mutex = Mutex(strBase + "m");
        EXPECT_EQ(0U, GetLastError());
        EXPECT_EQ(WAIT_OBJECT_0, WaitForSingleObject(mutex, 0));
    }
    EXPECT_TRUE(Find_Files(strBase).empty());
}

TEST(Named_Kill, The_Others_Keep_What_A_Killed_User_Leaves)
{
    const std::string strBase = Own_Name("keep");
    Test_Process process("maker", {strBase});
    ASSERT_EQ('r', process.Hear());
    const Handle event = Open_Event(strBase + "e");
    const Handle mutex = Open_Mutex(strBase + "m");
    EXPECT_EQ(TIMED_OUT, WaitForSingleObject(mutex, 0));
    process.Kill();
    EXPECT_EQ(WAIT_ABANDONED, WaitForSingleObject(mutex, 0));
    const Handle again = Event(strBase + "e");
    EXPECT_EQ(static_cast<DWORD>(ERROR_ALREADY_EXISTS), GetLastError());
    EXPECT_TRUE(SetEvent(again));
    EXPECT_EQ(WAIT_OBJECT_0, WaitForSingleObject(event, 0));
}

namespace
{

/// Makes, uses and closes an object all the time; two in one process exclude one another by a mutex.
int play_Storm(const Part_Arguments& arguments)
{
    for (;;)
    {
        const Handle mutex = Mutex(arguments.at(0));
        if (mutex == nullptr || WaitForSingleObject(mutex, PATIENCE) == TIMED_OUT)
        {
            return 1;
        }
        ReleaseMutex(mutex);
    }
}
const Part storm("storm", play_Storm);

} // namespace

TEST(Named_Kill, A_Storm_Of_Makers_Leaves_No_File)
{
    const std::string strName = Own_Name("storm");
    std::minstd_rand random(13);
    for (int i = 0; i < 10; ++i)
    {
        Test_Process first("storm", {strName});
        Test_Process second("storm", {strName});
        usleep(static_cast<useconds_t>(20000 + random() % 20000));
        for (int j = 0; j < 20; ++j)
        {
            const Handle mutex = Mutex(strName);
            EXPECT_NE(nullptr, mutex) << GetLastError();
            EXPECT_NE(TIMED_OUT, WaitForSingleObject(mutex, PATIENCE));
            EXPECT_TRUE(ReleaseMutex(mutex));
        }
        EXPECT_EQ(Test_Process::NONE, first.Get_End(1));
        first.Kill();
        second.Kill();
        const Handle mutex = Mutex(strName);
        EXPECT_NE(TIMED_OUT, WaitForSingleObject(mutex, PATIENCE));
    }
    EXPECT_TRUE(Find_Files(strName).empty());
}
