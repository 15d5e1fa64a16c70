#include "lib_platform.h"

#include <gtest/gtest.h>

#include <vector>

TEST(Character_Classes, Have_The_White_Space_Of_Unicode)
{
    const auto is_Space = [](unsigned int unit)
    {
        return (unit >= 0x09 && unit <= 0x0D) || (unit >= 0x2000 && unit <= 0x200A) || unit == 0x20 ||
               unit == 0x85 || unit == 0xA0 || unit == 0x1680 || unit == 0x2028 || unit == 0x2029 ||
               unit == 0x202F || unit == 0x205F || unit == 0x3000;
    };
    std::vector<wchar_t> every(0x10000);
    for (std::size_t unit = 0; unit < every.size(); ++unit)
    {
        every[unit] = static_cast<wchar_t>(unit);
    }
    std::vector<WORD> classes(every.size());
    ASSERT_TRUE(GetStringTypeW(CT_CTYPE1, every.data(), 0x10000, classes.data()));
    for (unsigned int unit = 0; unit < 0x10000; ++unit)
    {
        ASSERT_EQ(is_Space(unit), (classes[unit] & C1_SPACE) != 0) << std::hex << unit;
        ASSERT_TRUE((classes[unit] & C1_DEFINED) != 0 || classes[unit] == 0) << std::hex << unit;
    }
}

TEST(Character_Classes, Tell_Letters_Digits_And_Signs_Apart)
{
    const std::pair<wchar_t, int> known[] = {
        {'F', C1_DEFINED | C1_UPPER | C1_ALPHA | C1_XDIGIT},
        {'g', C1_DEFINED | C1_LOWER | C1_ALPHA},
        {'7', C1_DEFINED | C1_DIGIT | C1_XDIGIT},
        {'+', C1_DEFINED | C1_PUNCT},
        {'\t', C1_DEFINED | C1_CNTRL | C1_SPACE | C1_BLANK},
        {0x7F, C1_DEFINED | C1_CNTRL},
        {0x0416, C1_DEFINED | C1_UPPER | C1_ALPHA},
        {0x01C5, C1_DEFINED | C1_UPPER | C1_LOWER | C1_ALPHA},
        {0x65E5, C1_DEFINED | C1_ALPHA},
        {0x0967, C1_DEFINED | C1_DIGIT},
        {0xD83D, C1_DEFINED},
        {0x0378, 0},
        {0xFFFF, 0},
    };
    for (const auto& [unit, expected] : known)
    {
        WORD classes[2] = {1, 1};
        EXPECT_TRUE(GetStringTypeW(CT_CTYPE1, &unit, 1, classes));
        EXPECT_EQ(expected, classes[0]) << std::hex << static_cast<unsigned int>(unit);
        EXPECT_EQ(1, classes[1]);
    }
}

TEST(Character_Classes, Refuse_What_Is_Not_Known)
{
    WORD classes[2] = {};
    EXPECT_TRUE(GetStringTypeW(CT_CTYPE1, L"a", -1, classes));
    EXPECT_EQ(C1_DEFINED | C1_CNTRL, classes[1]) << "the NUL counts";
    const auto error = [](DWORD type, LPCWSTR text, int size, WORD* target)
    {
        SetLastError(0);
        EXPECT_FALSE(GetStringTypeW(type, text, size, target));
        return GetLastError();
    };
    EXPECT_EQ(50u, error(CT_CTYPE3, L"a", 1, classes));
    EXPECT_EQ(1004u, error(3, L"a", 1, classes));
    EXPECT_EQ(87u, error(CT_CTYPE1, L"a", 0, classes));
    EXPECT_EQ(87u, error(CT_CTYPE1, nullptr, 1, classes));
    EXPECT_EQ(87u, error(CT_CTYPE1, L"a", 1, nullptr));
}
