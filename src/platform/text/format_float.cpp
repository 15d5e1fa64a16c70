#include "platform/text/format_float.h"

#include "platform/text/format_integer.h"

#include <algorithm>
#include <bit>
#include <charconv>
#include <cstdint>
#include <cstring>

namespace qn_platform
{

namespace
{

__extension__ using Uint128 = unsigned __int128;

constexpr int DEFAULT_PRECISION = 6;
constexpr int DEFAULT_HEX_PRECISION = 13;

/// A number as integer part and a fraction of `m_nPrecision` decimals.
struct Fixed_Point
{
    std::uint64_t m_nInteger;
    std::uint64_t m_nFraction;
};

/// Splits `mantissa` / 2^shift and rounds its fraction to `precision` decimals; exact, since 53 bits times
/// 10^19 fit 128 bits.
Fixed_Point Round_Fraction(std::uint64_t mantissa, int shift, int precision)
{
    Fixed_Point result{shift < 64 ? mantissa >> shift : 0, 0};
    const std::uint64_t rest = shift < 64 ? mantissa & ((std::uint64_t{1} << shift) - 1) : mantissa;
    const std::uint64_t scale = POWERS_OF_TEN[static_cast<std::size_t>(precision)];
    const Uint128 product = static_cast<Uint128>(rest) * scale;
    const Uint128 half = static_cast<Uint128>(1) << (shift - 1);
    const Uint128 remainder = product & (2 * half - 1);
    result.m_nFraction = static_cast<std::uint64_t>(product >> shift);
    const bool odd = ((precision == 0 ? result.m_nInteger : result.m_nFraction) & 1) != 0;
    if (remainder > half || (remainder == half && odd))
        ++result.m_nFraction;
    if (result.m_nFraction == scale)
    {
        result.m_nFraction = 0;
        ++result.m_nInteger;
    }
    return result;
}

/// The quick way for `f`: numbers whose integer part has 64 bits and that aren't very small, with up to 19
/// decimals. False leaves the work to the runtime.
bool Convert_Short_Fixed(double value, long long precision, Float_Text& text)
{
    const auto bits = std::bit_cast<std::uint64_t>(value);
    const int exponent = static_cast<int>(bits >> 52) - 1075;
    if (precision > 19 || exponent > 11 || (exponent < -120 && bits != 0))
        return false;
    const std::uint64_t mantissa = (bits & ((std::uint64_t{1} << 52) - 1)) | (std::uint64_t{1} << 52);
    Fixed_Point number{0, 0};
    if (exponent >= 0)
        number.m_nInteger = mantissa << exponent;
    else if (bits != 0)
        number = Round_Fraction(mantissa, -exponent, static_cast<int>(precision));

    const unsigned int digits = Count_Decimal_Digits(number.m_nInteger);
    Write_Decimal(text.m_Chars, digits, number.m_nInteger);
    Write_Decimal(text.m_Chars + digits, static_cast<unsigned int>(precision), number.m_nFraction);
    text.m_nInteger = digits;
    text.m_nFraction_Start = digits;
    text.m_nFraction = static_cast<std::size_t>(precision);
    text.m_nExponent = 0;
    text.m_nZeros = 0;
    text.m_bPoint = precision != 0;
    return true;
}

std::size_t Print(Float_Text& text, double value, std::chars_format form, long long precision)
{
    const auto end = std::to_chars(text.m_Chars, text.m_Chars + Float_Text::CAPACITY, value, form,
                                   static_cast<int>(precision));
    return static_cast<std::size_t>(end.ptr - text.m_Chars);
}

/// Finds the parts in the `length` characters that were printed, the exponent behind `exponent_mark`.
void Split_Parts(Float_Text& text, std::size_t length, char exponent_mark)
{
    const char* begin = text.m_Chars;
    const char* end = begin + length;
    const char* exponent = std::find(begin, end, exponent_mark);
    const char* point = std::find(begin, exponent, '.');
    text.m_bPoint = point != exponent;
    text.m_nInteger = static_cast<std::size_t>(point - begin);
    text.m_nFraction_Start = text.m_nInteger + (text.m_bPoint ? 1 : 0);
    text.m_nFraction = static_cast<std::size_t>(exponent - begin) - text.m_nFraction_Start;
    text.m_nExponent = static_cast<std::size_t>(end - exponent);
    text.m_nZeros = 0;
}

/// A form with a fixed number of decimals. Those beyond the digits that a double can have are zeros.
void Convert_Decimals(double value, std::chars_format form, char exponent_mark, long long precision,
                      Float_Text& text)
{
    const long long most = form == std::chars_format::hex ? DEFAULT_HEX_PRECISION : Float_Text::MOST_DECIMALS;
    const long long printed = std::min(precision, most);
    Split_Parts(text, Print(text, value, form, printed), exponent_mark);
    text.m_nZeros = precision - printed;
}

/// `g` keeps its trailing zeros with `#`: the exponent after rounding chooses between the two forms, which
/// then print a fixed number of decimals.
void Convert_General_Alternate(double value, long long precision, Float_Text& text)
{
    Convert_Decimals(value, std::chars_format::scientific, 'e', precision - 1, text);
    int exponent = 0;
    const char* mark = text.m_Chars + text.m_nFraction_Start + text.m_nFraction;
    std::from_chars(mark + (mark[1] == '+' ? 2 : 1), mark + text.m_nExponent, exponent);
    if (exponent >= -4 && exponent < precision)
        Convert_Decimals(value, std::chars_format::fixed, 'e', precision - 1 - exponent, text);
}

void Convert_General(double value, bool alternate, long long precision, Float_Text& text)
{
    precision = std::max(precision, 1ll);
    if (alternate)
        return Convert_General_Alternate(value, precision, text);
    const long long printed = std::min<long long>(precision, Float_Text::MOST_DECIMALS);
    Split_Parts(text, Print(text, value, std::chars_format::general, printed), 'e');
}

void Raise_Case(Float_Text& text)
{
    const std::size_t length = text.m_nFraction_Start + text.m_nFraction + text.m_nExponent;
    for (char* position = text.m_Chars; position != text.m_Chars + length; ++position)
    {
        if (*position >= 'a' && *position <= 'z')
            *position = static_cast<char>(*position - 'a' + 'A');
    }
}

} // namespace

void Convert_Float(double value, char conversion, bool alternate, long long precision, Float_Text& text)
{
    const char lower = static_cast<char>(conversion | 0x20);
    if (precision < 0)
        precision = lower == 'a' ? DEFAULT_HEX_PRECISION : DEFAULT_PRECISION;
    switch (lower)
    {
    case 'e':
        Convert_Decimals(value, std::chars_format::scientific, 'e', precision, text);
        break;
    case 'f':
        if (!Convert_Short_Fixed(value, precision, text))
            Convert_Decimals(value, std::chars_format::fixed, 'e', precision, text);
        break;
    case 'g':
        Convert_General(value, alternate, precision, text);
        break;
    default:
        Convert_Decimals(value, std::chars_format::hex, 'p', precision, text);
        break;
    }
    text.m_bPoint = text.m_bPoint || alternate;
    if (lower != conversion)
        Raise_Case(text);
}

} // namespace qn_platform
