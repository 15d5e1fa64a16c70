#include "lib_platform.h"
#include "platform/runtime_text.h"
#include "platform/text/runtime_locale.h"
#include "platform/white_space.h"

#include <charconv>
#include <climits>
#include <cmath>
#include <cstring>
#include <limits>
#include <string>
#include <system_error>

// Numbers out of text.

namespace qn_runtime
{

namespace
{

/// The value of a digit in any base; 36 for what is none.
int get_Digit(wchar_t unit)
{
    if (unit >= '0' && unit <= '9')
        return unit - '0';
    const int letter = (unit | 0x20) - 'a';
    return unit < 0x80 && letter >= 0 && letter < 26 ? letter + 10 : 36;
}

/// Reads the prefix of a base and answers where the digits begin. An 0x without a hex digit behind it is no
/// prefix, but the number 0.
const wchar_t* read_Base(const wchar_t* text, int& base)
{
    const bool hex_prefix = text[0] == '0' && (text[1] | 0x20) == 'x' && get_Digit(text[2]) < 16;
    if (base == 0)
        base = hex_prefix ? 16 : text[0] == '0' ? 8 : 10;
    return base == 16 && hex_prefix ? text + 2 : text;
}

/// The digits' value, held at `limit` when it is more.
long long read_Digits(const wchar_t* text, int base, long long limit)
{
    long long value = 0;
    for (int digit = get_Digit(*text); digit < base; digit = get_Digit(*++text))
    {
        value = value * base + digit;
        if (value > limit)
            return limit;
    }
    return value;
}

/// A decimal number with an optional exponent in a text: where its parts are.
class Double_Reader
{
public:
    explicit Double_Reader(const char* text) : m_pText(text) {}

    double Read(char decimal_point)
    {
        while ((*m_pText >= 0x09 && *m_pText <= 0x0D) || *m_pText == ' ')
            ++m_pText;
        const bool negative = *m_pText == '-';
        if (negative || *m_pText == '+')
            ++m_pText;
        const double value = read_Magnitude(decimal_point);
        return negative && m_nDigits != 0 ? -value : value;
    }

private:
    static bool is_Decimal(char character) { return character >= '0' && character <= '9'; }

    double read_Magnitude(char decimal_point)
    {
        measure(decimal_point);
        if (m_nDigits == 0)
            return 0.0;
        if (decimal_point == '.' || m_nPoint == m_nLength)
            return convert(m_pText);
        std::string text(m_pText, m_nLength);
        text[m_nPoint] = '.';
        return convert(text.data());
    }

    std::size_t skip_Digits(std::size_t position)
    {
        for (; is_Decimal(m_pText[position]); ++position)
        {
            m_bSignificant = m_bSignificant || m_pText[position] != '0';
            if (m_bSignificant)
                ++m_nSignificant;
        }
        return position;
    }

    /// Finds the number's end, its point (or the end), and its magnitude.
    void measure(char decimal_point)
    {
        std::size_t position = skip_Digits(0);
        m_nDigits = position;
        m_nMagnitude = static_cast<long long>(m_nSignificant);
        m_nPoint = std::string::npos;
        if (m_pText[position] == decimal_point)
        {
            m_nPoint = position;
            position = skip_Digits(position + 1);
            const std::size_t decimals = position - m_nPoint - 1;
            m_nDigits += decimals;
            if (m_nMagnitude == 0)
                m_nMagnitude = static_cast<long long>(m_nSignificant) - static_cast<long long>(decimals);
        }
        m_nLength = measure_Exponent(position);
        if (m_nPoint == std::string::npos)
            m_nPoint = m_nLength;
    }

    std::size_t measure_Exponent(std::size_t position)
    {
        if ((m_pText[position] | 0x20) != 'e')
            return position;
        std::size_t digits = position + 1;
        const bool negative = m_pText[digits] == '-';
        if (negative || m_pText[digits] == '+')
            ++digits;
        if (!is_Decimal(m_pText[digits]))
            return position;
        long long exponent = 0;
        for (; is_Decimal(m_pText[digits]); ++digits)
            exponent = exponent < LLONG_MAX / 100 ? exponent * 10 + (m_pText[digits] - '0') : exponent;
        m_nMagnitude += negative ? -exponent : exponent;
        return digits;
    }

    /// `text` is the number with a plain point. What is beyond the range gives the limit on its side.
    double convert(const char* text) const
    {
        double value = 0.0;
        const auto end = std::from_chars(text, text + m_nLength, value);
        if (end.ec == std::errc::result_out_of_range)
            return m_nMagnitude > 0 ? HUGE_VAL : 0.0;
        return value;
    }

    const char* m_pText;
    std::size_t m_nLength = 0;      ///< of the number, with its exponent
    std::size_t m_nPoint = 0;       ///< where the point is, or the length
    std::size_t m_nDigits = 0;      ///< 0 when there is no number
    std::size_t m_nSignificant = 0; ///< digits from the first that isn't 0
    long long m_nMagnitude = 0;     ///< about the logarithm of the value: above 0 for large ones
    bool m_bSignificant = false;
};

} // namespace

int Parse_Int(const wchar_t* text, int base)
{
    if (base < 0 || base == 1 || base > 36)
        return 0;
    while (Is_White_Space(*text))
        ++text;
    const bool negative = *text == '-';
    if (negative || *text == '+')
        ++text;
    text = read_Base(text, base);
    const long long value = read_Digits(text, base, negative ? -static_cast<long long>(INT_MIN) : INT_MAX);
    return static_cast<int>(negative ? -value : value);
}

double Parse_Double(const char* text)
{
    return Double_Reader(text).Read(qn_platform::To_Decimal_Point<char>(qn_platform::Get_Runtime_Locale()));
}

} // namespace qn_runtime
