#include "texts.h"

#include <random>

namespace
{

constexpr char English_Prose[] =
    "When the harbour froze that winter, the pilots took to their books, and the town learned how much it "
    "had "
    "owed to the water. There was no fish in the market then, and the thin bread that the bakers sold was "
    "dearer than the meat of the summer before. The clerks of the trading house, though they had nothing to "
    "write, came to their desks at eight and trimmed their pens; the eldest of them kept the ledger open at "
    "the 14th of November, \"so that we may go on where we stopped\", as he told those who asked. Their "
    "patience was rewarded in the third week of the thaw: two ships, 31 days late, tied up at the quay with "
    "timber, tar and a hold of salted cod. ";

constexpr char16_t Russian_Prose[] =
    u"По первому снегу почта приходила поздно, и письма, которые в порядке очереди подписывал помощник, "
    u"пролежали на подоконнике почти полторы недели. Никто, пожалуй, не заметил бы этого, если бы не посылка "
    u"из Пскова: в ней, по словам сторожа, было 12 килограммов яблок. Пока пили чай, пока спорили, кому "
    u"полагается половина, пошёл дождь; потом прояснилось, и по двору побежали дети. «Приходите завтра "
    u"пораньше», "
    u"- повторил он на прощание и, поправив шапку, пошёл по тропинке к переправе, где его поджидал "
    u"перевозчик. Так прошла среда, 3 ноября, последний погожий день перед зимой. ";

template <class Char, std::size_t nProse>
std::basic_string<Char> repeat(const Char (&prose)[nProse], std::size_t nLength)
{
    std::basic_string<Char> strText;
    while (strText.size() < nLength)
        strText += prose;
    strText.resize(nLength);
    return strText;
}

} // namespace

std::string texts::English(std::size_t nLength) { return repeat(English_Prose, nLength); }

std::u16string texts::English16(std::size_t nLength) { return Widened(English(nLength)); }

std::u16string texts::Russian16(std::size_t nLength) { return repeat(Russian_Prose, nLength); }

std::string texts::Russian_Utf8(std::size_t nSize)
{
    std::string strBytes;
    for (const char16_t ch : Russian16(nSize))
    {
        const bool bShort = ch < 0x80;
        if (strBytes.size() + (bShort ? 1 : 2) > nSize)
            break;
        if (!bShort)
            strBytes += static_cast<char>(0xC0 | ch >> 6);
        strBytes += static_cast<char>(bShort ? ch : 0x80 | (ch & 0x3F));
    }
    return strBytes;
}

std::string texts::Ending_In(std::string strText, const std::string& strPart)
{
    return strText.replace(strText.size() - strPart.size(), strPart.size(), strPart);
}

std::u16string texts::Ending_In(std::u16string strText, const std::u16string& strPart)
{
    return strText.replace(strText.size() - strPart.size(), strPart.size(), strPart);
}

std::u16string texts::Widened(const std::string& strText) { return {strText.begin(), strText.end()}; }

std::string texts::Random_Bytes(std::size_t nSize)
{
    std::mt19937 generator(20);
    std::string strBytes(nSize, '\0');
    for (char& byte : strBytes)
        byte = static_cast<char>(generator());
    return strBytes;
}
