#include "named_test_objects.h"
#include "test_process.h"

#include <filesystem>
#include <fstream>
#include <thread>

#include <fcntl.h>
#include <grp.h>
#include <signal.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace test_support;

// Named objects between processes that live: signals, users, forks.

namespace
{

constexpr DWORD PATIENCE = 10000;
constexpr auto TIMED_OUT = static_cast<DWORD>(WAIT_TIMEOUT);

void use_Mode(const std::string& mode)
{
    if (mode == "without")
    {
        Do_Without_Futex_Waitv();
    }
}

int play_Partner(const Part_Arguments& arguments)
{
    use_Mode(arguments.at(1));
    const Handle there = Event(arguments[0] + "there"), back = Event(arguments[0] + "back");
    const Handle mutex = Mutex(arguments[0] + "mutex");
    Say_To_Owner('r');
    for (int i = 0; i < std::stoi(arguments.at(2)); ++i)
    {
        if (WaitForSingleObject(there, PATIENCE) != WAIT_OBJECT_0 || !SetEvent(back))
        {
            return 1;
        }
    }
    return 0;
}
const Part partner("partner", play_Partner);

class Named_Process : public testing::TestWithParam<const char*>
{
};

} // namespace

TEST_P(Named_Process, Every_Signal_Is_Answered_Once)
{
    const Kept_Calls kept;
    use_Mode(GetParam());
    constexpr int ROUNDS = 10000; // each hands over twice
    const std::string strBase = Own_Name("pong");
    Test_Process other("partner", {strBase, GetParam(), std::to_string(ROUNDS)});
    const Handle there = Event(strBase + "there"), back = Event(strBase + "back");
    ASSERT_EQ('r', other.Hear());
    for (int i = 0; i < ROUNDS; ++i)
    {
        ASSERT_TRUE(SetEvent(there));
        ASSERT_EQ(WAIT_OBJECT_0, WaitForSingleObject(back, PATIENCE)) << i;
    }
    EXPECT_EQ(0, other.Get_End());
    EXPECT_EQ(TIMED_OUT, WaitForSingleObject(there, 0));
    EXPECT_EQ(TIMED_OUT, WaitForSingleObject(back, 0));
}

TEST_P(Named_Process, Waits_For_Any_Answer_Every_Signal)
{
    const Kept_Calls kept;
    use_Mode(GetParam());
    const int nRounds = std::string(GetParam()) == "with" ? 2000 : 100; // slices of milliseconds without
    const std::string strBase = Own_Name("any");
    Test_Process other("partner", {strBase, GetParam(), std::to_string(nRounds)});
    const Handle there = Event(strBase + "there"), back = Event(strBase + "back"),
                 never = Event(strBase + "n");
    const Handle unnamed(CreateEventW(nullptr, FALSE, FALSE, nullptr));
    ASSERT_EQ('r', other.Hear());
    const HANDLE any[] = {never, unnamed, back};
    for (int i = 0; i < nRounds; ++i)
    {
        ASSERT_TRUE(SetEvent(there));
        ASSERT_EQ(WAIT_OBJECT_0 + 2, WaitForMultipleObjects(3, any, FALSE, PATIENCE)) << i;
    }
    EXPECT_EQ(0, other.Get_End());
    EXPECT_EQ(TIMED_OUT, WaitForMultipleObjects(3, any, FALSE, 5));
}

namespace
{

/// Takes two mutexes and an event all at once, and gives them back in the other order, counting in a file's
/// page how many are inside.
int play_Taker(const Part_Arguments& arguments)
{
    use_Mode(arguments.at(1));
    const Handle first = Mutex(arguments[0] + "1"), second = Mutex(arguments[0] + "2");
    const Handle event = Event(arguments[0] + "e");
    const HANDLE all[] = {event, second, first};
    Say_To_Owner('r');
    Hear_From_Owner();
    for (int i = 0; i < std::stoi(arguments.at(2)); ++i)
    {
        if (WaitForMultipleObjects(3, all, TRUE, PATIENCE) != WAIT_OBJECT_0 ||
            WaitForSingleObject(event, 0) == WAIT_OBJECT_0 || !ReleaseMutex(first) || !ReleaseMutex(second) ||
            !SetEvent(event))
        {
            return 1;
        }
    }
    return 0;
}
const Part taker("taker", play_Taker);

} // namespace

