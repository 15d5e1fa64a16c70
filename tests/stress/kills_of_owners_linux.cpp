// Owners of a mutex are killed while others wait for it.

#include "platform/kernel/named_calls.h"
#include "world.h"

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <optional>

#include <unistd.h>

namespace stress
{

namespace
{

using Lock_Deed = unsigned int (*)(const Objects&);

constexpr Lock_Deed locks[] = {Lock, Lock_Any, Lock_All};
constexpr const char* lock_Names[] = {"one", "any", "all"};

/// A process that has the mutex and keeps it.
Child start_Owner(const Names& names)
{
    Shared<std::atomic<bool>> bOwns;
    Child owner(
        [&]() -> unsigned int
        {
            const Objects objects(names);
            objects.m_Mutex.Wait();
            *bOwns = true;
            for (;;)
                pause();
        });
    EXPECT_TRUE(Becomes_True([&] { return bOwns->load(); }));
    return owner;
}

/// Kills the owner, then the first waiter `nSteps` instructions after it woke. Empty when the waiter had come
/// to an end before; otherwise what became of the second one.
std::optional<unsigned int> kill_Twice(Lock_Deed lock, unsigned long nSteps, milliseconds time)
{
    World world;
    Child owner = start_Owner(world.m_Names);
    Stepped_Child first(
        [&]
        {
            const Objects objects(world.m_Names);
            Warm_Up(world.m_Names);
            Stepped_Child::Mark();
            const unsigned int nResult = lock(objects);
            Stepped_Child::Mark();
            return nResult;
        });
    unsigned long nUntilAsleep = ~0UL;
    EXPECT_EQ(Stepped_Child::Stop::Asleep, first.Move(nUntilAsleep));
    world.Start_Sleeper(Lock_And_Release(lock));
    owner.Kill();
    const auto stop = first.Move(nSteps);
    first.Kill();
    const unsigned int nResult = world.m_Sleepers[0].Get_Result(time);
    return stop == Stepped_Child::Stop::Mark ? std::nullopt : std::optional(nResult);
}

/// How many second waiters of all those rounds were left asleep.
unsigned int count_Lost(Lock_Deed lock, unsigned long nStride, milliseconds time, unsigned int& nRounds)
{
    unsigned int nLost = 0;
    for (unsigned long nSteps = 0; nLost < 3; nSteps += nStride, ++nRounds)
    {
        const auto result = kill_Twice(lock, nSteps, time);
        if (!result)
            break;
        nLost += *result == Child::Still_There;
        EXPECT_TRUE(*result == 0x80 || *result == Child::Still_There) << *result << ", step " << nSteps;
    }
    return nLost;
}

class Kills_Of_Owners : public testing::Test
{
protected:
    void SetUp() override
    {
        if (!Stepped_Child::Is_Permitted())
            GTEST_SKIP() << "no process may be traced here";
    }
    void TearDown() override { kernel::named_calls.use_gate = true; }
};

/// These kills need no tracing.
class Kills_Of_Any : public testing::TestWithParam<bool>
{
protected:
    void SetUp() override
    {
        if (!GetParam())
            kernel::named_calls.futex_waitv = [](futex_waitv*, unsigned int, const timespec*)
            {
                errno = ENOSYS;
                return -1L;
            };
    }
    void TearDown() override { kernel::named_calls = m_Calls; }

private:
    const kernel::Named_Calls m_Calls = kernel::named_calls;
};

/// What a contender did, and with what luck.
struct Record
{
    std::atomic<unsigned int> m_nLocks;
    std::atomic<unsigned int> m_nAbandoned;
    std::atomic<unsigned int> m_nFaults;
};

struct Contest
{
    std::atomic<unsigned int> m_nInside; ///< the number of the contender that has the mutex
    std::atomic<bool> m_bStop;
    Record m_Records[std::size(locks)];
};

/// Takes and releases the mutex until it is told to stop.
unsigned int contend(const Names& names, Contest& contest, unsigned int nIndex)
{
    const Objects objects(names);
    Record& record = contest.m_Records[nIndex];
    while (!contest.m_bStop)
    {
        const unsigned int nResult = locks[nIndex](objects);
        const bool bAbandoned = (nResult & 0x80) != 0;
        const unsigned int nBefore = contest.m_nInside.exchange(nIndex + 1);
        record.m_nFaults += nResult == WAIT_FAILED || (nBefore != 0 && !bAbandoned);
        record.m_nAbandoned += bAbandoned;
        ++record.m_nLocks;
        const bool bOwn = contest.m_nInside.exchange(0) == nIndex + 1;
        record.m_nFaults += !bOwn || !ReleaseMutex(objects.m_Mutex.get());
        usleep(Random_Below(100));
    }
    return 0;
}

unsigned int sum(const Contest& contest, std::atomic<unsigned int> Record::*pField)
{
    unsigned int nSum = 0;
    for (const Record& record : contest.m_Records)
        nSum += record.*pField;
    return nSum;
}

/// One more contender, who is killed as owner or anywhere between.
void kill_One(const Names& names, Contest& contest, bool bAsOwner)
{
    Shared<std::atomic<bool>> bBegun;
    Child victim(
        [&]() -> unsigned int
        {
            const Objects objects(names);
            for (;;)
            {
                objects.m_Mutex.Wait();
                contest.m_nInside = 0x100;
                *bBegun = true;
                while (bAsOwner)
                    pause();
                contest.m_nInside = 0;
                ReleaseMutex(objects.m_Mutex.get());
            }
        });
    ASSERT_TRUE(Becomes_True([&] { return bBegun->load(); }));
    usleep(Random_Below(300));
    victim.Kill();
}

} // namespace

TEST_F(Kills_Of_Owners, Also_Of_The_Waiter_That_Was_Woken_Lose_No_Other_Waiter)
{
    for (unsigned int i = 0; i < std::size(locks); ++i)
    {
        unsigned int nRounds = 0;
        EXPECT_EQ(0U, count_Lost(locks[i], Is_Long() ? 1 : 64, Soon, nRounds));
        std::printf("double kills, waits for %s: %u\n", lock_Names[i], nRounds);
    }
}

TEST_F(Kills_Of_Owners, Also_Of_The_Waiter_That_Was_Woken_Would_Lose_Others_Without_The_Gate)
{
    kernel::named_calls.use_gate = false;
    unsigned int nRounds = 0;
    EXPECT_GT(count_Lost(Lock, 16, milliseconds(100), nRounds), 0U);
}

TEST_P(Kills_Of_Any, Owner_Are_Told_Once_And_Hinder_Nobody)
{
    const unsigned int nRounds = Rounds(300) / (GetParam() ? 1 : 5);
    World world;
    Shared<Contest> contest;
    std::vector<Child> contenders;
    for (unsigned int i = 0; i < std::size(locks); ++i)
        contenders.emplace_back([&, i] { return contend(world.m_Names, *contest, i); });
    unsigned int nTold = 0;
    for (unsigned int nRound = 0; nRound < nRounds && !HasFailure(); ++nRound)
    {
        SCOPED_TRACE(testing::Message() << "round " << nRound);
        const bool bAsOwner = nRound % 2 == 0;
        kill_One(world.m_Names, *contest, bAsOwner);
        unsigned int locksBefore[std::size(locks)];
        for (unsigned int i = 0; i < std::size(locks); ++i)
            locksBefore[i] = contest->m_Records[i].m_nLocks;
        for (unsigned int i = 0; i < std::size(locks); ++i)
            EXPECT_TRUE(Becomes_True([&] { return contest->m_Records[i].m_nLocks > locksBefore[i] + 1; }))
                << "contender " << i << " sleeps on";
        const unsigned int nNew =
            sum(*contest, &Record::m_nAbandoned) - std::exchange(nTold, sum(*contest, &Record::m_nAbandoned));
        EXPECT_TRUE(nNew == 1 || (nNew == 0 && !bAsOwner)) << nNew << " told of an abandoned mutex";
        EXPECT_EQ(0U, sum(*contest, &Record::m_nFaults));
    }
    contest->m_bStop = true;
    for (Child& contender : contenders)
        EXPECT_EQ(0U, contender.Get_Result());
    std::printf("kills of owners: %u, %u as owners told, %u locks by the others\n", nRounds, nTold,
                sum(*contest, &Record::m_nLocks));
}

INSTANTIATE_TEST_SUITE_P(Stress, Kills_Of_Any, testing::Bool(),
                         [](const auto& with) { return with.param ? "with_waitv" : "without_waitv"; });

} // namespace stress
