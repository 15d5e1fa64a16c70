#include "report.h"

#include "lock_guard.h"
#include "text_output.h"

#include <cstdio>
#include <lib_protected.h>

namespace
{

const wchar_t* plural_S(unsigned int nCount) { return nCount == 1 ? L"" : L"s"; }

/// A session that is not known is that of a client who may not be asked for it.
Lib_String describe_Client(const Client_Name& client)
{
    Lib_String strText;
    if (client.m_nSession == Lib_Environment_Params::Session_Unknown)
        strText = L"?";
    else
        strText.Format(L"%u", client.m_nSession);
    if (client.m_nClient != 0)
        strText += L"/" + Lib_Int_To_String(static_cast<int>(client.m_nClient));
    return strText;
}

Lib_String name_Session(unsigned int nSession) { return L"session " + describe_Client({nSession, 0}); }

/// Adds them to a sum, too.
Lib_String describe_Cards(const Session_Count& Cards, Session_Count& Sum)
{
    Sum.m_nCards += Cards.m_nCards;
    Sum.m_nBlocked += Cards.m_nBlocked;
    Lib_String strText;
    strText.Format(L"%u card%s, %u blocked", Cards.m_nCards, plural_S(Cards.m_nCards), Cards.m_nBlocked);
    return strText;
}

/// A number as four bytes, the highest first.
Lib_Buffer to_Bytes(unsigned long nNumber)
{
    LibT_Buffer<char> Bytes;
    for (int nShift = 24; nShift >= 0; nShift -= 8)
        Bytes.Add(static_cast<char>(nNumber >> nShift & 0xFF));
    return Bytes;
}

} // namespace

Report::Report(const Style& style, const Clock& clock) : m_Style(style), m_Clock(clock)
{
    m_Lock.Create(nullptr, false);
    if (style.m_bJournal)
        m_Journal.emplace();
}

void Report::Add_Answer(unsigned int nLine, const Client_Name& client, const Request& request,
                        const Answer& answer)
{
    const Lock_Guard Guard(m_Lock);
    m_Total.Add(answer.m_bDone);
    m_Sessions[client.m_nSession].Add(answer.m_bDone);
    const wchar_t* pCard = request.m_strCard.Is_Empty() ? L"-" : request.m_strCard.GetW();
    Lib_String strLine;
    strLine.Format(L"%5u  %s  session %-5s  %-8s%-13s%-8s %s", nLine, make_Receipt().GetW(),
                   describe_Client(client).GetW(), Get_Operation_Name(request.m_Operation), pCard,
                   answer.m_bDone ? L"done" : L"refused", answer.m_strText.GetW());
    add_To_Audit(strLine);
    add_To_Journal(strLine);
    if (!m_Style.m_bQuiet || !answer.m_bDone)
        print_Stamped(strLine);
}

void Report::Add_Malformed(unsigned int nLine, const Client_Name* pClient, const Lib_String& strFault)
{
    const Lock_Guard Guard(m_Lock);
    ++m_nMalformed;
    Lib_String strLine;
    strLine.Format(L"%5u  malformed: %s", nLine, strFault.GetW());
    if (pClient != nullptr)
        strLine += L", says session " + describe_Client(*pClient);
    add_To_Audit(strLine);
    add_To_Journal(strLine);
    print_Stamped(strLine);
}

void Report::Add_Note(const Lib_String& strText)
{
    const Lock_Guard Guard(m_Lock);
    add_Note(strText);
}

void Report::Session_Opened(unsigned int nSession)
{
    const Lock_Guard Guard(m_Lock);
    ++m_nOpened;
    if (m_Style.m_bLive && !m_Style.m_bQuiet)
        add_Note(name_Session(nSession) + L" opens");
}

void Report::Session_Closed(unsigned int nSession, unsigned int nCards)
{
    const Lock_Guard Guard(m_Lock);
    ++m_nClosed;
    Lib_String strText;
    strText.Format(L" closes, %u card%s let go", nCards, plural_S(nCards));
    if (m_Style.m_bLive && !m_Style.m_bQuiet)
        add_Note(name_Session(nSession) + strText);
}

void Report::Pin_Expired(unsigned int nSession, const Lib_String& strCard)
{
    add_Event(nSession, L": the PIN of " + strCard + L" has expired");
}

