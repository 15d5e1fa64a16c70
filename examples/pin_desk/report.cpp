#include "report.h"

#include <cstdio>
#include <lib_platform.h>

namespace
{

const wchar_t* plural_S(unsigned int nCount) { return nCount == 1 ? L"" : L"s"; }

Lib_Buffer to_Utf8(const Lib_String& strLine)
{
    Lib_Buffer Line;
    Lib_WString_To_UTF8_Buffer(strLine, static_cast<unsigned long>(strLine.Get_Length()), Line);
    return Line;
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

void Print_Line(const Lib_String& strLine)
{
    Lib_Buffer Line = to_Utf8(strLine);
    Line.Append("\n", 1);
    std::fwrite(Line.Get_Ptr(), 1, static_cast<std::size_t>(Line.Get_Size()), stdout);
}

Lib_String Get_Error_Text(unsigned int nCode)
{
    constexpr unsigned int nPlatform = 1;
    Lib_String strText = Lib_Result(nCode, nPlatform).Get_Result_Text(0);
    strText.Trim_Right(L". \r\n");
    return strText;
}

void Report::Add_Answer(unsigned int nLine, const Request& request, const Answer& answer)
{
    m_Total.Add(answer.m_bDone);
    m_Sessions[request.m_nSession].Add(answer.m_bDone);
    const wchar_t* pCard = request.m_strCard.Is_Empty() ? L"-" : request.m_strCard.GetW();
    Lib_String strLine;
    strLine.Format(L"%5u  %s  session %-3u  %-8s%-13s%-8s %s", nLine, make_Receipt().GetW(),
                   request.m_nSession, Get_Operation_Name(request.m_Operation), pCard,
                   answer.m_bDone ? L"done" : L"refused", answer.m_strText.GetW());
    add_To_Audit(strLine);
    if (!m_bQuiet || !answer.m_bDone)
        print_Stamped(strLine);
}

void Report::Add_Malformed(unsigned int nLine, const Lib_String& strFault)
{
    ++m_nMalformed;
    Lib_String strLine;
    strLine.Format(L"%5u  malformed: %s", nLine, strFault.GetW());
    add_To_Audit(strLine);
    print_Stamped(strLine);
}

void Report::Print_Summary(const Desk& desk) const
{
    Lib_String strLine;
    strLine.Format(L"\n%u request%s: %u done, %u refused, %u malformed", Count_Requests(),
                   plural_S(Count_Requests()), m_Total.m_nDone, m_Total.m_nRefused, m_nMalformed);
    Print_Line(strLine);
    for (const auto& [nSession, counts] : m_Sessions)
    {
        strLine.Format(L"session %-6u %5u request%s, %5.1f%% done", nSession, counts.Get_Sum(),
                       plural_S(counts.Get_Sum()), 100.0 * counts.m_nDone / counts.Get_Sum());
        Print_Line(strLine);
    }
    if (m_nMalformed != 0)
    {
        strLine.Format(L"no session     %5u malformed line%s", m_nMalformed, plural_S(m_nMalformed));
        Print_Line(strLine);
    }
    strLine.Format(L"%u card%s, %u blocked", desk.Count_Cards(), plural_S(desk.Count_Cards()),
                   desk.Count_Blocked());
    Print_Line(strLine);
    Print_Line(L"audit digest " + describe_Audit());
}

void Report::add_To_Audit(const Lib_String& strLine)
{
    Lib_Buffer Bytes = to_Bytes(m_nAudit);
    Bytes.Append(to_Utf8(strLine));
    m_nAudit = Lib_Cacl_CRC32(static_cast<unsigned char*>(Bytes.Get_Ptr()),
                              static_cast<unsigned long>(Bytes.Get_Size()));
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
    Print_Line(m_bStamps ? m_Clock.Write(Lib_DateTime::Get_Current()) + L" " + strLine : strLine);
}

/// The number of the answer as four bytes, the highest first. The key keeps clients from telling by their
/// receipts how many others were served; it protects nothing else.
Lib_String Report::make_Receipt() const
{
    unsigned char aNumber[4];
    const auto* pKey = static_cast<const unsigned char*>(m_Key.Get_Ptr());
    for (unsigned int i = 0; i < 4; ++i)
    {
        aNumber[i] = static_cast<unsigned char>(m_Total.Get_Sum() >> (24 - 8 * i));
        if (m_Key.Get_Size() != 0)
            aNumber[i] ^= pKey[i % m_Key.Get_Size()];
    }
    Lib_String strReceipt;
    Lib_Write_Buffer(sizeof(aNumber), aNumber, strReceipt, L':');
    return strReceipt;
}
