// A process is killed after each of its instructions within an operation, or, in the short form, after some
// of them. Whatever the moment, those who are left find the objects as before the operation or as after it.

#include "world.h"

#include <cstdio>
#include <memory>

namespace stress
{

namespace
{

struct Case
{
    Child::Work m_Victim;                        ///< marks where the operation begins and ends
    std::function<void()> m_AtMark;              ///< done when the victim is about to begin
    std::function<void()> m_Wake;                ///< lets the victim go on that sleeps in the operation
    std::function<void(bool bFinished)> m_Check; ///< after the victim's death
};

struct Operation
{
    const char* m_pName;
    std::function<Case()> m_Make;
};

void PrintTo(const Operation& operation, std::ostream* out) { *out << operation.m_pName; }

// What the layer owns up to: a mutex of a wait for all reported as abandoned though the wait took nothing.
unsigned int nOverReports = 0;

using World_Pointer = std::shared_ptr<World>;

Child::Work marked(const World_Pointer& pWorld, const Deed& deed, const Deed& before = nullptr)
{
    return [pWorld, deed, before]
    {
        const Objects objects(pWorld->m_Names);
        Warm_Up(pWorld->m_Names);
        if (before)
            before(objects);
        Stepped_Child::Mark();
        const unsigned int nResult = deed(objects);
        Stepped_Child::Mark();
        return nResult;
    };
}

// ---- Events ----------------------------------------------------------------------------------------------

enum class Kind
{
    Auto,
    Manual
};

/// Each further signal releases a sleeper.
void check_Further_Signals(World& world)
{
    for (unsigned int nEnded = world.Count_Ended(); nEnded < world.m_Sleepers.size();)
    {
        SetEvent(world.m_Own.m_A.get());
        const unsigned int nFormer = std::exchange(nEnded, nEnded + 1);
        // Another test's kill may ring at the gate just now, and a sleeper be on its round.
        ASSERT_TRUE(Becomes_True([&] { return (nEnded = world.Count_Ended()) > nFormer; }))
            << "a signal released nobody";
    }
}

void check_Set(World& world, Kind kind, bool bFinished)
{
    const auto nSleepers = static_cast<unsigned int>(world.m_Sleepers.size());
    const unsigned int nReleased = world.Count_Ended();
    const bool bSet = world.m_Own.m_A.Take();
    if (kind == Kind::Manual)
        EXPECT_TRUE(nReleased == (bSet ? nSleepers : 0)) << bSet << ' ' << nReleased;
    else
        EXPECT_TRUE(nReleased + bSet <= 1 && !(bSet && nSleepers > 0)) << bSet << ' ' << nReleased;
    EXPECT_TRUE(!bFinished || bSet || nReleased == 1) << "nothing came of it";
    check_Further_Signals(world);
}

void check_Pulse(World& world, Kind kind, bool bFinished)
{
    const auto nSleepers = static_cast<unsigned int>(world.m_Sleepers.size());
    const unsigned int nReleased = world.Count_Ended();
    EXPECT_FALSE(world.m_Own.m_A.Take());
    const unsigned int nAll = kind == Kind::Manual ? nSleepers : std::min(nSleepers, 1U);
    EXPECT_TRUE(nReleased == nAll || (nReleased == 0 && !bFinished)) << nReleased;
    check_Further_Signals(world);
}

Case change_Event(BOOL (*change)(HANDLE), void (*check)(World&, Kind, bool), Kind kind,
                  unsigned int nSleepers)
{
    const auto pWorld = std::make_shared<World>(kind == Kind::Manual);
    const auto start_Sleepers = [pWorld, nSleepers]
    {
        for (unsigned int i = 0; i < nSleepers; ++i)
            pWorld->Start_Sleeper(i == 0 ? Wait_A : Wait_Any_Event);
    };
    return {marked(pWorld, [change](const Objects& objects) { return change(objects.m_A.get()) ? 0U : 1U; }),
            start_Sleepers, nullptr, [=](bool bFinished) { check(*pWorld, kind, bFinished); }};
}

/// The victim waits for a set event.
Case take_Event(unsigned int (*wait)(const Objects&))
{
    const auto pWorld = std::make_shared<World>();
    SetEvent(pWorld->m_Own.m_A.get());
    return {marked(pWorld, wait), nullptr, nullptr,
            [pWorld](bool bFinished)
            {
                EXPECT_FALSE(pWorld->m_Own.m_A.Take() && bFinished);
                SetEvent(pWorld->m_Own.m_A.get());
                EXPECT_TRUE(pWorld->m_Own.m_A.Take());
            }};
}

/// The victim sleeps on an event, before another, until there is a signal.
Case sleep_On_Event(unsigned int (*wait)(const Objects&))
{
    const auto pWorld = std::make_shared<World>();
    return {marked(pWorld, wait), nullptr,
            [pWorld]
            {
                pWorld->Start_Sleeper(Wait_A);
                SetEvent(pWorld->m_Own.m_A.get());
            },
            [pWorld](bool bFinished)
            {
                EXPECT_FALSE(bFinished && pWorld->Count_Ended() > 0) << "one signal for two";
                check_Set(*pWorld, Kind::Auto, false);
            }};
}

// ---- Mutexes ---------------------------------------------------------------------------------------------

Case lock_Free_Mutex(unsigned int (*lock)(const Objects&))
{
    const auto pWorld = std::make_shared<World>();
    return {marked(pWorld, lock), nullptr, nullptr,
            [pWorld](bool bFinished)
            {
                EXPECT_TRUE(pWorld->Lock_Soon() || !bFinished) << "an owner's death was not told";
                EXPECT_FALSE(pWorld->Lock_Soon());
            }};
}

/// The test has the mutex until the victim sleeps; then one more sleeps and the mutex is released.
Case lock_Owned_Mutex(unsigned int (*lock)(const Objects&))
{
    const auto pWorld = std::make_shared<World>();
    pWorld->m_Own.m_Mutex.Wait();
    const auto release = [pWorld, lock]
    {
        pWorld->Start_Sleeper(Lock_And_Release(lock));
        ReleaseMutex(pWorld->m_Own.m_Mutex.get());
    };
    return {marked(pWorld, lock), nullptr, release,
            [pWorld, release](bool bFinished)
            {
                const bool bWoken = !pWorld->m_Sleepers.empty();
                if (!bWoken)
                    release();
                pWorld->Expect_All_Locked(bWoken ? 1 : 0);
                const bool bAbandoned = pWorld->Lock_Soon();
                EXPECT_TRUE(!bFinished || bAbandoned || pWorld->m_Sleepers[0].Get_Result() == 0x80);
            }};
}

Case release_Mutex(unsigned int nSleepers)
{
    const auto pWorld = std::make_shared<World>();
    const auto start_Sleepers = [pWorld, nSleepers]
    {
        for (unsigned int i = 0; i < nSleepers; ++i)
            pWorld->Start_Sleeper(Lock_And_Release(i == 0 ? Lock : Lock_Any));
    };
    return {marked(
                pWorld, [](const Objects& objects) { return ReleaseMutex(objects.m_Mutex.get()) ? 0U : 1U; },
                Lock),
            start_Sleepers, nullptr,
            [pWorld](bool bFinished)
            {
                pWorld->Expect_All_Locked(bFinished ? 0 : 1);
                const bool bAbandoned = pWorld->Lock_Soon();
                EXPECT_FALSE(bAbandoned && (bFinished || !pWorld->m_Sleepers.empty()));
            }};
}

// ---- Waits for all ---------------------------------------------------------------------------------------

unsigned int take_All(const Objects& objects)
{
    return Wait_For_All(Forever, objects.m_A, objects.m_Mutex, objects.m_B);
}

void check_All_Or_None(World& world, bool bFinished)
{
    const bool bA = world.m_Own.m_A.Take();
    const bool bB = world.m_Own.m_B.Take();
    const bool bAbandoned = world.Lock_Soon();
    EXPECT_EQ(bA, bB);
    EXPECT_TRUE(bAbandoned || bA) << "the events were taken, the mutex was not";
    EXPECT_TRUE(!bFinished || (bAbandoned && !bA));
    nOverReports += bAbandoned && bA;
}

Case take_All_Available()
{
    const auto pWorld = std::make_shared<World>();
    SetEvent(pWorld->m_Own.m_A.get());
    SetEvent(pWorld->m_Own.m_B.get());
    return {marked(pWorld, take_All), nullptr, nullptr,
            [pWorld](bool bFinished) { check_All_Or_None(*pWorld, bFinished); }};
}

Case take_All_When_Complete()
{
    const auto pWorld = std::make_shared<World>();
    SetEvent(pWorld->m_Own.m_A.get());
    const auto pComplete = std::make_shared<bool>(false);
    const auto complete = [pWorld, pComplete]
    {
        if (!std::exchange(*pComplete, true))
            SetEvent(pWorld->m_Own.m_B.get());
    };
    return {marked(pWorld, take_All), nullptr, complete,
            [pWorld, complete](bool bFinished)
            {
                complete();
                check_All_Or_None(*pWorld, bFinished);
            }};
}

// ---- Names -----------------------------------------------------------------------------------------------

Case make_Owned()
{
    const std::u16string strName = New_Name();
    return {[strName]
            {
                Stepped_Child::Mark();
                const Object mutex = Mutex(strName, true);
                Stepped_Child::Mark();
                return 0U;
            },
            nullptr, nullptr, [strName](bool) { Expect_Name_Is_Free(strName); }};
}

/// Another process tries to open the mutex all the time, and waits for it.
Case make_Owned_While_Another_Opens()
{
    const std::u16string strName = New_Name();
    const auto pOpener = std::make_shared<Child>(
        [strName]
        {
            Object mutex;
            while (!(mutex = Open_Mutex(strName)))
                if (GetLastError() != 2)
                    return GetLastError();
            const DWORD nResult = mutex.Wait();
            return ReleaseMutex(mutex.get()) ? nResult : 0xFFU;
        });
    Case result = make_Owned();
    result.m_Victim = [strName]
    {
        Stepped_Child::Mark();
        const Object mutex = Mutex(strName, true);
        Stepped_Child::Mark();
        return 0U;
    };
    result.m_Check = [strName, pOpener](bool)
    {
        {
            const Object mutex = Mutex(strName);
            const unsigned int nResult = pOpener->Get_Result();
            EXPECT_TRUE(nResult == 0 || nResult == 0x80) << nResult;
        }
        Expect_Name_Is_Free(strName);
    };
    return result;
}

Case close_Last(bool bOwned)
{
    const std::u16string strName = New_Name();
    return {[strName, bOwned]
            {
                Object mutex = Mutex(strName, bOwned);
                Stepped_Child::Mark();
                mutex.Close();
                Stepped_Child::Mark();
                return 0U;
            },
            nullptr, nullptr, [strName](bool) { Expect_Name_Is_Free(strName); }};
}

Case open_To_Close()
{
    const std::u16string strName = New_Name();
    const auto pMutex = std::make_shared<Object>(Mutex(strName));
    return {[strName]
            {
                Stepped_Child::Mark();
                Object mutex = Open_Mutex(strName);
                mutex.Close();
                Stepped_Child::Mark();
                return 0U;
            },
            nullptr, nullptr,
            [strName, pMutex](bool)
            {
                const Object again = Open_Mutex(strName);
                EXPECT_TRUE(again) << GetLastError();
                EXPECT_TRUE(pMutex->Take() && ReleaseMutex(again.get())) << "not the same object any more";
            }};
}

// ---- The killer ------------------------------------------------------------------------------------------

const Operation operations[] = {
    {"set_with_none_asleep", [] { return change_Event(SetEvent, check_Set, Kind::Auto, 0); }},
    {"set_with_one_asleep", [] { return change_Event(SetEvent, check_Set, Kind::Auto, 1); }},
    {"set_with_two_asleep", [] { return change_Event(SetEvent, check_Set, Kind::Auto, 2); }},
    {"set_manual_with_two_asleep", [] { return change_Event(SetEvent, check_Set, Kind::Manual, 2); }},
    {"pulse_with_two_asleep", [] { return change_Event(PulseEvent, check_Pulse, Kind::Auto, 2); }},
    {"pulse_manual_with_two_asleep", [] { return change_Event(PulseEvent, check_Pulse, Kind::Manual, 2); }},
    {"wait_for_a_set_event", [] { return take_Event(Wait_A); }},
    {"wait_for_any_one_set", [] { return take_Event(Wait_Any_Event); }},
    {"wait_until_set", [] { return sleep_On_Event(Wait_A); }},
    {"wait_for_any_until_set", [] { return sleep_On_Event(Wait_Any_Event); }},
    {"lock", [] { return lock_Free_Mutex(Lock); }},
    {"lock_among_any", [] { return lock_Free_Mutex(Lock_Any); }},
    {"lock_when_released", [] { return lock_Owned_Mutex(Lock); }},
    {"lock_among_any_when_released", [] { return lock_Owned_Mutex(Lock_Any); }},
    {"lock_among_all_when_released", [] { return lock_Owned_Mutex(Lock_All); }},
    {"release_with_none_asleep", [] { return release_Mutex(0); }},
    {"release_with_one_asleep", [] { return release_Mutex(1); }},
    {"release_with_two_asleep", [] { return release_Mutex(2); }},
    {"wait_for_all_available", take_All_Available},
    {"wait_for_all_until_complete", take_All_When_Complete},
    {"create_owned", make_Owned},
    {"create_owned_while_another_opens", make_Owned_While_Another_Opens},
    {"close_last", [] { return close_Last(false); }},
    {"close_last_as_owner", [] { return close_Last(true); }},
    {"open_to_close", open_To_Close},
};

enum class End
{
    Killed,
    Finished,
    Asleep ///< for good
};

End run_And_Kill(const Case& test, unsigned long nSteps)
{
    Stepped_Child victim(test.m_Victim);
    if (test.m_AtMark)
        test.m_AtMark();
    auto stop = victim.Move(nSteps);
    if (stop == Stepped_Child::Stop::Asleep && nSteps > 0 && test.m_Wake)
    {
        test.m_Wake();
        stop = victim.Move(nSteps);
    }
    victim.Kill();
    if (stop == Stepped_Child::Stop::Asleep)
        return nSteps > 0 ? End::Asleep : End::Killed;
    return stop == Stepped_Child::Stop::Step ? End::Killed : End::Finished;
}

class Kill_At_Each_Instruction : public testing::TestWithParam<Operation>
{
protected:
    static unsigned long Length()
    {
        unsigned long nLeft = ~0UL;
        Stepped_Child(GetParam().m_Make().m_Victim).Move(nLeft);
        return ~0UL - nLeft;
    }
};

} // namespace

TEST_P(Kill_At_Each_Instruction, Leaves_All_Or_Nothing)
{
    if (!Stepped_Child::Is_Permitted())
        GTEST_SKIP() << "no process may be traced here";
    const unsigned long nStride = Is_Long() ? 1 : Length() / 6 + 1;
    unsigned long nKills = 0;
    for (unsigned long nSteps = Random_Below(static_cast<unsigned int>(nStride)); !HasFailure();
         nSteps += nStride)
    {
        SCOPED_TRACE(testing::Message() << "killed after instruction " << nSteps);
        const Case test = GetParam().m_Make();
        const End end = run_And_Kill(test, nSteps);
        test.m_Check(end == End::Finished);
        ++nKills;
        if (end != End::Killed)
            break;
    }
    std::printf("%-34s %6lu kills, %u over-reports\n", GetParam().m_pName, nKills,
                std::exchange(nOverReports, 0));
}

INSTANTIATE_TEST_SUITE_P(Operation, Kill_At_Each_Instruction, testing::ValuesIn(operations),
                         [](const auto& operation) { return std::string(operation.param.m_pName); });

} // namespace stress
