// Short memory while a date is written and while its locale is taken from ICU. ICU's own allocations don't
// fail here: it does not survive that.

#include "failing_allocator.h"
#include "lib_datetime.h"
#include "test_text.h"

#include <cstdlib>
#include <string>
#include <utility>

using namespace test_support;

namespace
{

const Lib_DateTime When(2004, 3, 5, 18, 3, 9);

Lib_String write_All(unsigned long nLocale)
{
    return When.Format(0, nLocale, false) + L"|" + When.Format(L"%#c %a %A %b %B %p %x", nLocale);
}

} // namespace

TEST(Date_Allocation, Writes_The_Whole_Text_Or_None_And_Spoils_No_Locale)
{
    // Languages whose locale is made twice, for the language alone and for its country, and writes the same.
    constexpr unsigned long Languages[] = {0x02, 0x03, 0x05, 0x07, 0x08, 0x0B, 0x0C, 0x0D, 0x0E, 0x0F,
                                           0x10, 0x11, 0x12, 0x13, 0x15, 0x18, 0x19, 0x1A, 0x1B, 0x1C,
                                           0x1D, 0x1E, 0x1F, 0x20, 0x21, 0x22, 0x23, 0x24};
    constexpr unsigned int nLanguages = sizeof Languages / sizeof Languages[0];
    static bool s_bMade = false;
    if (std::exchange(s_bMade, true))
    {
        GTEST_SKIP() << "a process makes its locales once, and has made these";
    }
    const unsigned long long nBefore = Allocation_Count();
    When.Format(0, 0x414, false);
    const auto nStep = static_cast<unsigned int>(Allocation_Count() - nBefore) / nLanguages;
    ASSERT_LT(0U, nStep);
    unsigned int nFailures = 0;
    for (unsigned int i = 0; i < nLanguages; ++i)
    {
        const unsigned long nLocale = 0x400 | Languages[i];
        Lib_String strShort;
        const Outcome Result =
            Call_Failing(nStep * (i + 1), [&] { strShort = When.Format(0, nLocale, false); });
        EXPECT_EQ(Result.m_bFailed, Result.m_bThrown) << std::hex << nLocale;
        nFailures += Result.m_bFailed;
        const Lib_String strText = write_All(nLocale);
        EXPECT_TEXT_EQ(write_All(Languages[i]), strText) << std::hex << nLocale;
        EXPECT_TRUE(strShort.Is_Empty() || strText.Find(strShort) == 0) << std::hex << nLocale;
    }
    EXPECT_LT(nLanguages * 3 / 4, nFailures);
}

TEST(Date_Allocation, Leaves_No_Named_Locale_In_Force_Behind_A_Format)
{
    // Each round changes the environment, so that the user's locale is looked for anew.
    const char* const pBefore = std::getenv("LC_TIME");
    const std::string strBefore = pBefore == nullptr ? "" : pBefore;
    When.Format(L"%A", 0x419);
    const unsigned int nFailures = Fail_Each_Allocation(
        [&](unsigned int nNth)
        {
            setenv("LC_TIME", ("fi_FI.UTF-8@" + std::to_string(nNth)).c_str(), 1);
            const Outcome Result = Call_Failing(nNth, [] { When.Format(L"%A", 0x419); });
            EXPECT_NE(Lib_String(L"Russian_Russia.1251"), _wsetlocale(0, nullptr));
            return Result.m_bFailed;
        });
    EXPECT_LT(5U, nFailures);
    setenv("LC_TIME", strBefore.c_str(), 1);
    _wsetlocale(0, L"C");
}
