#include "desk.h"

#include "lock_guard.h"

#include <algorithm>
#include <iterator>
#include <new>

namespace
{

constexpr unsigned int LISTED_NAMES = 6;

// No client of a session takes the memory of the others'.
constexpr std::size_t MOST_CARDS = 50'000;
constexpr std::size_t MOST_SERIES = 1'000;

Answer make_Answer(bool bDone, const Lib_String& strText) { return Answer{bDone, strText}; }

/// Plain PINs live as long as the comparison. None is empty, so one that comes out so could not be
/// deciphered, which is no wrong PIN.
bool is_Same_Pin(const Lib_Protected_String& Left, const Lib_Protected_String& Right)
{
    const Lib_String strLeft = Left.Get_String();
    const Lib_String strRight = Right.Get_String();
    if (strLeft.Is_Empty() || strRight.Is_Empty())
        throw std::bad_alloc();
    return strLeft == strRight;
}

Answer no_Such_Card() { return make_Answer(false, L"no such card"); }
Answer no_Room() { return make_Answer(false, L"the table is full"); }

} // namespace

/// A lock that could not be made is found missing by who takes it.
Desk::Desk(const Desk_Rules& Rules) : m_Rules(Rules)
{
    m_Lock.Create(nullptr, false);
    m_Alarm.Create(nullptr, false, false);
}

Answer Desk::Serve(const Request& request)
{
    const Lock_Guard Guard(m_Lock);
    return answer(request);
}

Answer Desk::answer(const Request& request)
{
    switch (request.m_Operation)
    {
    case Operation::store:
        return store(request);
    case Operation::issue:
        return issue(request);
    case Operation::check:
        return check(request);
    case Operation::change:
        return change(request);
    case Operation::unblock:
        return unblock(request);
    case Operation::remove:
        return remove(request);
    case Operation::show:
        return show(request);
    case Operation::list:
        return list(request);
    case Operation::leave:
        break;
    }
    return Answer();
}

unsigned int Desk::Count_Cards() const
{
    const Lock_Guard Guard(m_Lock);
    return static_cast<unsigned int>(m_Cards.size());
}

unsigned int Desk::Count_Blocked() const
{
    const Lock_Guard Guard(m_Lock);
    return static_cast<unsigned int>(std::count_if(
        m_Cards.begin(), m_Cards.end(), [](const auto& Entry) { return Entry.second.m_nTries_Left == 0; }));
}

unsigned long Desk::Get_Time_To_Expiry() const
{
    const Lock_Guard Guard(m_Lock);
    if (m_Expiries.empty())
        return INFINITE;
    const auto left =
        std::chrono::ceil<std::chrono::milliseconds>(m_Expiries.begin()->first - Steady_Clock::now());
    return static_cast<unsigned long>(std::max<long long>(left.count(), 0));
}

std::vector<Lib_String> Desk::Expire_Pins()
{
    const Lock_Guard Guard(m_Lock);
    std::vector<Lib_String> Names;
    const auto now = Steady_Clock::now();
    while (!m_Expiries.empty() && m_Expiries.begin()->first <= now)
    {
        const Lib_String strName = m_Expiries.begin()->second;
        Names.push_back(strName);
        m_Cards[strName].m_Pin = Lib_Protected_String();
        m_Expiries.erase(m_Expiries.begin());
    }
    return Names;
}

Answer Desk::store(const Request& request)
{
    const auto found = m_Cards.find(request.m_strCard);
    if (found != m_Cards.end() && !found->second.Has_Expired())
        return make_Answer(false, L"the card is taken");
    if (found == m_Cards.end() && !make_Room())
        return no_Room();
    enter(request.m_strCard, request);
    return make_Answer(true, L"stored for " + request.m_strOwner);
}

Answer Desk::issue(const Request& request)
{
    if (!make_Room() || (m_Last_Names.size() >= MOST_SERIES && !m_Last_Names.contains(request.m_strSeries)))
        return no_Room();
    const Lib_String strName = next_Name(request.m_strSeries);
    enter(strName, request);
    return make_Answer(true, strName + L" issued to " + request.m_strOwner);
}

Answer Desk::check(const Request& request)
{
    Answer Result = make_Answer(true, L"PIN right");
    verify(request, Result);
    return Result;
}

Answer Desk::change(const Request& request)
{
    Answer Result = make_Answer(true, L"PIN changed");
    if (!verify(request, Result))
        return Result;
    if (is_Same_Pin(request.m_New_Pin, request.m_Pin))
        return make_Answer(false, L"the new PIN is the old one");
    const Card& card = m_Cards.find(request.m_strCard)->second;
    enter(request.m_strCard, card.m_strOwner, request.m_New_Pin, card.m_Badge, card.m_Until);
    return Result;
}

Answer Desk::unblock(const Request& request)
{
    const auto found = m_Cards.find(request.m_strCard);
    if (found == m_Cards.end())
        return no_Such_Card();
    if (found->second.m_nTries_Left != 0)
        return make_Answer(false, L"the card is not blocked");
    found->second.m_nTries_Left = m_Rules.m_nTries;
    return make_Answer(true, L"unblocked, " + describe_Tries(found->second));
}

Answer Desk::remove(const Request& request)
{
    Answer Result = make_Answer(true, L"removed");
    if (!verify(request, Result))
        return Result;
    take_Out(m_Cards.find(request.m_strCard));
    return Result;
}

