#include "fuzz_input.h"
#include "lib_datetime.h"

#include <iterator>

// Reading dates in random locales: whatever comes out is in the range, is written again, and reads back as
// itself; and what any value writes reads back.

namespace
{

constexpr LCID LOCALES[] = {0x409, 0x809, 0x407, 0x40C, 0x419, 0x411, 0x804, 0x404, 0x412,
                            0x401, 0x40D, 0x41E, 0x439, 0x41D, 0x40E, 0x40B, 0x406, 0x408,
                            0x402, 0x42A, 0x421, 0x427, 0xC0A, 0x816, 0x429, 0x7F};

/// What dates are made of, in several scripts.
constexpr const char16_t* PIECES[] = {
    u"1",    u"2",    u"12",       u"13",  u"28",     u"31",    u"04",    u"99",    u"2004", u"1999",
    u"100",  u"0",    u"/",        u"-",   u".",      u",",     u" ",     u":",     u": ",   u" AM",
    u"pm",   u"Jan",  u"december", u"Mai", u"м",      u"мая",   u"5月",   u"月",    u"年",   u"日",
    u"下午", u"오후", u"π.μ.",     u"م",   u"\u200F", u"г.",    u"de",    u"enero", u"İ",    u"ß",
    u"１",   u"٤",    u"\u202F",   u"\t",  u"T",      u"18:00", u"10.30", u"märz"};

std::u16string take_Text(Fuzz_Input& Input)
{
    if (Input.Take_Choice(4) == 0)
        return Input.Take_Text(u"", 64);
    std::u16string strText;
    while (Input.Get_Left() != 0 && strText.size() < 64)
        strText += PIECES[Input.Take_Choice(std::size(PIECES))];
    return strText;
}

bool is_Near(double dtLeft, double dtRight)
{
    const double dDifference = dtLeft - dtRight;
    return dDifference < 1e-6 && dDifference > -1e-6;
}

/// A locale whose times look like dates cannot tell one from the other when it stands alone.
bool is_Plain_Time(const Lib_DateTime& When)
{
    return When.Get_Year() == 1899 && When.Get_Month() == 12 && When.Get_Day() == 30;
}

void check_Back(double dtValue, unsigned long nLocale)
{
    const Lib_DateTime When(dtValue, false);
    const Lib_String strText = When.Format(0, nLocale, false);
    FUZZ_CHECK(!strText.Is_Empty());
    Lib_DateTime Back;
    const bool bRead = Back.Parse_Date_Time(strText, 0, nLocale, false);
    FUZZ_CHECK(bRead || is_Plain_Time(When));
    FUZZ_CHECK(is_Plain_Time(When) || is_Near(Back, dtValue));
}

void check_Read(const std::u16string& strText, unsigned long nLocale, unsigned long nFlags)
{
    Lib_DateTime When(7.0, false);
    const bool bRead = When.Parse_Date_Time(Wide_Text(strText), nFlags, nLocale, false);
    const double dtValue = When;
    if (!bRead)
    {
        FUZZ_CHECK(dtValue == (nFlags == 3 ? 7.0 : 0.0));
        return;
    }
    FUZZ_CHECK(dtValue > -657435.0 && dtValue < 2958466.0);
    FUZZ_CHECK((nFlags & 1) == 0 || (dtValue >= 0.0 && dtValue < 1.0));
    FUZZ_CHECK((nFlags & 2) == 0 || dtValue == static_cast<double>(static_cast<int>(dtValue)));
    check_Back(dtValue, nLocale);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t nSize)
{
    Fuzz_Input Input(pData, nSize);
    const unsigned long nLocale = LOCALES[Input.Take_Choice(std::size(LOCALES))];
    const unsigned long nFlags = Input.Take_Choice(16) == 0 ? Input.Take_Choice(4) : 0;
    if (Input.Take_Choice(8) == 0)
    {
        unsigned int nSeconds = 0;
        for (int i = 0; i < 4; ++i)
            nSeconds = nSeconds << 8 | Input.Take_Byte();
        const int nDay = static_cast<int>(nSeconds % 3615899) - 657434;
        const double dTime = static_cast<double>(nSeconds / 3615899 * 73 % 86400) / 86400.0;
        check_Back(nDay < 0 ? nDay - dTime : nDay + dTime, nLocale);
    }
    check_Read(take_Text(Input), nLocale, nFlags);
    return 0;
}