void Report::Watch_Died(unsigned int nSession)
{
    add_Event(nSession, L": its watch has died, expired PINs are refused but not wiped");
}

void Report::Print_Summary(const std::map<unsigned int, Session_Count>* pCards)
{
    const Lock_Guard Guard(m_Lock);
    Lib_String strLine;
    strLine.Format(L"\n%u request%s: %u done, %u refused, %u malformed", count_Requests(),
                   plural_S(count_Requests()), m_Total.m_nDone, m_Total.m_nRefused, m_nMalformed);
    Print_Line(strLine);
    Session_Count All;
    for (const auto& [nSession, counts] : m_Sessions)
    {
        strLine.Format(L"session %-6s %5u request%s, %5.1f%% done", describe_Client({nSession, 0}).GetW(),
                       counts.Get_Sum(), plural_S(counts.Get_Sum()),
                       100.0 * counts.m_nDone / counts.Get_Sum());
        if (pCards != nullptr && pCards->contains(nSession))
            strLine += L", " + describe_Cards(pCards->at(nSession), All);
        Print_Line(strLine);
    }
    if (m_nMalformed != 0)
    {
        strLine.Format(L"no session     %5u malformed line%s", m_nMalformed, plural_S(m_nMalformed));
        Print_Line(strLine);
    }
    Session_Count None;
    if (pCards != nullptr)
        Print_Line(describe_Cards(All, None));
    Print_Line(L"audit digest " + describe_Audit());
}

void Report::Print_Sessions()
{
    const Lock_Guard Guard(m_Lock);
    Lib_String strLine;
    strLine.Format(L"%u session%s opened, %u closed", m_nOpened, plural_S(m_nOpened), m_nClosed);
    Print_Line(strLine);
}

/// What befalls PINs is a matter of the journal, too.
void Report::add_Event(unsigned int nSession, const Lib_String& strText)
{
    const Lock_Guard Guard(m_Lock);
    const Lib_String strNote = name_Session(nSession) + strText;
    add_To_Journal(L"    *  " + strNote);
    add_Note(strNote);
}

void Report::add_Note(const Lib_String& strText) const { print_Stamped(L"    *  " + strText); }

void Report::add_To_Audit(const Lib_String& strLine)
{
    Lib_Buffer Bytes = to_Bytes(m_nAudit);
    Bytes.Append(To_Utf8(strLine));
    m_nAudit = Lib_Cacl_CRC32(static_cast<unsigned char*>(Bytes.Get_Ptr()),
                              static_cast<unsigned long>(Bytes.Get_Size()));
}

/// What the desk does goes on without a journal, but not unsaid.
void Report::add_To_Journal(const Lib_String& strLine)
{
    if (!m_Journal || m_Journal->Add(strLine))
        return;
    m_Journal.reset();
    add_Note(L"the journal cannot be written and ends here");
}

Lib_String Report::describe_Audit() const
{
    Lib_Buffer Text;
    if (!base64_encode(to_Bytes(m_nAudit), Text, CRYPT_STRING_BASE64 | CRYPT_STRING_NOCRLF))
        return L"cannot be told";
    return Lib_String(static_cast<const char*>(Text.Get_Ptr()));
}

void Report::print_Stamped(const Lib_String& strLine) const
{
    Print_Line(m_Style.m_bStamps ? m_Clock.Write(Lib_DateTime::Get_Current()) + L" " + strLine : strLine);
    if (m_Style.m_bLive)
        std::fflush(stdout);
}

/// The number of the answer as four bytes, the highest first. The key keeps clients from telling by their
/// receipts how many others were served; it protects nothing else.
Lib_String Report::make_Receipt() const
{
    unsigned char aNumber[4];
    const auto* pKey = static_cast<const unsigned char*>(m_Style.m_Key.Get_Ptr());
    for (unsigned int i = 0; i < 4; ++i)
    {
        aNumber[i] = static_cast<unsigned char>(m_Total.Get_Sum() >> (24 - 8 * i));
        if (m_Style.m_Key.Get_Size() != 0)
            aNumber[i] ^= pKey[i % m_Style.m_Key.Get_Size()];
    }
    Lib_String strReceipt;
    Lib_Write_Buffer(sizeof(aNumber), aNumber, strReceipt, L':');
    return strReceipt;
}
