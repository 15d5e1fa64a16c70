#include "named_test_objects.h"
#include "test_process.h"

#include <random>

using namespace test_support;

// Processes that are killed while they own, and what is left for the others.

namespace
{

constexpr int ROUNDS = 60;

/// Waits for the mutex as it is told, word by word, and tells what came of it: 'w' and 'a' for 0 and
/// abandoned, 't' for anything else.
int Play_Waiter(const Talk& owner, const std::string& base)
{
    const Handle mutex = Mutex(base + "m");
    const Handle never = Event(base + "n");
    const Handle set = Event(base + "s", true, true);
    const Handle unnamed(CreateEventW(nullptr, FALSE, FALSE, nullptr));
    const HANDLE any[] = {mutex, never, unnamed};
    const HANDLE all[] = {mutex, set};
    owner.Say('r');
    for (;;)
    {
        const int nWord = owner.Hear(-1);
        const DWORD nAnswer = nWord == '1'   ? WaitForSingleObject(mutex, PATIENCE)
                              : nWord == 'y' ? WaitForMultipleObjects(3, any, FALSE, PATIENCE)
                                             : WaitForMultipleObjects(2, all, TRUE, PATIENCE);
        if (nAnswer == WAIT_OBJECT_0 || nAnswer == WAIT_ABANDONED)
        {
            ReleaseMutex(mutex);
        }
        owner.Say(nAnswer == WAIT_OBJECT_0 ? 'w' : nAnswer == WAIT_ABANDONED ? 'a' : 't');
    }
}

/// Takes the mutex once, or again and again, until it is killed.
int Play_Owner(const Talk& owner, const std::string& name, bool stay)
{
    const Handle mutex = Mutex(name);
    WaitForSingleObject(mutex, PATIENCE);
    owner.Say('o');
    while (!stay)
    {
        ReleaseMutex(mutex);
        WaitForSingleObject(mutex, PATIENCE);
    }
    return owner.Hear(-1);
}

/// Makes an object of each kind, says so, and stays.
int Play_Maker(const Talk& owner, const std::string& base)
{
    const Handle event = Event(base + "e");
    const Handle mutex = Mutex(base + "m", true);
    owner.Say(event != nullptr && mutex != nullptr ? 'r' : 'f');
    return owner.Hear(-1);
}

class Named_Kill : public testing::TestWithParam<bool>
{
};

} // namespace

TEST_P(Named_Kill, Waiters_Get_The_Mutex_Of_A_Killed_Owner)
{
    const Kept_Calls kept;
    if (!GetParam())
    {
        named_calls.futex_waitv = [](futex_waitv*, unsigned int, const timespec*)
        {
            errno = ENOSYS;
            return -1L;
        };
    }
    const std::string strBase = Own_Name("own");
    const Handle mutex = Mutex(strBase + "m");
    const auto wait = [&](const Talk& owner) { return Play_Waiter(owner, strBase); };
    Test_Process first(wait);
    Test_Process second(wait);
    ASSERT_EQ('r', first.Hear());
    ASSERT_EQ('r', second.Hear());
    std::minstd_rand random(7);
    for (int i = 0; i < ROUNDS && !HasFailure(); ++i)
    {
        SCOPED_TRACE(testing::Message() << "round " << i);
        const bool bStays = i % 2 == 0;
        Test_Process owner([&](const Talk& talk) { return Play_Owner(talk, strBase + "m", bStays); });
        ASSERT_EQ('o', owner.Hear());
        first.Say("1yl"[i % 3]);
        second.Say("1yl"[i / 3 % 3]);
        usleep(static_cast<useconds_t>(random() % 2000));
        owner.Kill();
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
}

INSTANTIATE_TEST_SUITE_P(Kernel, Named_Kill, testing::Bool(),
                         [](const auto& with) { return with.param ? "with_waitv" : "without_waitv"; });

TEST(Named_Kill, The_Name_Of_A_Killed_Last_User_Is_Free)
{
    const std::string strBase = Own_Name("last");
    for (const bool bOpen : {true, false})
    {
        Test_Process process([&](const Talk& owner) { return Play_Maker(owner, strBase); });
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
    Test_Process process([&](const Talk& owner) { return Play_Maker(owner, strBase); });
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
