#ifndef QNLIB_SRC_PLATFORM_TEXT_UTF8_SEQUENCE_H
#define QNLIB_SRC_PLATFORM_TEXT_UTF8_SEQUENCE_H

#include <cstddef>

// One sequence of UTF-8 at a time, by the Unicode standard's table of well-formed byte sequences.

namespace qn_platform::utf8
{

/// What stands at the front of a text: a character, or a bad part of `size` bytes.
struct Sequence
{
    unsigned int character;
    unsigned char size;
    bool good;
};

inline constexpr unsigned int REPLACEMENT = 0xFFFD;

constexpr bool Continues(unsigned char byte) { return (byte & 0xC0) == 0x80; }

/// The number of bytes that a lead byte announces; 0 for a byte that leads nothing.
constexpr unsigned int Announced_Size(unsigned char lead)
{
    if (lead < 0x80)
    {
        return 1;
    }
    if (lead < 0xE0)
    {
        return lead >= 0xC2 ? 2 : 0;
    }
    return lead < 0xF0 ? 3 : (lead <= 0xF4 ? 4 : 0);
}

/// Whether the second byte may follow the lead. Beyond being a continuation it keeps out overlong forms,
/// surrogates and what lies above U+10FFFF.
constexpr bool May_Follow(unsigned char lead, unsigned char second)
{
    switch (lead)
    {
    case 0xE0:
        return second >= 0xA0 && second <= 0xBF;
    case 0xED:
        return second >= 0x80 && second <= 0x9F;
    case 0xF0:
        return second >= 0x90 && second <= 0xBF;
    case 0xF4:
        return second >= 0x80 && second <= 0x8F;
    default:
        return Continues(second);
    }
}

/// Reads the sequence at `text`, of which `left` bytes (at least one) may be looked at. A bad part is the
/// longest beginning of a well-formed sequence, or one byte.
constexpr Sequence Read_Sequence(const unsigned char* text, std::size_t left)
{
    constexpr unsigned char LEAD_BITS[5] = {0, 0x7F, 0x1F, 0x0F, 0x07};
    const unsigned int announced = Announced_Size(text[0]);
    unsigned int character = text[0] & LEAD_BITS[announced];
    unsigned char size = 1;
    while (size < announced && size < left &&
           (size == 1 ? May_Follow(text[0], text[1]) : Continues(text[size])))
    {
        character = (character << 6) | (text[size] & 0x3Fu);
        ++size;
    }
    return size == announced ? Sequence{character, size, true} : Sequence{REPLACEMENT, size, false};
}

} // namespace qn_platform::utf8

#endif
