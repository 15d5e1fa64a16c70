// Looks at sessions from inside, as several clients at once: who sees whose cards, when a session opens and
// closes, how PINs expire and what becomes of a worker that fails.

#include "client_thread.h"
#include "lock_guard.h"
#include "session.h"

#include <atomic>
#include <cstdio>
#include <functional>
#include <new>

namespace
{

std::atomic<int> nFaults{0};

void expect(bool bRight, const char* pWhat)
{
    if (bRight)
        return;
    std::fprintf(stderr, "session_test: not so: %s\n", pWhat);
    ++nFaults;
}

constexpr unsigned long LIMIT = 60'000; // milliseconds, after which what should come counts as missing

/// Notes what it is told.
class Notes final : public Session_Witness
{
public:
    Notes()
    {
        m_Expired.Create(nullptr, true, false);
        m_Died.Create(nullptr, true, false);
    }
    ~Notes() override = default;

    void Session_Opened(unsigned int) override { ++m_nOpened; }
    void Session_Closed(unsigned int, unsigned int nCards) override
    {
        ++m_nClosed;
        m_nCards += nCards;
    }
    void Pin_Expired(unsigned int nSession, const Lib_String& strCard) override
    {
        if (m_bShort_Of_Memory)
            throw std::bad_alloc();
        m_bRight = nSession == 31 && strCard == L"1" && Sessions::Get_Own_Number() == 31;
        m_Expired.Set();
    }
    void Watch_Died(unsigned int nSession) override
    {
        m_bRight = nSession == 31;
        m_Died.Set();
    }

