// All locales that there are, the user's by the environment, and many threads in different ones.

#include "lib_datetime.h"
#include "test_text.h"

#include <atomic>
#include <cstdlib>
#include <thread>
#include <vector>

namespace
{

/// Whether a text made by `strText` reads back as the same minute.
void expect_Back(const Lib_String& strText, double dtValue, unsigned long nLocale)
{
    Lib_DateTime When;
    EXPECT_TRUE(When.Parse_Date_Time(strText, 0, nLocale, false));
    EXPECT_NEAR(dtValue, static_cast<double>(When), 1e-9)
        << test_support::Readable(test_support::Text_Of(strText)) << " in " << std::hex << nLocale;
}

[[noreturn]] void check_Default(const char* pName, const wchar_t* pShort, const wchar_t* pLong)
{
    setenv("LC_ALL", pName, 1);
    const Lib_DateTime When(2004, 3, 5, 18, 3, 9);
    bool bGood = true;
    for (const unsigned long nLocale : {0x400UL, 0x800UL, 0UL})
        bGood = bGood && When.Format(0, nLocale, false) == pShort && When.Format(L"%A %B", nLocale) == pLong;
    if (!bGood)
    {
        std::fprintf(stderr, "%s: %s, %s\n", pName,
                     test_support::Readable(test_support::Text_Of(When.Format(0, 0x400, false))).c_str(),
                     test_support::Readable(test_support::Text_Of(When.Format(L"%A %B", 0x400))).c_str());
    }
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
    const double dtDate_And_Time = Lib_DateTime(2026, 2, 3, 16, 5, 6);
    const double dtDate = Lib_DateTime(100, 12, 11, 0, 0, 0);
    int nLocales = 0;
    for (LCID nLocale = 0x401; nLocale < 0x8000; ++nLocale)
    {
        wchar_t text[260];
        // Not every one: ICU takes some milliseconds to open a locale.
        if (nLocale % 5 != 3 || GetLocaleInfoW(nLocale, 0x1001, text, 260) == 0)
            continue;
        ++nLocales;
        expect_Back(Lib_DateTime(dtDate_And_Time, false).Format(0, nLocale, false), dtDate_And_Time, nLocale);
        expect_Back(Lib_DateTime(dtDate, false).Format(0, nLocale, false), dtDate, nLocale);
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

TEST(Locales, Of_The_User_Come_From_The_Environment)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    using testing::ExitedWithCode;
    EXPECT_EXIT(check_Default("de_DE.UTF-8", L"05.03.2004 18:03:09", L"Freitag M\x00E4rz"), ExitedWithCode(0),
                "");
    EXPECT_EXIT(check_Default("sv_SE", L"2004-03-05 18:03:09", L"fredag mars"), ExitedWithCode(0), "");
    EXPECT_EXIT(check_Default("C", L"3/5/2004 6:03:09 PM", L"Friday March"), ExitedWithCode(0), "");
    EXPECT_EXIT(check_Default("C.UTF-8", L"3/5/2004 6:03:09 PM", L"Friday March"), ExitedWithCode(0), "");
    EXPECT_EXIT(check_Default("st_ZA.UTF-8", L"3/5/2004 6:03:09 PM", L"Friday March"), ExitedWithCode(0), "")
        << "ICU has no data of it";
    EXPECT_EXIT(check_Default("de@euro", L"05.03.2004 18:03:09", L"Freitag M\x00E4rz"), ExitedWithCode(0), "")
        << "no country, and a variant";
    EXPECT_EXIT(check_Left_Locale(), ExitedWithCode(0), "");
}

TEST(Locales, Do_Not_Mix_When_Threads_Write_In_Different_Ones)
{
    struct Text
    {
        unsigned long m_nLocale;
        const wchar_t* m_pExpected;
    };
    constexpr Text Texts[] = {{0x409, L"1/15/2004 6:07:08 PM"},
                              {0x41D, L"2004-01-15 18:07:08"},
                              {0x419, L"15.01.2004 18:07:08"},
                              {0x40B, L"15.1.2004 18.07.08"}};
    std::atomic<int> nFaults = 0;
    std::vector<std::thread> Threads;
    for (const Text& Case : Texts)
    {
        Threads.emplace_back(
            [&Case, &nFaults]
            {
                const Lib_DateTime When(2004, 1, 15, 18, 7, 8);
                for (int i = 0; i < 2000; ++i)
                {
                    const Lib_String strText = When.Format(0, Case.m_nLocale, false);
                    Lib_DateTime Back;
                    if (strText != Case.m_pExpected ||
                        !Back.Parse_Date_Time(strText, 0, Case.m_nLocale, false) || Back != When)
                        ++nFaults;
                }
            });
    }
    for (std::thread& Thread : Threads)
        Thread.join();
    EXPECT_EQ(0, nFaults);
}

TEST(Locales, Of_The_Runtime_Are_Whole_When_Threads_Change_Them)
{
    // The locale in force is the process's: a text may come in the other thread's locale or in the
    // default one, but never in parts of several.
    std::atomic<int> nFaults = 0;
    std::vector<std::thread> Threads;
    for (const unsigned long nLocale : {0x407UL, 0x419UL, 0x40CUL})
    {
        Threads.emplace_back(
            [nLocale, &nFaults]
            {
                const Lib_DateTime When(2004, 3, 5, 18, 3, 9);
                for (int i = 0; i < 500; ++i)
                {
                    const Lib_String strText = When.Format(L"%A %B", nLocale);
                    bool bKnown = false;
                    for (const wchar_t* pText :
                         {L"Freitag M\x00E4rz", L"vendredi mars", L"Friday March",
                          L"\x043F\x044F\x0442\x043D\x0438\x0446\x0430 \x043C\x0430\x0440\x0442"})
                        bKnown = bKnown || strText == pText;
                    nFaults += bKnown ? 0 : 1;
                }
            });
    }
    for (std::thread& Thread : Threads)
        Thread.join();
    EXPECT_EQ(0, nFaults);
    _wsetlocale(0, L"C");
}
