#include "lib_platform.h"

#include <gtest/gtest.h>

#include <string>

namespace
{

/// The bytes of 16-bit text with all its units, in this machine's order or the other.
template <std::size_t Size>
std::string Wide_Bytes(const wchar_t (&text)[Size], std::size_t units = Size - 1, bool reversed = false)
{
    std::string bytes;
    for (std::size_t i = 0; i < units; ++i)
    {
        const char low = static_cast<char>(text[i] & 0xFF);
        const char high = static_cast<char>(text[i] >> 8);
        bytes += reversed ? high : low;
        bytes += reversed ? low : high;
    }
    return bytes;
}

bool Is_Wide(const std::string& bytes)
{
    return IsTextUnicode(bytes.data(), static_cast<int>(bytes.size()), nullptr) != FALSE;
}

int Tests_Passed(const std::string& bytes)
{
    int tests = -1;
    IsTextUnicode(bytes.data(), static_cast<int>(bytes.size()), &tests);
    return tests;
}

} // namespace

TEST(Text_Recognition, Knows_16_Bit_Text)
{
    EXPECT_TRUE(Is_Wide(Wide_Bytes(L"a")));
    EXPECT_TRUE(Is_Wide(Wide_Bytes(L"Hello, world\r\n")));
    EXPECT_TRUE(Is_Wide(Wide_Bytes(L"Stra\u00DFe")));
    EXPECT_TRUE(Is_Wide(Wide_Bytes(L"\u0414\u0430")));
    EXPECT_TRUE(Is_Wide(Wide_Bytes(L"\u041F\u0440\u0438\u0432\u0435\u0442, \u043C\u0438\u0440!")));
    EXPECT_TRUE(Is_Wide(Wide_Bytes(L"\u0391\u03B8\u03AE\u03BD\u03B1")));
    EXPECT_TRUE(Is_Wide(Wide_Bytes(L"\u65E5\u672C\u8A9E\u306E\u6587\u7AE0\u3002")));
    EXPECT_TRUE(Is_Wide(Wide_Bytes(L"\xFEFF\u65E5")));
    EXPECT_TRUE(Is_Wide(Wide_Bytes(L"with its end\0\0\0", 15)));
}

TEST(Text_Recognition, Takes_Other_Bytes_For_What_They_Are)
{
    EXPECT_FALSE(Is_Wide(""));
    EXPECT_FALSE(Is_Wide("a"));
    EXPECT_FALSE(Is_Wide("ab"));
    EXPECT_FALSE(Is_Wide("this app can break"));
    EXPECT_FALSE(Is_Wide("Bush hid the facts"));
    EXPECT_FALSE(Is_Wide("line\r\n\r\nline\t\r\n"));
    EXPECT_FALSE(Is_Wide(std::string("abcdefg\0", 8)));
    EXPECT_FALSE(Is_Wide(std::string("abcdef\0\0", 8)));
    EXPECT_FALSE(Is_Wide(std::string("some text with a blank \0", 24)));
    EXPECT_FALSE(Is_Wide("Stra\xDF"
                         "e \xE0 la \xE9t\xE9"));
    EXPECT_FALSE(Is_Wide("\xCF\xF0\xE8\xE2\xE5\xF2"));
    EXPECT_FALSE(Is_Wide("\xD0\x9F\xD1\x80\xD0\xB8\xD0\xB2\xD0\xB5\xD1\x82"));
    EXPECT_FALSE(Is_Wide(Wide_Bytes(L"reversed", 8, true)));
    EXPECT_FALSE(Is_Wide(Wide_Bytes(L"\xFEFFreversed", 9, true)));
    EXPECT_FALSE(Is_Wide(Wide_Bytes(L"odd") + 'x'));
    EXPECT_FALSE(Is_Wide(Wide_Bytes(L"a\0b", 3)));
    EXPECT_FALSE(Is_Wide(Wide_Bytes(L"ab\xFFFF")));
    EXPECT_FALSE(Is_Wide(std::string("\x01\x00\x02\x00\x03\x00\x07\x01", 8)));
}

TEST(Text_Recognition, Tells_Which_Tests_Passed)
{
    EXPECT_EQ(IS_TEXT_UNICODE_ASCII16 | IS_TEXT_UNICODE_STATISTICS | IS_TEXT_UNICODE_CONTROLS |
                  IS_TEXT_UNICODE_NULL_BYTES,
              Tests_Passed(Wide_Bytes(L"a text")));
    EXPECT_EQ(IS_TEXT_UNICODE_REVERSE_ASCII16 | IS_TEXT_UNICODE_REVERSE_STATISTICS |
                  IS_TEXT_UNICODE_REVERSE_CONTROLS | IS_TEXT_UNICODE_NULL_BYTES,
              Tests_Passed(Wide_Bytes(L"a text", 6, true)));
    EXPECT_EQ(IS_TEXT_UNICODE_SIGNATURE | IS_TEXT_UNICODE_STATISTICS,
              Tests_Passed(Wide_Bytes(L"\xFEFF\u0416\u0436")));
    EXPECT_EQ(IS_TEXT_UNICODE_REVERSE_SIGNATURE | IS_TEXT_UNICODE_ILLEGAL_CHARS |
                  IS_TEXT_UNICODE_REVERSE_STATISTICS,
              Tests_Passed(Wide_Bytes(L"\xFEFF\u0416\u0436", 3, true)));
    EXPECT_EQ(IS_TEXT_UNICODE_ODD_LENGTH, Tests_Passed("odd"));
    EXPECT_EQ(IS_TEXT_UNICODE_ILLEGAL_CHARS, Tests_Passed("ab\r\n"));
    EXPECT_EQ(0, Tests_Passed("even"));

    // Only what is asked for counts.
    const std::string text = Wide_Bytes(L"a\0 b", 4);
    int tests = IS_TEXT_UNICODE_CONTROLS;
    EXPECT_TRUE(IsTextUnicode(text.data(), 8, &tests));
    EXPECT_EQ(IS_TEXT_UNICODE_CONTROLS, tests);
    tests = IS_TEXT_UNICODE_STATISTICS | IS_TEXT_UNICODE_ILLEGAL_CHARS;
    EXPECT_FALSE(IsTextUnicode(text.data(), 8, &tests));
    EXPECT_EQ(IS_TEXT_UNICODE_STATISTICS | IS_TEXT_UNICODE_ILLEGAL_CHARS, tests);
}
