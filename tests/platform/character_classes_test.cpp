#include "lib_platform.h"

#include <gtest/gtest.h>

#include <set>
#include <vector>

namespace
{

WORD Classes(unsigned int unit)
{
    const wchar_t text = static_cast<wchar_t>(unit);
    WORD classes = 0;
    EXPECT_TRUE(GetStringTypeW(CT_CTYPE1, &text, 1, &classes));
    return classes;
}

} // namespace

TEST(Character_Classes, Have_The_White_Space_Of_Unicode)
{
    std::set<unsigned int> spaces{0x20, 0x85, 0xA0, 0x1680, 0x2028, 0x2029, 0x202F, 0x205F, 0x3000};
    for (unsigned int unit = 0x09; unit <= 0x0D; ++unit)
    {
        spaces.insert(unit);
    }
    for (unsigned int unit = 0x2000; unit <= 0x200A; ++unit)
    {
        spaces.insert(unit);
    }
    std::vector<wchar_t> every(0x10000);
    for (std::size_t unit = 0; unit < every.size(); ++unit)
    {
        every[unit] = static_cast<wchar_t>(unit);
    }
    std::vector<WORD> classes(every.size());
    ASSERT_TRUE(GetStringTypeW(CT_CTYPE1, every.data(), 0x10000, classes.data()));
    for (unsigned int unit = 0; unit < 0x10000; ++unit)
    {
        ASSERT_EQ(spaces.count(unit) == 1, (classes[unit] & C1_SPACE) != 0) << std::hex << unit;
        ASSERT_TRUE((classes[unit] & C1_DEFINED) != 0 || classes[unit] == 0) << std::hex << unit;
    }
}

TEST(Character_Classes, Tell_Letters_Digits_And_Signs_Apart)
{
    EXPECT_EQ(C1_DEFINED | C1_UPPER | C1_ALPHA | C1_XDIGIT, Classes('F'));
    EXPECT_EQ(C1_DEFINED | C1_LOWER | C1_ALPHA, Classes('g'));
    EXPECT_EQ(C1_DEFINED | C1_DIGIT | C1_XDIGIT, Classes('7'));
    EXPECT_EQ(C1_DEFINED | C1_PUNCT, Classes('+'));
    EXPECT_EQ(C1_DEFINED | C1_CNTRL | C1_SPACE | C1_BLANK, Classes('\t'));
    EXPECT_EQ(C1_DEFINED | C1_CNTRL | C1_SPACE, Classes('\n'));
    EXPECT_EQ(C1_DEFINED | C1_SPACE | C1_BLANK, Classes(' '));
    EXPECT_EQ(C1_DEFINED | C1_CNTRL, Classes(0x7F));
    EXPECT_EQ(C1_DEFINED | C1_UPPER | C1_ALPHA, Classes(0x0416));
    EXPECT_EQ(C1_DEFINED | C1_LOWER | C1_ALPHA, Classes(0x0436));
    EXPECT_EQ(C1_DEFINED | C1_UPPER | C1_LOWER | C1_ALPHA, Classes(0x01C5));
    EXPECT_EQ(C1_DEFINED | C1_ALPHA, Classes(0x65E5));
    EXPECT_EQ(C1_DEFINED | C1_DIGIT, Classes(0x0967));
    EXPECT_EQ(C1_DEFINED | C1_PUNCT, Classes(0x3001));
    EXPECT_EQ(C1_DEFINED, Classes(0xD83D));
    EXPECT_EQ(0, Classes(0x0378));
    EXPECT_EQ(0, Classes(0xFFFF));
}

TEST(Character_Classes, Refuse_What_Is_Not_Known)
{
    WORD classes[3] = {1, 1, 1};
    EXPECT_TRUE(GetStringTypeW(CT_CTYPE1, L"a", -1, classes));
    EXPECT_EQ(C1_DEFINED | C1_CNTRL, classes[1]);
    EXPECT_EQ(1, classes[2]);
    const auto error = [&](DWORD type, LPCWSTR text, int size, WORD* target)
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