TEST_P(Named_Process, Waits_For_All_Exclude_One_Another)
{
    const std::string strBase = Own_Name("all");
    const Handle event = Event(strBase + "e", false, true);
    Test_Process first("taker", {strBase, GetParam(), "10000"});
    Test_Process second("taker", {strBase, GetParam(), "10000"});
    ASSERT_EQ('r', first.Hear());
    ASSERT_EQ('r', second.Hear());
    first.Say('g');
    second.Say('g');
    EXPECT_EQ(0, first.Get_End(60000));
    EXPECT_EQ(0, second.Get_End(60000));
    EXPECT_EQ(WAIT_OBJECT_0, WaitForSingleObject(event, 0));
}

INSTANTIATE_TEST_SUITE_P(Kernel, Named_Process, testing::Values("with", "without"),
                         [](const auto& kind) { return std::string(kind.param) + "_futex_waitv"; });

// ---- Users -----------------------------------------------------------------------------------------------

namespace
{

/// As another user: tells the error of opening each object it is told of, by name.
int play_Stranger(const Part_Arguments& arguments)
{
    constexpr unsigned int NOBODY = 65534;
    if (setgroups(0, nullptr) != 0 || setgid(NOBODY) != 0 || setuid(NOBODY) != 0)
    {
        return 99;
    }
    if (arguments.at(0) == "open")
    {
        const Handle event = Open_Event(arguments.at(1));
        return event != nullptr && SetEvent(event) ? 0 : static_cast<int>(GetLastError());
    }
    if (arguments[0] == "create")
    {
        const Handle event = Event(arguments.at(1));
        return static_cast<int>(GetLastError());
    }
    if (arguments[0] == "truncate")
    {
        return truncate(arguments.at(1).c_str(), 0) == 0 ? 0 : 98;
    }
    const Handle made =
        arguments[0] == "make_public" ? Public_Event(arguments.at(1)) : Event(arguments.at(1));
    Say_To_Owner(made != nullptr ? 'r' : 'f');
    Hear_From_Owner();
    return 0;
}
const Part stranger("stranger", play_Stranger);

class Named_Users : public testing::Test
{
protected:
    void SetUp() override
    {
        if (geteuid() != 0)
        {
            GTEST_SKIP() << "only root can be two users";
        }
    }

    int Ask_Stranger(const char* what, const std::string& name)
    {
        return Test_Process("stranger", {what, name}).Get_End();
    }
};

} // namespace

TEST_F(Named_Users, A_Private_Object_Is_Denied_To_Others)
{
    const std::string strName = Own_Name("private");
    const Handle event = Event(strName);
    EXPECT_EQ(ERROR_ACCESS_DENIED, static_cast<DWORD>(Ask_Stranger("open", strName)));
    EXPECT_EQ(ERROR_ACCESS_DENIED, static_cast<DWORD>(Ask_Stranger("create", strName)));
    EXPECT_EQ(TIMED_OUT, WaitForSingleObject(event, 0));
}

TEST_F(Named_Users, A_Public_Object_Is_Open_Whatever_The_Umask)
{
    const std::string strName = Own_Name("public");
    const mode_t former = umask(077);
    const Handle event = Public_Event(strName);
    umask(former);
    EXPECT_EQ(0, Ask_Stranger("open", strName));
    EXPECT_EQ(WAIT_OBJECT_0, WaitForSingleObject(event, 0));
    EXPECT_EQ(ERROR_ALREADY_EXISTS, static_cast<DWORD>(Ask_Stranger("create", strName)));
    EXPECT_EQ(1U, Find_Files(strName).size()) << "whoever closes it, it stays while it has a user";
}

TEST_F(Named_Users, Leftovers_Of_Another_User_Are_Used_Or_Removed)
{
    for (const char* const pHow : {"make_public", "make"})
    {
        SCOPED_TRACE(pHow);
        const std::string strName = Own_Name(pHow);
        Test_Process other("stranger", {pHow, strName});
        ASSERT_EQ('r', other.Hear());
        other.Kill();
        ASSERT_EQ(1U, Find_Files(strName).size());
        EXPECT_EQ(nullptr, Open_Event(strName));
        const Handle event = Public_Event(strName);
        EXPECT_EQ(0U, GetLastError());
        EXPECT_EQ(0, Ask_Stranger("open", strName));
        EXPECT_EQ(WAIT_OBJECT_0, WaitForSingleObject(event, 0));
    }
}

