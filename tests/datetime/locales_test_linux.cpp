// All locales that there are, the user's by the environment, and the runtime's under many threads.

#include "lib_datetime.h"
#include "other_thread.h"
#include "test_text.h"

#include <atomic>
#include <cstdlib>
#include <set>
#include <utility>

using namespace test_support;

namespace
{

[[noreturn]] void check_Default(const char* pName, const wchar_t* pShort, const wchar_t* pLong)
{
    setenv("LC_ALL", pName, 1);
    const Lib_DateTime When(2004, 3, 5, 18, 3, 9);
    bool bGood = true;
    for (const unsigned long nLocale : {0x400UL, 0x800UL, 0UL})
        bGood = bGood && When.Format(0, nLocale, false) == pShort && When.Format(L"%A %B", nLocale) == pLong;
    std::_Exit(bGood ? 0 : 1);
}

/// After a format in another locale the runtime writes times by the environment, whatever the host has.
[[noreturn]] void check_Left_Locale()
{
    setenv("LC_ALL", "de_DE.UTF-8", 1);
    const Lib_DateTime When(2004, 3, 5, 18, 3, 9);
    const Lib_String strRussian = When.Format(L"%B", 0x419);
    const Lib_String strOwn = When.Format(L"%A", 0xFC09);
    std::_Exit(strRussian == L"\x043C\x0430\x0440\x0442" && strOwn == L"Freitag" ? 0 : 1);
}

} // namespace

TEST(Locales, Read_Back_What_They_Write)
{
    const auto expect_Back = [](const Lib_String& strText, double dtValue, LCID nLocale)
    {
        Lib_DateTime When;
        EXPECT_TRUE(When.Parse_Date_Time(strText, 0, nLocale, false));
        EXPECT_NEAR(dtValue, static_cast<double>(When), 1e-9)
            << testing::PrintToString(strText) << " in " << std::hex << nLocale;
    };
    int nLocales = 0;
    for (LCID nLocale = 0x401; nLocale < 0x8000; ++nLocale)
    {
        wchar_t text[260];
        // Not every one: ICU takes some milliseconds to open a locale.
        if (nLocale % 5 != 3 || GetLocaleInfoW(nLocale, 0x1001, text, 260) == 0)
            continue;
        ++nLocales;
        for (const Lib_DateTime& When :
             {Lib_DateTime(2026, 2, 3, 16, 5, 6), Lib_DateTime(100, 12, 11, 0, 0, 0)})
            expect_Back(When.Format(0, nLocale, false), When, nLocale);
        for (const wchar_t* pFormat : {L"%#d %B %Y", L"%d-%b-%Y"})
            expect_Back(Lib_DateTime(38001.0, false).Format(pFormat, nLocale), 38001.0, nLocale);
    }
    EXPECT_LT(40, nLocales);
}

TEST(Locales, Write_By_A_Format_As_Without)
{
    // Another locale in force, or another one's data, would write other dates.
    const Lib_DateTime When(2026, 12, 3, 16, 5, 6);
    int nLocales = 0;
    for (LCID nLocale = 1; nLocale < 0x10000; ++nLocale)
    {
        wchar_t text[260];
        if (GetLocaleInfoW(nLocale, 0x1001, text, 260) == 0)
            continue;
        ++nLocales;
        EXPECT_TEXT_EQ(When.Format(2, nLocale, false), When.Format(L"%x", nLocale)) << std::hex << nLocale;
    }
    EXPECT_LT(300, nLocales);
}

TEST(Locales, Without_Data_Are_Unknown)
{
    // Sotho, Bashkir, Mongolian in its old script, Berber in Arabic script
    for (const unsigned long nLocale : {0x430UL, 0x46DUL, 0x850UL, 0x45FUL})
    {
        wchar_t text[260];
        EXPECT_EQ(0, GetLocaleInfoW(static_cast<LCID>(nLocale), 0x1001, text, 260)) << std::hex << nLocale;
        EXPECT_TEXT_EQ(L"", Lib_DateTime(2004, 3, 5, 18, 3, 9).Format(0, nLocale, false));
    }
}

TEST(Locales, May_Have_Two_Identifiers)
{
    const Lib_DateTime When(2004, 3, 5, 18, 3, 9);
    for (const auto& [nLocale, nFirst] : {std::pair(0x8CUL, 0x48CUL), std::pair(0x43CUL, 0x491UL)})
    {
        EXPECT_LT(0u, When.Format(0, nLocale, false).Get_Length()) << std::hex << nLocale;
        EXPECT_TEXT_EQ(When.Format(0, nFirst, false), When.Format(0, nLocale, false));
        EXPECT_TEXT_EQ(When.Format(L"%A %B", nFirst), When.Format(L"%A %B", nLocale));
    }
}

TEST(Locales, Of_The_User_Come_From_The_Environment)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    using testing::ExitedWithCode;
    EXPECT_EXIT(check_Default("de_DE.UTF-8", L"05.03.2004 18:03:09", L"Freitag M\x00E4rz"), ExitedWithCode(0),
                "");
    EXPECT_EXIT(check_Default("sv_SE", L"2004-03-05 18:03:09", L"fredag mars"), ExitedWithCode(0), "");
    EXPECT_EXIT(check_Default("C.UTF-8", L"3/5/2004 6:03:09 PM", L"Friday March"), ExitedWithCode(0), "");
    EXPECT_EXIT(check_Default("st_ZA.UTF-8", L"3/5/2004 6:03:09 PM", L"Friday March"), ExitedWithCode(0), "")
        << "ICU has no data of it";
    EXPECT_EXIT(check_Default("de@euro", L"05.03.2004 18:03:09", L"Freitag M\x00E4rz"), ExitedWithCode(0), "")
        << "no country, and a variant";
    EXPECT_EXIT(check_Left_Locale(), ExitedWithCode(0), "");
}

TEST(Locales, Of_The_Runtime_Are_Whole_When_Threads_Change_Them)
{
    // The locale in force is the process's: a text may come in the other thread's locale or in the
    // default one, but never in parts of several.
    const std::set<std::string> Known = {Readable(Wide_Text(L"Freitag M\x00E4rz")),
                                         Readable(Wide_Text(L"vendredi mars")),
                                         Readable(Wide_Text(L"Friday March"))};
    std::atomic<int> nFaults = 0;
    On_Threads(3,
               [&](std::size_t nThread)
               {
                   const unsigned long nLocale = nThread == 0 ? 0x407 : nThread == 1 ? 0x409 : 0x40C;
                   const Lib_DateTime When(2004, 3, 5, 18, 3, 9);
                   for (int i = 0; i < 500; ++i)
                       nFaults += !Known.contains(testing::PrintToString(When.Format(L"%A %B", nLocale)));
               });
    EXPECT_EQ(0, nFaults);
    _wsetlocale(0, L"C");
}
