#include "line_reader.h"

#include <cstring>
#include <new>

namespace
{

constexpr std::size_t BLOCK = 4096;

void append(Lib_Buffer& Line, const char* pBytes, std::size_t nBytes)
{
    const auto nOld = Line.Get_Size();
    Line.Append(pBytes, nBytes);
    if (Line.Get_Size() != nOld + nBytes)
        throw std::bad_alloc(); // without a part it would be another line
}

} // namespace

Line_Reader::Line_Reader(Byte_Source& Source) : m_Source(Source), m_Block(BLOCK) {}

Line_Reader::~Line_Reader()
{
    for (volatile char& ch : m_Block) // a plain fill just before the release would be left out
        ch = 0;
}

Line_Reader::State Line_Reader::Read_Line(Lib_String& strLine)
{
    Lib_Buffer Line;
    bool bTooLong = false;
    if (!collect(Line, bTooLong))
        return m_Source.Has_Failed() ? State::failed : State::end;
    ++m_nLine;
    if (bTooLong)
    {
        strLine.Format(L"the line is longer than %u bytes", static_cast<unsigned int>(LONGEST_LINE));
        return State::malformed;
    }
    return convert(Line, strLine);
}

bool Line_Reader::fill()
{
    if (m_nNext == m_nEnd)
    {
        m_nNext = 0;
        m_nEnd = m_Source.Read(m_Block.data(), m_Block.size());
    }
    return m_nNext != m_nEnd;
}

/// The bytes up to the next line feed, which is consumed; false when there are none left. What a line has
/// beyond the longest length is passed over.
bool Line_Reader::collect(Lib_Buffer& Line, bool& bTooLong)
{
    bool bAny = false;
    while (fill())
    {
        bAny = true;
        char* pStart = m_Block.data() + m_nNext;
        const void* pFeed = std::memchr(pStart, '\n', m_nEnd - m_nNext);
        const std::size_t nLength = pFeed != nullptr
                                        ? static_cast<std::size_t>(static_cast<const char*>(pFeed) - pStart)
                                        : m_nEnd - m_nNext;
        bTooLong = bTooLong || Line.Get_Size() + nLength > LONGEST_LINE;
        if (!bTooLong)
            append(Line, pStart, nLength);
        std::memset(pStart, 0, nLength);
        m_nNext += nLength + (pFeed != nullptr ? 1 : 0);
        m_bWhole = pFeed != nullptr;
        if (m_bWhole)
            break;
    }
    return bAny;
}

Line_Reader::State Line_Reader::convert(Lib_Buffer& Line, Lib_String& strLine) const
{
    auto* pBytes = static_cast<unsigned char*>(Line.Get_Ptr());
    unsigned long nBytes = static_cast<unsigned long>(Line.Get_Size());
    if (m_nLine == 1 && nBytes >= 3 && std::memcmp(pBytes, "\xEF\xBB\xBF", 3) == 0)
    {
        pBytes += 3; // the mark that some editors put in front of UTF-8
        nBytes -= 3;
    }
    const bool bHas_Nul = nBytes != 0 && std::memchr(pBytes, 0, nBytes) != nullptr;
    // Bytes that aren't UTF-8 come out as U+FFFD.
    if (bHas_Nul || !Lib_UTF8_Buffer_To_WString(pBytes, nBytes, strLine) || strLine.Find(L'\xFFFD') >= 0)
    {
        strLine = L"the line is not UTF-8 text";
        return State::malformed;
    }
    strLine.TrimLeft();
    strLine.TrimRight();
    return State::text;
}