    std::atomic<int> m_nOpened{0};
    std::atomic<int> m_nClosed{0};
    std::atomic<unsigned int> m_nCards{0};
    std::atomic<bool> m_bShort_Of_Memory{false};
    std::atomic<bool> m_bRight{false};
    Lib_Event m_Expired;
    Lib_Event m_Died;
};

/// Runs something on a thread of a client of that session.
class Client
{
public:
    Client(unsigned int nSession, std::function<void()> Work) : m_Work(std::move(Work))
    {
        Lib_Handle Token;
        Token.Attach(Lib_Create_Session_Token(nSession, TOKEN_QUERY | TOKEN_IMPERSONATE));
        Lib_Result result;
        expect(Start_Client_Thread(
                   Token,
                   [](void* pWork)
                   {
                       (*static_cast<std::function<void()>*>(pWork))();
                       return 0U;
                   },
                   &m_Work, m_Thread, result),
               "a client has a thread");
    }
    Client(const Client&) = delete;
    Client& operator=(const Client&) = delete;
    ~Client() { expect(m_Thread.Wait_Until_Object_0(LIMIT), "a client comes to his end"); }

private:
    std::function<void()> m_Work;
    Lib_Synchro m_Thread;
};

Request request(Operation operation, const wchar_t* pCard, const wchar_t* pPin = L"")
{
    Request Result;
    Result.m_Operation = operation;
    Result.m_strCard = pCard;
    Result.m_Pin = Lib_String(pPin);
    return Result;
}

Desk_Rules rules(unsigned int nSeconds) { return {3, std::chrono::seconds(nSeconds), Clock(0, false)}; }

bool serve(Sessions::Visit& Visit, Operation operation, const wchar_t* pText, const wchar_t* pPin = L"")
{
    const Answer Result = Visit.Serve(request(operation, L"1", pPin));
    return Result.m_strText == pText;
}

void test_Expiry()
{
    Notes notes;
    Sessions All(rules(1), notes);
    Client(31,
           [&]
           {
               Sessions::Visit Visit(All);
               Visit.Serve(request(Operation::store, L"1", L"1234"));
               expect(notes.m_Expired.Wait_Until_Object_0(LIMIT), "an expired PIN is told");
               expect(notes.m_bRight, "of the right card, by a worker of the session");
               expect(serve(Visit, Operation::check, L"the PIN has expired", L"1234"), "it is refused");
               expect(serve(Visit, Operation::check, L"the PIN has expired", L"0000"), "and no try counts");
               expect(Visit.Serve(request(Operation::store, L"1", L"4321")).m_bDone,
                      "the name is free again");
               expect(serve(Visit, Operation::check, L"PIN right", L"4321"), "for a new PIN");
           });
    expect(notes.m_nOpened == 1 && notes.m_nClosed == 1 && notes.m_nCards == 1, "the session has closed");
}

/// The worker dies while it tells of the first PIN. It took that from memory before.
void test_Death()
{
    Notes notes;
    notes.m_bShort_Of_Memory = true;
    Sessions All(rules(1), notes);
    Client(31,
           [&]
           {
               Sessions::Visit Visit(All);
               Visit.Serve(request(Operation::store, L"1", L"1234"));
               expect(notes.m_Died.Wait_Until_Object_0(LIMIT) && notes.m_bRight,
                      "the worker's death is told");
               expect(serve(Visit, Operation::check, L"the PIN has expired", L"1234"),
                      "PINs expire without a worker, too");
               expect(Visit.Serve(request(Operation::leave, L"")).m_strText ==
                          L"left as the last one, 1 card let go",
                      "the session closes as others do");
               expect(Visit.Is_Over(), "and the stay is over");
           });
}

/// The sessions end while a worker may be on its way to tell of its death.
void test_Death_At_The_End()
{
    for (int i = 0; i < 3; ++i)
    {
        Notes notes;
        notes.m_bShort_Of_Memory = true;
        Desk_Rules Rules = rules(1);
        Sessions All(Rules, notes);
        Client(31,
               [&]
               {
                   Sessions::Visit Visit(All);
                   Visit.Serve(request(Operation::store, L"1", L"1234"));
                   if (i != 0)
                       notes.m_Died.Wait(i == 1 ? 1000 : 1001);
               });
    }
}

/// A full table gives the places of expired cards, and theirs alone, to new ones.
void test_Places()
{
    constexpr int PLACES = 50'000;
    Desk desk(rules(0));
    Request Issue = request(Operation::issue, L"", L"1234");
    Issue.m_strSeries = L"K";
    desk.Serve(Issue);
    Issue.m_Until = 1.0; // long ago
    for (int i = 1; i < PLACES; ++i)
        desk.Serve(Issue);
    expect(desk.Count_Cards() == PLACES, "expired cards stay as long as there is room");
    expect(desk.Serve(request(Operation::store, L"1", L"1234")).m_bDone && desk.Count_Cards() == 2,
           "then they go");
    expect(desk.Serve(request(Operation::check, L"K0", L"1234")).m_bDone, "and the others stay");
}

/// Clients come and go; each round leaves a card in the session's table, and the table goes when nobody is in
/// it. All that were opened are closed, and no card is seen elsewhere or counted twice.
void test_Many_Clients()
{
    constexpr int ROUNDS = 200;
    Notes notes;
    std::atomic<unsigned int> nStored{0};
    {
        Sessions All(rules(100), notes);
        const auto Work = [&]
        {
            const unsigned int nOwn = Sessions::Get_Own_Number();
            const Lib_String strOwner = Lib_Int_To_String(static_cast<int>(nOwn));
            for (int i = 0; i < ROUNDS; ++i)
            {
                Sessions::Visit Visit(All);
                Request Issue = request(Operation::issue, L"", L"1234");
                Issue.m_strSeries = L"K";
                Issue.m_strOwner = strOwner;
                nStored += Visit.Serve(Issue).m_bDone ? 1U : 0U;
                const Answer Shown = Visit.Serve(request(Operation::show, L"K0"));
                expect(Shown.m_bDone && Shown.m_strText.Find(strOwner + L", ") == 0,
                       "a card is the session's own");
            }
        };
        Client One(50, Work);
        Client Two(51, Work);
        Client Three(50, Work);
        Client Four(52, Work);
        Client Five(51, Work);
    }
    expect(notes.m_nOpened == notes.m_nClosed && notes.m_nOpened >= 3, "as many sessions close as open");
    expect(nStored == 5 * ROUNDS && notes.m_nCards == nStored, "each card is let go once");
}

} // namespace

int main()
{
    test_Expiry();
    test_Death();
    test_Death_At_The_End();
    test_Many_Clients();
    test_Places();
    expect(Sessions::Get_Own_Number() != 31, "a thread's session is no other thread's");
    return nFaults == 0 ? 0 : 1;
}
