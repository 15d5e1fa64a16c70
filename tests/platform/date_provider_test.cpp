// What the layer adds to locales and times on Linux: the provider, the runtime's locale by the platform's
// names, and the conversions of times that only this runtime knows.

#include "lib_platform.h"
#include "platform/runtime_time.h"
#include "platform/system_calls.h"
#include "test_text.h"

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <ctime>
#include <thread>

namespace
{

class Runtime_Time : public testing::Test
{
protected:
    void TearDown() override { _wsetlocale(0, L"C"); }

    const wchar_t* Write(const wchar_t* pFormat)
    {
        return qn_runtime::Format_Time(m_Text, 128, pFormat, m_Time) != 0 ? m_Text : L"";
    }

    std::tm m_Time = {9, 3, 18, 5, 2, 104, 5, 64, 0, 0, nullptr}; // Friday, 5 March 2004, 18:03:09
    wchar_t m_Text[128];
};

/// Without the provider everything that needs it fails, and nothing else.
[[noreturn]] void check_Missing()
{
    system_calls.open_module = [](const char*, int) -> void* { return nullptr; };
    wchar_t text[10];
    BSTR pText = nullptr;
    double dtValue = 7.0;
    const bool bInfo = GetLocaleInfoW(0x409, 0x1001, text, 10) == 0 && GetLastError() == ERROR_MOD_NOT_FOUND;
    const bool bWritten = VarBstrFromDate(1.0, 0x409, 0, &pText) == static_cast<HRESULT>(0x8007007E);
    const bool bRead = VarDateFromStr(L"1/2/2004", 0x409, 0, &dtValue) == static_cast<HRESULT>(0x8007007E);
    const bool bLocale = _wsetlocale(0, L"German_Germany.1252") == nullptr && _wsetlocale(0, L"") != nullptr;
    std::tm Time{};
    Time.tm_mday = 1;
    const bool bTime = qn_runtime::Format_Time(text, 10, L"%B", Time) == 7;
    std::_Exit(bInfo && bWritten && bRead && bLocale && bTime && pText == nullptr && dtValue == 7.0 ? 0 : 1);
}

/// A zone with a history, whose names the C library takes from its file at each conversion.
[[noreturn]] void check_Zone_Beside_Conversions()
{
    setenv("TZ", "Europe/Berlin", 1);
    std::atomic<bool> bEnd = false;
    std::thread Other(
        [&bEnd]
        {
            const FILETIME Time{0, 0x01C00000};
            FILETIME Local{};
            while (!bEnd)
                FileTimeToLocalFileTime(&Time, &Local);
        });
    std::tm Time{};
    wchar_t first[20];
    const std::size_t nLength = qn_runtime::Format_Time(first, 20, L"%z %Z", Time);
    bool bSame = nLength != 0;
    for (int i = 0; bSame && i < 20000; ++i)
    {
        wchar_t text[20];
        bSame = qn_runtime::Format_Time(text, 20, L"%z %Z", Time) == nLength &&
                std::equal(first, first + nLength, text);
    }
    bEnd = true;
    Other.join();
    std::_Exit(bSame ? 0 : 1);
}

} // namespace

TEST(Date_Provider, Fails_Its_Calls_When_It_Is_Missing)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(check_Missing(), testing::ExitedWithCode(0), "");
}

TEST(Date_Provider, Refuses_Null_Pointers)
{
    double dtValue = 7.0;
    EXPECT_EQ(static_cast<HRESULT>(0x80070057), VarBstrFromDate(1.0, 0x409, 0, nullptr));
    EXPECT_EQ(static_cast<HRESULT>(0x80070057), VarDateFromStr(L"1/2/2004", 0x409, 0, nullptr));
    EXPECT_EQ(static_cast<HRESULT>(0x80020005), VarDateFromStr(nullptr, 0x409, 0, &dtValue));
    EXPECT_FALSE(VariantTimeToSystemTime(1.0, nullptr) || SystemTimeToVariantTime(nullptr, &dtValue));
    EXPECT_FALSE(SystemTimeToFileTime(nullptr, nullptr) || FileTimeToSystemTime(nullptr, nullptr));
    EXPECT_EQ(7.0, dtValue);
    EXPECT_EQ(22, _gmtime64_s(nullptr, nullptr));
}

