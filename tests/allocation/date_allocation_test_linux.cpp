// Short memory while a date is written and while its locale is taken from ICU. ICU's own allocations don't
// fail here: it does not survive that.

#include "failing_allocator.h"
#include "lib_datetime.h"
#include "test_text.h"

#include <iterator>
#include <new>

using namespace test_support;

namespace
{

/// Languages whose locale is made twice, for the language alone and for its country, and writes the same.
constexpr unsigned long Languages[] = {0x02, 0x03, 0x05, 0x07, 0x08, 0x0B, 0x0C, 0x0D, 0x0E,
                                       0x0F, 0x10, 0x11, 0x12, 0x13, 0x15, 0x18, 0x19, 0x1A,
                                       0x1B, 0x1C, 0x1D, 0x1E, 0x1F, 0x20, 0x21, 0x22, 0x23,
                                       0x24, 0x25, 0x26, 0x27, 0x29, 0x2A, 0x2B, 0x2D, 0x2F};

const Lib_DateTime When(2004, 3, 5, 18, 3, 9);

Lib_String write_Or_Fail(unsigned long nLocale, unsigned int nNth, bool& bFailed)
{
    const Failing_Allocation failure(nNth);
    Lib_String strText;
    try
    {
        strText = When.Format(0, nLocale, false);
    }
    catch (const std::bad_alloc&)
    {
    }
    bFailed = failure.Has_Failed();
    return strText;
}

Lib_String write_All(unsigned long nLocale)
{
    return When.Format(0, nLocale, false) + L"|" + When.Format(L"%#c %a %A %b %B %p %x", nLocale);
}

} // namespace

TEST(Date_Allocation, Writes_The_Whole_Text_Or_None)
{
    const Lib_String strRight = When.Format(0, 0x409, false);
    const auto write = [&](unsigned int nNth)
    {
        bool bFailed = false;
        EXPECT_TEXT_EQ(nNth == 1 ? L"" : strRight, write_Or_Fail(0x409, nNth, bFailed));
        return bFailed;
    };
    EXPECT_EQ(1U, Fail_Each_Allocation_Without_Loss(write));
}

TEST(Date_Allocation, Spoils_No_Locale)
{
    const unsigned long long nBefore = Allocation_Count();
    const Lib_String strFirst = When.Format(0, 0x414, false);
    const auto nOf_A_Locale = static_cast<unsigned int>(Allocation_Count() - nBefore);
    ASSERT_LT(std::size(Languages), nOf_A_Locale);
    unsigned int nNth = 0;
    unsigned int nFailures = 0;
    for (const unsigned long nLanguage : Languages)
    {
        const unsigned long nLocale = 0x400 | nLanguage;
        nNth += nOf_A_Locale / static_cast<unsigned int>(std::size(Languages));
        bool bFailed = false;
        const Lib_String strShort = write_Or_Fail(nLocale, nNth, bFailed);
        nFailures += bFailed ? 1U : 0U;
        const Lib_String strText = write_All(nLocale);
        EXPECT_TEXT_EQ(write_All(nLanguage), strText) << std::hex << nLocale;
        EXPECT_TRUE(strShort.Is_Empty() || strText.Find(strShort) == 0) << std::hex << nLocale;
    }
    EXPECT_LT(std::size(Languages) * 3 / 4, nFailures);
}
