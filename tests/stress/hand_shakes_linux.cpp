// Each signal of an event is answered once, however the answerers wait for it.

#include "child.h"
#include "named_objects.h"
#include "platform/kernel/named_calls.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <thread>
#include <vector>

#include <unistd.h>

namespace stress
{

namespace
{

struct Names
{
    std::u16string m_strAsk = New_Name();
    std::u16string m_strSecond = New_Name();
    std::u16string m_strOther = New_Name();
    std::u16string m_strOn = New_Name();
    std::u16string m_strAnswer = New_Name();
};

struct Events
{
    explicit Events(const Names& names)
        : m_Ask(Event(names.m_strAsk)), m_Second(Event(names.m_strSecond)), m_Other(Event(names.m_strOther)),
          m_On(Event(names.m_strOn, true, true)), m_Answer(Event(names.m_strAnswer)),
          m_Local(CreateEventW(nullptr, FALSE, FALSE, nullptr))
    {
    }

    Object m_Ask;
    Object m_Second;
    Object m_Other; ///< never set
    Object m_On;    ///< always set
    Object m_Answer;
    Object m_Local; ///< the process's own
};

enum class Asking
{
    One,
    Both,   ///< the second event, too; which one is first changes
    In_Turn ///< one or the other; a thread of the answerer passes the second on by the local event
};

struct Form
{
    const char* m_pName;
    Asking m_Asking;
    unsigned int m_nAnswerers;
    bool (*m_Wait)(const Events&); ///< whether it took what was asked for
};

bool wait_One(const Events& events) { return events.m_Ask.Wait() == 0; }

bool wait_Any(const Events& events)
{
    return Wait_For_Any(Forever, events.m_Other, events.m_Local, events.m_Ask) == 2;
}

bool wait_All(const Events& events)
{
    return Wait_For_All(Forever, events.m_Ask, events.m_On, events.m_Second) == 0;
}

bool wait_One_Shortly(const Events& events) { return events.m_Ask.Wait(Random_Below(3)) == 0; }

bool wait_Any_Shortly(const Events& events)
{
    return Wait_For_Any(Random_Below(3), events.m_Other, events.m_Ask) == 1;
}

bool wait_All_Shortly(const Events& events)
{
    return Wait_For_All(Random_Below(3), events.m_Second, events.m_Ask) == 0;
}

bool wait_Any_Kind(const Events& events) { return Wait_For_Any(Forever, events.m_Local, events.m_Ask) <= 1; }

constexpr Form forms[] = {
    {"one", Asking::One, 1, wait_One},
    {"any", Asking::One, 1, wait_Any},
    {"all", Asking::Both, 1, wait_All},
    {"one with time-outs", Asking::One, 2, wait_One_Shortly},
    {"any with time-outs", Asking::One, 2, wait_Any_Shortly},
    {"all with time-outs", Asking::Both, 2, wait_All_Shortly},
    {"local and named", Asking::In_Turn, 1, wait_Any_Kind},
    {"one, by three", Asking::One, 3, wait_One},
    {"any, by three", Asking::One, 3, wait_Any},
    {"all, by three", Asking::Both, 3, wait_All},
};

class Game
{
public:
    explicit Game(const Form& form) : m_Form(form)
    {
        for (unsigned int i = 0; i < form.m_nAnswerers; ++i)
            m_Answerers.push_back(start_Answerer());
    }

    void Ask_And_Await_Answer()
    {
        ask();
        ASSERT_EQ(WAIT_OBJECT_0, m_Events.m_Answer.Wait(5000)) << "no answer";
        ASSERT_EQ(m_nAsked, *m_nAnswers) << "answered more than once";
    }

    /// One who may answer is killed meanwhile; what he took goes with him, and nothing else.
    void Ask_And_Kill()
    {
        ask();
        for (unsigned int i = Random_Below(20000); i > 0; --i)
            std::atomic_signal_fence(std::memory_order_seq_cst);
        m_Answerers[Random_Below(m_Form.m_nAnswerers)] = start_Answerer();
        if (m_Events.m_Answer.Wait(30) == WAIT_OBJECT_0)
            return;
        for (Child& answerer : m_Answerers)
            ASSERT_TRUE(answerer.Settle());
        if (m_Events.m_Answer.Take())
            return;
        const bool bAsk = m_Events.m_Ask.Take();
        const bool bSecond = m_Events.m_Second.Take();
        EXPECT_FALSE(bAsk || bSecond) << "set, and those who wait for it asleep: " << bAsk << bSecond;
        ++m_nGone;
    }

    unsigned int Get_Gone() const { return m_nGone; }

private:
    void ask()
    {
        const bool bSecondFirst = m_nAsked++ % 2 != 0;
        if (m_Form.m_Asking == Asking::One || !bSecondFirst)
            SetEvent(m_Events.m_Ask.get());
        if (m_Form.m_Asking == Asking::Both || (m_Form.m_Asking == Asking::In_Turn && bSecondFirst))
            SetEvent(m_Events.m_Second.get());
        if (m_Form.m_Asking == Asking::Both && bSecondFirst)
            SetEvent(m_Events.m_Ask.get());
    }

    Child start_Answerer()
    {
        return Child([this] { return answer(); });
    }

    unsigned int answer()
    {
        const Events events(m_Names);
        std::thread second;
        if (m_Form.m_Asking == Asking::In_Turn)
            second = std::thread(
                [&]
                {
                    while (events.m_Second.Wait() == 0)
                        SetEvent(events.m_Local.get());
                });
        for (;;)
        {
            if (!m_Form.m_Wait(events))
                continue;
            ++*m_nAnswers;
            SetEvent(events.m_Answer.get());
        }
    }

    const Form& m_Form;
    Names m_Names;
    Events m_Events{m_Names};
    Shared<std::atomic<unsigned int>> m_nAnswers;
    std::vector<Child> m_Answerers;
    unsigned int m_nAsked = 0;
    unsigned int m_nGone = 0;
};

class Hand_Shakes : public testing::Test
{
protected:
    void TearDown() override { kernel::named_calls = m_Calls; }

    static void Play(const char* pHow, unsigned int nRounds, void (Game::*round)())
    {
        for (const Form& form : forms)
        {
            SCOPED_TRACE(form.m_pName);
            Game game(form);
            unsigned int nRound = 0;
            for (; nRound < nRounds && !HasFailure(); ++nRound)
                (game.*round)();
            std::printf("hand-shakes, %s, wait for %s: %u, %u went with a killed one\n", pHow, form.m_pName,
                        nRound, game.Get_Gone());
        }
    }

private:
    const kernel::Named_Calls m_Calls = kernel::named_calls;
};

} // namespace

TEST_F(Hand_Shakes, Are_Answered_Once) { Play("plain", Rounds(2500), &Game::Ask_And_Await_Answer); }

TEST_F(Hand_Shakes, Are_Answered_Once_Without_A_Wait_For_Several_Words)
{
    kernel::named_calls.futex_waitv = [](futex_waitv*, unsigned int, const timespec*)
    {
        errno = ENOSYS;
        return -1L;
    };
    Play("fallback", Rounds(1000) / 10, &Game::Ask_And_Await_Answer);
}

TEST_F(Hand_Shakes, Are_Lost_By_No_Kill_But_Of_The_One_Who_Took_Them)
{
    Play("kills", Rounds(200) / 10, &Game::Ask_And_Kill);
}

} // namespace stress