TEST_F(Runtime_Time, Follows_Locales_By_The_Platforms_Names)
{
    for (const auto& [pName, pExpected] :
         {std::pair(L"German_Germany.1252", L"Fr. 05.03.2004 18:03:09"),
          std::pair(L"Norwegian Bokm\x00E5l_Norway.1252", L"fre. 05.03.2004 18:03:09"),
          std::pair(L"Invariant Language_Invariant Country.1252", L"Fri 03/05/2004 18:03:09"),
          std::pair(L"C", L"Fri 03/05/04 18:03:09")})
    {
        EXPECT_TEXT_EQ(pName, _wsetlocale(0, pName));
        EXPECT_TEXT_EQ(pExpected, Write(L"%a %c"));
    }
    for (const wchar_t* pName :
         {L"German_Nowhere.1252", L"German_Germany.1250", L"_.", L"German_Germany", L"German_Germany.1252x"})
        EXPECT_EQ(nullptr, _wsetlocale(0, pName)) << test_support::Readable(test_support::Wide_Text(pName));
    EXPECT_TEXT_EQ(L"C", _wsetlocale(0, nullptr)) << "an unknown name changes nothing";
}

TEST_F(Runtime_Time, Knows_The_Conversions_Of_Later_Runtimes)
{
    EXPECT_TEXT_EQ(L"20 03/05/04 2004-03-05  5 Mar 18:03 18:03:09 06:03:09 PM",
                   Write(L"%C %D %F %e %h %R %T %r"));
    EXPECT_TEXT_EQ(L"\n\t", Write(L"%n%t"));
    const struct
    {
        int m_nYear, m_nWeek_Day, m_nYear_Day;
        const wchar_t *m_pFormat, *m_pExpected;
    } weeks[] = {
        {104, 5, 64, L"%u %V %G %g", L"5 10 2004 04"},
        {105, 6, 0, L"%G %V %u %U %W", L"2004 53 6 00 00"}, // 1 January, in the last week of 2004
        {108, 1, 363, L"%g %V %U %W", L"09 01 52 52"},      // 29 December, in the first week of 2009
        {8099, 5, 364, L"%G %g %V %u %U %W", L"9999 99 52 5 52 52"},
        {8099, 1, 364, L"%V", L"01"}, // as if a Monday, in the first week of a year of five digits
        {8099, 1, 364, L"%G", L""},
        {8099, 1, 364, L"%g", L""},
    };
    for (const auto& week : weeks)
    {
        m_Time.tm_year = week.m_nYear;
        m_Time.tm_wday = week.m_nWeek_Day;
        m_Time.tm_yday = week.m_nYear_Day;
        EXPECT_TEXT_EQ(week.m_pExpected, Write(week.m_pFormat)) << week.m_nYear;
    }
}

TEST_F(Runtime_Time, Tells_The_Zone_Of_The_Process)
{
    setenv("TZ", "ABC-5:30DEF", 1);
    EXPECT_TEXT_EQ(L"+0530 ABC", Write(L"%z %Z"));
    m_Time.tm_isdst = 1;
    EXPECT_TEXT_EQ(L"+0630 DEF", Write(L"%z %Z"));
    m_Time.tm_isdst = -1;
    EXPECT_TEXT_EQ(L"x", Write(L"x%z%Z"));
    unsetenv("TZ");
}

TEST_F(Runtime_Time, Tells_The_Zone_Beside_Conversions_Of_Other_Threads)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(check_Zone_Beside_Conversions(), testing::ExitedWithCode(0), "");
}

TEST_F(Runtime_Time, Refuses_Fields_Out_Of_Range)
{
    m_Time = {61, 60, -1, 32, 12, 8100, 7, 366, 0, 0, nullptr};
    for (const wchar_t* pFormat :
         {L"%a", L"%A", L"%b", L"%B", L"%c", L"%C", L"%d", L"%D", L"%e", L"%F", L"%g",
          L"%G", L"%h", L"%H", L"%I", L"%j", L"%m", L"%M", L"%p", L"%r", L"%R", L"%S",
          L"%T", L"%u", L"%U", L"%V", L"%w", L"%W", L"%x", L"%X", L"%y", L"%Y"})
        EXPECT_TEXT_EQ(L"", Write(pFormat));
}
