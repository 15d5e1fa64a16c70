#ifndef QNLIB_SRC_PLATFORM_TEXT_FORMAT_FLOAT_H
#define QNLIB_SRC_PLATFORM_TEXT_FORMAT_FLOAT_H

#include <cstddef>

namespace qn_platform
{

/// The text of a finite double without its sign, in parts, since the decimal point is the locale's and a
/// precision can ask for any number of zeros: integer digits, point, fraction digits, zeros, exponent.
struct Float_Text
{
    static constexpr int MOST_DECIMALS = 1100; ///< the longest double has 1,074 decimals and 767 digits
    static constexpr std::size_t CAPACITY = 320 + MOST_DECIMALS;

    char m_Chars[CAPACITY];
    std::size_t m_nInteger;        ///< characters before the point, from the beginning
    std::size_t m_nFraction_Start; ///< where the fraction digits are
    std::size_t m_nFraction;
    std::size_t m_nExponent; ///< characters of the exponent, right behind the fraction
    long long m_nZeros;      ///< further zeros behind the fraction digits
    bool m_bPoint;
};

/// Converts the finite, not negative `value` for the conversion `e`, `f`, `g` or `a` or its upper-case
/// form, as printf does in round-half-to-even; `precision` is -1 for none. `a` has 13 digits by default and
/// no "0x" here.
void Convert_Float(double value, char conversion, bool alternate, long long precision, Float_Text& text);

} // namespace qn_platform

#endif
