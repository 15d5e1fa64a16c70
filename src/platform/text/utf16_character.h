#ifndef QNLIB_SRC_PLATFORM_TEXT_UTF16_CHARACTER_H
#define QNLIB_SRC_PLATFORM_TEXT_UTF16_CHARACTER_H

#include <cstddef>

// One character of 16-bit text at a time.

namespace qn_platform::utf16
{

/// What stands at the front of a text. An unpaired surrogate is not good and has the value U+FFFD.
struct Character
{
    unsigned int value;
    unsigned char size;
    bool good;
};

/// Reads the character at `text`, of which `left` units (at least one) may be looked at.
constexpr Character Read_Character(const wchar_t* text, std::size_t left)
{
    const unsigned int unit = text[0];
    if ((unit & 0xF800) != 0xD800)
    {
        return {unit, 1, true};
    }
    if (unit < 0xDC00 && left > 1 && (text[1] & 0xFC00) == 0xDC00)
    {
        return {0x10000 + ((unit & 0x3FF) << 10) + (text[1] & 0x3FFu), 2, true};
    }
    return {0xFFFD, 1, false};
}

/// The bytes that a character takes in UTF-8.
constexpr unsigned int Utf8_Size(unsigned int value)
{
    return 1u + (value >= 0x80) + (value >= 0x800) + (value >= 0x10000);
}

} // namespace qn_platform::utf16

#endif