TEST_F(Named_Users, A_Stranger_Reuses_A_Public_Leftover_And_Is_Denied_A_Private_One)
{
    for (const bool bPublic : {true, false})
    {
        const std::string strName = Own_Name(bPublic ? "left-public" : "left-private");
        const pid_t nMaker = fork();
        if (nMaker == 0)
        {
            const Handle event = bPublic ? Public_Event(strName) : Event(strName);
            kill(getpid(), SIGKILL);
        }
        waitpid(nMaker, nullptr, 0);
        ASSERT_EQ(1U, Find_Files(strName).size());
        Test_Process other("stranger", {"make_public", strName});
        EXPECT_EQ(bPublic ? 'r' : 'f', other.Hear());
        const Handle event = Open_Event(strName);
        EXPECT_EQ(bPublic, event != nullptr);
    }
}

TEST_F(Named_Users, A_Stranger_Who_Truncates_Or_Holds_The_Door_Stops_Nobody)
{
    const std::string strName = Own_Name("hostile");
    Handle event = Public_Event(strName + "e");
    Handle mutex = Public_Mutex(strName + "m");
    const Handle other = Mutex(strName + "other");
    EXPECT_EQ(WAIT_OBJECT_0, WaitForSingleObject(mutex, 0));
    std::thread waiter(
        [&]
        {
            sigset_t all;
            sigfillset(&all);
            pthread_sigmask(SIG_BLOCK, &all, nullptr);
            EXPECT_EQ(TIMED_OUT, WaitForSingleObject(event, 300));
        });
    usleep(50000);
    for (const std::string& strFile : Find_Files(strName))
    {
        if (strFile.find("other") == std::string::npos)
        {
            EXPECT_EQ(0, Ask_Stranger("truncate", strFile));
        }
    }
    waiter.join();
    EXPECT_TRUE(SetEvent(event));
    EXPECT_EQ(WAIT_OBJECT_0, WaitForSingleObject(event, 0));
    EXPECT_EQ(WAIT_OBJECT_0, WaitForSingleObject(mutex, 0));
    EXPECT_TRUE(ReleaseMutex(mutex));
    EXPECT_TRUE(ReleaseMutex(mutex));
    const HANDLE all[] = {event, mutex, other};
    EXPECT_TRUE(SetEvent(event));
    EXPECT_EQ(WAIT_OBJECT_0, WaitForMultipleObjects(3, all, TRUE, 0));
    EXPECT_TRUE(ReleaseMutex(other));
    mutex.Close();
    event.Close();

    const Handle held = Public_Event(strName + "door");
    const int nFile = open(Find_Files(strName + "door").at(0).c_str(), O_RDWR | O_CLOEXEC);
    struct flock lock = {};
    lock.l_type = F_WRLCK;
    lock.l_len = 1;
    ASSERT_EQ(0, fcntl(nFile, F_OFD_SETLK, &lock));
    EXPECT_EQ(ERROR_BUSY, static_cast<DWORD>(Ask_Stranger("open", strName + "door"))) << "after a second";
    close(nFile);
    EXPECT_EQ(0, Ask_Stranger("open", strName + "door"));
}

// ---- Forks -----------------------------------------------------------------------------------------------

TEST(Named_Fork, A_Child_Neither_Has_Nor_Holds_Its_Parents_Objects)
{
    const std::string strName = Own_Name("fork");
    Handle mutex = Mutex(strName, true);
    int lines[2];
    ASSERT_EQ(0, pipe(lines));
    const pid_t nChild = fork();
    if (nChild == 0)
    {
        char word;
        const bool bForeign =
            WaitForSingleObject(mutex, 0) == WAIT_FAILED && GetLastError() == ERROR_INVALID_HANDLE;
        const Handle again = Mutex(strName);
        const bool bJoined =
            GetLastError() == ERROR_ALREADY_EXISTS && WaitForSingleObject(again, 0) == TIMED_OUT;
        CloseHandle(again);
        close(lines[1]);
        const bool bTold = read(lines[0], &word, 1) == 0; // until the parent has looked
        _exit(bForeign && bJoined && bTold ? 0 : 1);
    }
    EXPECT_TRUE(Becomes_Asleep(nChild));
    EXPECT_TRUE(ReleaseMutex(mutex));
    mutex.Close();
    EXPECT_TRUE(Find_Files(strName).empty()) << "the child lives";
    close(lines[0]);
    close(lines[1]);
    int nStatus = -1;
    waitpid(nChild, &nStatus, 0);
    EXPECT_EQ(0, nStatus);
}
