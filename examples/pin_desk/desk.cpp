#include "desk.h"

#include <algorithm>

namespace
{

constexpr unsigned int LISTED_NAMES = 6;

Answer make_Answer(bool bDone, const Lib_String& strText) { return Answer{bDone, strText}; }

/// Plain PINs live as long as the comparison. One that cannot be deciphered equals nothing.
bool is_Same_Pin(const Lib_Protected_String& Left, const Lib_Protected_String& Right)
{
    const Lib_String strLeft = Left.Get_String();
    return !strLeft.Is_Empty() && strLeft == Right.Get_String();
}

Answer no_Such_Card() { return make_Answer(false, L"no such card"); }

} // namespace

Answer Desk::Serve(const Request& request)
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
    }
    return Answer();
}

unsigned int Desk::Count_Blocked() const
{
    return static_cast<unsigned int>(std::count_if(
        m_Cards.begin(), m_Cards.end(), [](const auto& Entry) { return Entry.second.m_nTries_Left == 0; }));
}

Answer Desk::store(const Request& request)
{
    if (m_Cards.contains(request.m_strCard))
        return make_Answer(false, L"the card is taken");
    enter(request.m_strCard, request);
    return make_Answer(true, L"stored for " + request.m_strOwner);
}

Answer Desk::issue(const Request& request)
{
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
    m_Cards[request.m_strCard].m_Pin = request.m_New_Pin;
    return Result;
}

Answer Desk::unblock(const Request& request)
{
    const auto found = m_Cards.find(request.m_strCard);
    if (found == m_Cards.end())
        return no_Such_Card();
    if (found->second.m_nTries_Left != 0)
        return make_Answer(false, L"the card is not blocked");
    found->second.m_nTries_Left = m_nTries;
    return make_Answer(true, L"unblocked, " + describe_Tries(found->second));
}

Answer Desk::remove(const Request& request)
{
    Answer Result = make_Answer(true, L"removed");
    if (verify(request, Result))
        m_Cards.erase(request.m_strCard);
    return Result;
}

Answer Desk::show(const Request& request) const
{
    const auto found = m_Cards.find(request.m_strCard);
    if (found == m_Cards.end())
        return no_Such_Card();
    const Card& card = found->second;
    Lib_String strBadge(L"none");
    if (card.m_Badge.Get_Size() != 0)
        Lib_Write_Buffer(card.m_Badge.Get_Size(), card.m_Badge.Get_Ptr(), strBadge, L':');
    Lib_String strText;
    strText.Format(L"%s, badge %s, %s", card.m_strOwner.GetW(), strBadge.GetW(), describe_Tries(card).GetW());
    if (card.m_Until)
        strText += L", until " + m_Clock.Write(Lib_DateTime(*card.m_Until, false));
    return make_Answer(true, strText);
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

void Desk::enter(const Lib_String& strName, const Request& request)
{
    m_Cards[strName] = Card{request.m_strOwner, request.m_Pin, request.m_Badge, request.m_Until, m_nTries};
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

/// Whether the card exists, isn't expired or blocked, and the PIN is right; otherwise the refusal is ready to
/// be sent.
bool Desk::verify(const Request& request, Answer& Refusal)
{
    const auto found = m_Cards.find(request.m_strCard);
    if (found == m_Cards.end())
    {
        Refusal = no_Such_Card();
        return false;
    }
    Card& card = found->second;
    if (card.m_Until && *card.m_Until < Lib_DateTime::Get_Current())
    {
        Refusal = make_Answer(false, L"the card has expired");
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
    card.m_nTries_Left = m_nTries;
    return true;
}

Lib_String Desk::describe_Tries(const Card& card) const
{
    if (card.m_nTries_Left == 0)
        return L"blocked";
    return Lib_Int_To_String(static_cast<int>(card.m_nTries_Left)) +
           (card.m_nTries_Left == 1 ? L" try left" : L" tries left");
}
