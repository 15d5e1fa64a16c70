// The text of dates by a format of the runtime, and the runtime's locale around it.

#include "lib_datetime.h"
#include "test_text.h"

#include <string>
#include <vector>

namespace
{

constexpr unsigned long EN_US = 0x409;
constexpr unsigned long DE = 0x407;
constexpr unsigned long RU = 0x419;
constexpr unsigned long JA = 0x411;

const Lib_DateTime EVENING(2004, 3, 5, 18, 3, 9);

class Date_Format : public testing::Test
{
protected:
    void SetUp() override { _wsetlocale(0, L"C"); }
    void TearDown() override { _wsetlocale(0, L"C"); }

    static Lib_String Get_Locale() { return Lib_String(_wsetlocale(0, nullptr)); }
};

} // namespace

TEST_F(Date_Format, Writes_By_The_Locale)
{
    const struct
    {
        unsigned long m_nLocale;
        const wchar_t *m_pFormat, *m_pExpected;
    } Texts[] = {
        {EN_US, L"%a %A %b %B %p", L"Fri Friday Mar March PM"},
        {EN_US, L"%c|%x|%X", L"3/5/2004 6:03:09 PM|3/5/2004|6:03:09 PM"},
        {EN_US, L"%#c", L"Friday, March 5, 2004 6:03:09 PM"},
        {DE, L"%a %A %b %B %X", L"Fr. Freitag M\x00E4r M\x00E4rz 18:03:09"},
        {DE, L"%#x", L"Freitag, 5. M\x00E4rz 2004"},
        {RU, L"%B %c", L"\x043C\x0430\x0440\x0442 05.03.2004 18:03:09"},
        {JA, L"%a %A %B %p", L"\x91D1 \x91D1\x66DC\x65E5 3\x6708 \x5348\x5F8C"},
        {EN_US, L"%Y-%m-%d %H:%M:%S 100%%", L"2004-03-05 18:03:09 100%"},
        {EN_US, L"%y %I %j %w %U %W", L"04 06 065 5 09 09"},
        {EN_US, L"%#y %#m %#d %#H %#M %#S %#I %#j", L"4 3 5 18 3 9 6 65"},
    };
    for (const auto& Text : Texts)
        EXPECT_TEXT_EQ(Text.m_pExpected, EVENING.Format(Text.m_pFormat, Text.m_nLocale));
    EXPECT_TEXT_EQ(L"0100", Lib_DateTime(-657434.0, false).Format(L"%Y", EN_US));
    EXPECT_TEXT_EQ(L"9999 5 52 52", Lib_DateTime(2958465.0, false).Format(L"%Y %w %U %W", EN_US));
}

TEST_F(Date_Format, Is_Empty_When_The_Text_Cannot_Be_Made)
{
    const std::u16string strLong(125, u'x');
    std::vector<wchar_t> Format(strLong.begin(), strLong.end());
    Format.insert(Format.end(), {L'%', L'd', 0});
    EXPECT_EQ(127u, EVENING.Format(Format.data(), EN_US).Get_Length());
    Format.insert(Format.begin(), L'x');
    EXPECT_TEXT_EQ(L"", EVENING.Format(Format.data(), EN_US));
    for (const wchar_t* pFormat : {L"%Q", L"x%", L"%#", L"%d %#Q", L""})
        EXPECT_TEXT_EQ(L"", EVENING.Format(pFormat, EN_US));
    EXPECT_TEXT_EQ(L"", EVENING.Format(nullptr, EN_US));
}

TEST_F(Date_Format, Leaves_The_Users_Default_Locale_In_Force)
{
    _wsetlocale(0, L"");
    const Lib_String strDefault = Get_Locale();
    for (const wchar_t* pFormat : {L"%d", L"%Q"})
    {
        _wsetlocale(0, L"C");
        EVENING.Format(pFormat, DE);
        EXPECT_TEXT_EQ(strDefault, Get_Locale());
    }
    EXPECT_TEXT_EQ(L"2004 5", EVENING.Format(L"%Y %#d", 0xFC09)) << "which an unknown locale means too";
    EXPECT_TEXT_EQ(strDefault, Get_Locale());
}

TEST_F(Date_Format, Leaves_The_Locale_Alone_For_A_Value_Out_Of_Range)
{
    EXPECT_TEXT_EQ(L"", Lib_DateTime(2958465.5, false).Format(L"%d", DE));
    EXPECT_TEXT_EQ(L"", Lib_DateTime(2958465.5, false).Format(3u, nullptr));
    EXPECT_TEXT_EQ(L"C", Get_Locale());
}

TEST_F(Date_Format, Does_Not_Write_In_The_Locale_That_Was_In_Force)
{
    // Hindi has no code page, for which a runtime may refuse it.
    ASSERT_NE(nullptr, _wsetlocale(0, L"German_Germany.1252"));
    EXPECT_NE(Lib_String(L"Freitag"), EVENING.Format(L"%A", 0x439));
}

TEST_F(Date_Format, Loads_Its_Format)
{
    EXPECT_TEXT_EQ(L"2004-03-05 at 18:03", EVENING.Format(3u, nullptr));
    EXPECT_TEXT_EQ(L"", EVENING.Format(4u, nullptr));
}
