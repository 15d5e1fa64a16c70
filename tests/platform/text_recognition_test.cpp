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

void Expect_Wide(bool wide, const std::string& bytes)
{
    EXPECT_EQ(wide, IsTextUnicode(bytes.data(), static_cast<int>(bytes.size()), nullptr) != FALSE) << bytes;
}

} // namespace

TEST(Text_Recognition, Knows_16_Bit_Text)
{
    Expect_Wide(true, Wide_Bytes(L"a"));
    Expect_Wide(true, Wide_Bytes(L"Hello, world\r\n"));
    Expect_Wide(true, Wide_Bytes(L"Stra\u00DFe"));
    Expect_Wide(true, Wide_Bytes(L"\u041F\u0440\u0438\u0432\u0435\u0442, \u043C\u0438\u0440!"));
    Expect_Wide(true, Wide_Bytes(L"\u65E5\u672C\u8A9E\u306E\u6587\u7AE0\u3002"));
    Expect_Wide(true, Wide_Bytes(L"\xFEFF\u65E5"));
    Expect_Wide(true, Wide_Bytes(L"with its end\0\0\0", 15));
}

TEST(Text_Recognition, Takes_Other_Bytes_For_What_They_Are)
{
    for (const char* const text :
         {"", "a", "ab", "this app can break", "Bush hid the facts", "line\r\n\r\nline\t\r\n",
          "\xCF\xF0\xE8\xE2\xE5\xF2", "\xD0\x9F\xD1\x80\xD0\xB8\xD0\xB2\xD0\xB5\xD1\x82"})
    {
        Expect_Wide(false, text);
    }
    Expect_Wide(false, std::string("abcdefg\0", 8));
    Expect_Wide(false, std::string("abcdef\0\0", 8));
    Expect_Wide(false, Wide_Bytes(L"\xFEFFreversed", 9, true));
    Expect_Wide(false, Wide_Bytes(L"odd") + 'x');
    Expect_Wide(false, Wide_Bytes(L"a\0b", 3));
    Expect_Wide(false, Wide_Bytes(L"ab\xFFFF"));
    Expect_Wide(false, std::string("\x01\x00\x02\x00\x03\x00\x07\x01", 8));
}

TEST(Text_Recognition, Tells_Which_Of_The_Tests_Asked_For_Passed)
{
    const std::string text = Wide_Bytes(L"a\0 b", 4);
    for (const int asked :
         {IS_TEXT_UNICODE_CONTROLS, IS_TEXT_UNICODE_STATISTICS | IS_TEXT_UNICODE_ILLEGAL_CHARS})
    {
        int passed = asked;
        IsTextUnicode(text.data(), 8, &passed);
        EXPECT_EQ(asked, passed);
    }
    int passed = -1;
    IsTextUnicode("odd", 3, &passed);
    EXPECT_EQ(IS_TEXT_UNICODE_ODD_LENGTH, passed);
}
