#ifndef QNLIB_SRC_PLATFORM_TEXT_FORMAT_INTEGER_H
#define QNLIB_SRC_PLATFORM_TEXT_FORMAT_INTEGER_H

#include <array>
#include <bit>
#include <cstddef>
#include <cstring>

// Digits of unsigned integers: their number first, then the digits themselves from the last to the first,
// straight to their place.

namespace qn_platform
{

inline constexpr std::size_t MOST_DIGITS = 22; ///< of a 64-bit value, in octal

inline constexpr std::array<unsigned long long, 20> POWERS_OF_TEN = []
{
    std::array<unsigned long long, 20> powers{1};
    for (std::size_t index = 1; index < powers.size(); ++index)
        powers[index] = powers[index - 1] * 10;
    return powers;
}();

/// "00" to "99", one behind the other.
template <class Char>
[[gnu::visibility("hidden")]] inline constexpr std::array<Char, 200> DIGIT_PAIRS = []
{
    std::array<Char, 200> pairs{};
    for (std::size_t index = 0; index < 100; ++index)
    {
        pairs[2 * index] = static_cast<Char>('0' + index / 10);
        pairs[2 * index + 1] = static_cast<Char>('0' + index % 10);
    }
    return pairs;
}();

/// The number of decimal digits, 1 for 0. 1233 / 4096 is log10(2) near enough for 64 bits.
inline unsigned int Count_Decimal_Digits(unsigned long long value)
{
    const unsigned int bits = static_cast<unsigned int>(std::bit_width(value | 1));
    const unsigned int estimate = bits * 1233 >> 12;
    return estimate + 1 - (value < POWERS_OF_TEN[estimate] && estimate != 0 ? 1 : 0);
}

/// The number of digits of `shift` bits each, 1 for 0.
inline unsigned int Count_Binary_Digits(unsigned long long value, unsigned int shift)
{
    return (static_cast<unsigned int>(std::bit_width(value | 1)) + shift - 1) / shift;
}

template <class Char>
inline void Store_Digit_Pair(Char* target, unsigned long long pair)
{
    std::memcpy(target, DIGIT_PAIRS<Char>.data() + 2 * pair, 2 * sizeof(Char));
}

/// Writes the last `count` decimal digits of `value`, leading zeros included.
template <class Char>
void Write_Decimal(Char* target, unsigned int count, unsigned long long value)
{
    for (; count >= 2; count -= 2, value /= 100)
        Store_Digit_Pair(target + count - 2, value % 100);
    if (count != 0)
        *target = static_cast<Char>('0' + value % 10);
}

/// Writes the last `count` digits of `shift` bits each.
template <class Char>
void Write_Binary(Char* target, unsigned int count, unsigned long long value, unsigned int shift,
                  const char* digits)
{
    const unsigned long long mask = (1ull << shift) - 1;
    for (; count != 0; value >>= shift)
        target[--count] = static_cast<Char>(digits[value & mask]);
}

} // namespace qn_platform

#endif