Answer Desk::show(const Request& request) const
{
    const auto found = m_Cards.find(request.m_strCard);
    return found == m_Cards.end() ? no_Such_Card() : make_Answer(true, describe(found->second));
}

Lib_String Desk::describe(const Card& card) const
{
    Lib_String strBadge(L"none");
    if (card.m_Badge.Get_Size() != 0)
        Lib_Write_Buffer(card.m_Badge.Get_Size(), card.m_Badge.Get_Ptr(), strBadge, L':');
    Lib_String strText;
    strText.Format(L"%s, badge %s, %s", card.m_strOwner.GetW(), strBadge.GetW(), describe_Tries(card).GetW());
    if (card.m_Until)
        strText += L", until " + m_Rules.m_Clock.Write(Lib_DateTime(*card.m_Until, false));
    if (!card.Has_Live_Pin())
        strText += L", PIN expired";
    return strText;
}

Answer Desk::list(const Request& request) const
{
    unsigned int nCount = 0;
    Lib_String strNames;
    for (const auto& [strName, card] : m_Cards)
    {
        if (!request.m_strOwner.Is_Empty() && card.m_strOwner.Find(request.m_strOwner) < 0)
            continue;
        if (nCount++ < LISTED_NAMES)
            strNames += (nCount == 1 ? L": " : L", ") + strName;
    }
    Lib_String strText;
    strText.Format(L"%u %s%s", nCount, nCount == 1 ? L"card" : L"cards",
                   nCount == 0 ? L"" : static_cast<const wchar_t*>(strNames));
    if (nCount > LISTED_NAMES)
        strText += L" ...";
    return make_Answer(true, strText);
}

/// Whether there is room for another card. Expired ones are kept, for those who ask, until it is needed.
bool Desk::make_Room()
{
    if (m_Cards.size() < MOST_CARDS)
        return true;
    for (auto where = m_Cards.begin(); where != m_Cards.end();)
        where = where->second.Has_Expired() ? take_Out(where) : std::next(where);
    return m_Cards.size() < MOST_CARDS;
}

void Desk::enter(const Lib_String& strName, const Request& request)
{
    enter(strName, request.m_strOwner, request.m_Pin, request.m_Badge, request.m_Until);
}

/// In the place of the card of that name, if there is one. What can fail comes first, so the table has the
/// old card or the new one. PINs live equally long, so the new one is the first to expire only when it is the
/// only one.
void Desk::enter(const Lib_String& strName, const Lib_String& strOwner, const Lib_Protected_String& Pin,
                 const Lib_Buffer& Badge, const std::optional<double>& Until)
{
    Cards New;
    Expiries New_Expiry;
    Card& card = New[strName];
    card = Card{strOwner, Pin, Badge, Until, m_Rules.m_nTries, std::nullopt};
    if (!is_Same_Pin(card.m_Pin, Pin) || card.m_Badge.Get_Size() != Badge.Get_Size())
        throw std::bad_alloc(); // these copies fail without a word
    if (m_Rules.m_Lives != std::chrono::seconds::zero())
    {
        card.m_Pin_Expires = Steady_Clock::now() + m_Rules.m_Lives;
        New_Expiry.emplace(*card.m_Pin_Expires, strName);
    }
    const auto old = m_Cards.find(strName);
    if (old != m_Cards.end())
        take_Out(old);
    m_Cards.merge(New);
    m_Expiries.merge(New_Expiry);
    if (m_Expiries.size() == 1)
        m_Alarm.Set();
}

/// The result is the place behind it.
Desk::Cards::iterator Desk::take_Out(Cards::iterator where)
{
    if (where->second.m_Pin_Expires)
        m_Expiries.erase({*where->second.m_Pin_Expires, where->first});
    return m_Cards.erase(where);
}

/// Names that clients chose themselves are passed over.
Lib_String Desk::next_Name(const Lib_String& strSeries)
{
    Lib_String& strLast = m_Last_Names.try_emplace(strSeries, strSeries).first->second;
    do
        strLast = Lib_Increment_String(strLast);
    while (m_Cards.contains(strLast));
    return strLast;
}

/// Whether the card exists, neither it nor its PIN is expired, it isn't blocked, and the PIN is right;
/// otherwise the refusal is ready to be sent.
bool Desk::verify(const Request& request, Answer& Refusal)
{
    const auto found = m_Cards.find(request.m_strCard);
    if (found == m_Cards.end())
    {
        Refusal = no_Such_Card();
        return false;
    }
    Card& card = found->second;
    if (card.Is_Over())
    {
        Refusal = make_Answer(false, L"the card has expired");
        return false;
    }
    if (!card.Has_Live_Pin())
    {
        Refusal = make_Answer(false, L"the PIN has expired");
        return false;
    }
    if (card.m_nTries_Left == 0)
    {
        Refusal = make_Answer(false, L"the card is blocked");
        return false;
    }
    if (!is_Same_Pin(card.m_Pin, request.m_Pin))
    {
        --card.m_nTries_Left;
        Refusal = make_Answer(false, L"PIN wrong, " + describe_Tries(card));
        return false;
    }
    card.m_nTries_Left = m_Rules.m_nTries;
    return true;
}

Lib_String Desk::describe_Tries(const Card& card) const
{
    if (card.m_nTries_Left == 0)
        return L"blocked";
    return Lib_Int_To_String(static_cast<int>(card.m_nTries_Left)) +
           (card.m_nTries_Left == 1 ? L" try left" : L" tries left");
}
