#ifndef QNLIB_SRC_STRINGS_FORMAT_ESTIMATE_H
#define QNLIB_SRC_STRINGS_FORMAT_ESTIMATE_H

#include "lib_platform.h"
#include "platform/runtime_text.h"
#include "strings/characters.h"

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstdarg>
#include <cstdlib>
#include <memory>

/// Ends an argument list, also when an exception leaves.
struct End_Of_Arguments
{
    std::va_list& m_Arguments;

    ~End_Of_Arguments() { va_end(m_Arguments); }
};

/// The first pass of the format engine: walks a format and its arguments and adds up the characters to
/// reserve for the result. Each conversion is read into the fields below, which hold for that conversion
/// only. `Char` is the width of the format.
template <class Char>
class Format_Estimate
{
public:
    Format_Estimate(const Char* pFormat, std::va_list arguments) noexcept : m_pAt(pFormat)
    {
        va_copy(m_Arguments, arguments);
    }
    ~Format_Estimate() { va_end(m_Arguments); }
    Format_Estimate(const Format_Estimate&) = delete;
    Format_Estimate& operator=(const Format_Estimate&) = delete;

    /// The largest buffer that the platform's formatters are sure to serve; what doesn't fit is cut.
    static constexpr std::size_t Max_Capacity = INT_MAX;

    /// The characters to reserve, the NUL not counted. std::bad_alloc from a trial print of `f`.
    unsigned long long Compute()
    {
        // A literal reserves the characters from its place to the end of the format, not just one.
        const unsigned long long nFormat = characters::Length(m_pAt);
        const Char* pEnd = m_pAt + nFormat;
        unsigned long long nLiterals = 0; // apart: a member would be stored for each character
        while (m_pAt != pEnd)
        {
            if (*m_pAt == '%' && *++m_pAt != '%')
                read_Conversion();
            else
                nLiterals += static_cast<unsigned long long>(pEnd - m_pAt++);
        }
        return nLiterals + m_nMax_Length;
    }

private:
    enum class Modifier
    {
        None,
        Bits64, ///< I64
        Narrow, ///< h
        Wide    ///< l
    };

    static constexpr unsigned long long Character_Item = 2;
    static constexpr unsigned long long Null_String_Item = 6; // "(null)"
    static constexpr unsigned long long Integer_Minimum = 32;
    static constexpr unsigned long long Scientific_Minimum = 128;
    static constexpr unsigned long long Hash_Flag = 2;
    static constexpr long long Fixed_Scratch = 318; // sign, 309 digits, point, the extra decimals, NUL
    static constexpr long long Extra_Decimals = 6;
    static constexpr long long Sure_Decimals = 64; // every formatter prints as many

    // Behind a conversion that the formatter may read otherwise no argument is touched any more: it might
    // be taken for a string that it is not.
    template <class Argument>
    Argument next_Argument()
    {
        return m_bReadable ? va_arg(m_Arguments, Argument) : Argument();
    }

    // A negative width aligns to the left by its absolute value, a negative precision counts as none.
    long long next_Width() { return std::abs(static_cast<long long>(next_Argument<int>())); }
    long long next_Precision() { return std::max(next_Argument<int>(), 0); }

    long long read_Number() noexcept
    {
        long long nNumber = 0;
        for (; *m_pAt >= '0' && *m_pAt <= '9'; ++m_pAt)
            nNumber = std::min<long long>(nNumber * 10 + (*m_pAt - '0'), INT_MAX);
        return nNumber;
    }

    bool skip(char ch) noexcept
    {
        const bool bThere = *m_pAt == static_cast<Char>(ch);
        m_pAt += bThere;
        return bThere;
    }

    void read_Conversion()
    {
        m_nWidth = 0;
        m_nPrecision = 0;
        m_Modifier = Modifier::None;
        if (*m_pAt <= '9') // no flag, digit or point stands behind '9'
            read_Field();
        read_Modifier();
        if (*m_pAt != 0)
            m_nMax_Length += item_Length(*m_pAt++);
    }

    void read_Field()
    {
        read_Flags();
        if (m_nWidth == 0)
            m_nWidth = read_Number();
        if (skip('.'))
            m_nPrecision = skip('*') ? next_Precision() : read_Number();
    }

    void read_Flags()
    {
        for (;; ++m_pAt)
        {
            if (*m_pAt == '#')
                m_nMax_Length += Hash_Flag;
            else if (*m_pAt == '*')
                m_nWidth = next_Width();
            else if (*m_pAt != ' ' && *m_pAt != '+' && *m_pAt != '-' && *m_pAt != '0')
                return;
        }
    }

    void read_Modifier() noexcept
    {
        switch (*m_pAt)
        {
        case 'I':
            if (m_pAt[1] != '6' || m_pAt[2] != '4')
                return;
            m_pAt += 2;
            m_Modifier = Modifier::Bits64;
            break;
        case 'h':
            m_Modifier = Modifier::Narrow;
            break;
        case 'l':
            m_Modifier = Modifier::Wide;
            break;
        case 'F':
        case 'L':
        case 'N':
            break;
        default:
            return;
        }
        ++m_pAt;
    }

    unsigned long long item_Length(Char chConversion)
    {
        switch (chConversion)
        {
        case 'c':
        case 'C':
        case 's':
        case 'S':
            return m_Modifier == Modifier::Bits64 ? unknown_Item(chConversion) : text_Item(chConversion);
        case 'd':
        case 'i':
        case 'u':
        case 'x':
        case 'X':
        case 'o':
            if (m_Modifier == Modifier::Bits64)
                next_Argument<long long>();
            else
                next_Argument<int>();
            return number_Item(Integer_Minimum);
        case 'p':
            next_Argument<void*>();
            return number_Item(Integer_Minimum);
        case 'e':
        case 'E':
        case 'g':
        case 'G':
            next_Argument<double>();
            return number_Item(Scientific_Minimum);
        case 'f':
            return fixed_Item();
        case 'n':
            next_Argument<void*>();
            return 0;
        default:
            return unknown_Item(chConversion);
        }
    }

    // A conversion that isn't known here reserves nothing. Where the formatter may take an argument for it
    // all the same, no further argument is read.
    unsigned long long unknown_Item(Char chConversion) noexcept
    {
        if (qn_runtime::May_Take_Argument(static_cast<wchar_t>(chConversion), m_Modifier == Modifier::Bits64))
            m_bReadable = false;
        return 0;
    }

    unsigned long long number_Item(unsigned long long nMinimum) const noexcept
    {
        return std::max(nMinimum, static_cast<unsigned long long>(m_nWidth + m_nPrecision));
    }

    unsigned long long text_Item(Char chConversion)
    {
        const bool bOther_Width = chConversion == 'S' || chConversion == 'C';
        const bool bWide = m_Modifier == Modifier::Wide ||
                           (m_Modifier == Modifier::None && (sizeof(Char) == 2) != bOther_Width);
        unsigned long long nItem = Character_Item;
        if (chConversion == 'c' || chConversion == 'C')
            next_Argument<int>();
        else
            nItem = bWide ? string_Length(next_Argument<const wchar_t*>())
                          : string_Length(next_Argument<const char*>());
        if (m_nPrecision != 0)
            nItem = std::min(nItem, static_cast<unsigned long long>(m_nPrecision));
        return std::max(nItem, static_cast<unsigned long long>(m_nWidth));
    }

    // Behind the precision nothing is read: the text need not end there.
    template <class Text>
    unsigned long long string_Length(const Text* pText) const noexcept
    {
        if (pText == nullptr)
            return Null_String_Item;
        const std::size_t nLength =
            m_nPrecision != 0 ? characters::Length_Up_To(pText, static_cast<std::size_t>(m_nPrecision))
                              : characters::Length(pText);
        return std::max<unsigned long long>(nLength, 1);
    }

    // The length of a print with six decimals more, which make up for a precision that is absent. It is
    // printed on trial only where the number alone doesn't tell the length.
    unsigned long long fixed_Item()
    {
        const double dValue = next_Argument<double>();
        const long long nSize =
            std::max(m_nWidth, Fixed_Scratch + m_nPrecision) + (sizeof(Char) == 2 ? 1 : 0);
        const long long nDecimals = m_nPrecision + Extra_Decimals;
        const long long nDigits = nDecimals <= Sure_Decimals ? integer_Digits(std::fabs(dValue)) : 0;
        if (nDigits == 0)
            return trial_Length(static_cast<std::size_t>(nSize), nDecimals, dValue);
        const long long nLength = (std::signbit(dValue) ? 1 : 0) + nDigits + 1 + nDecimals;
        const long long nRoom = std::min<long long>(nSize, Max_Capacity) - 1;
        return static_cast<unsigned long long>(std::min(std::max(nLength, m_nWidth), nRoom));
    }

    // Digits before the point, whichever way the decimals are rounded. 0 leaves it to the trial: for what is
    // no number, too large, or nearer than a half to one more digit; an inexact sum can only add to these.
    static long long integer_Digits(double dMagnitude) noexcept
    {
        constexpr double Too_Large = 1e15;
        long long nDigits = 1;
        double dLimit = 10;
        for (; dMagnitude >= dLimit && dLimit < Too_Large; dLimit *= 10)
            ++nDigits;
        return dMagnitude + 0.5 < dLimit ? nDigits : 0;
    }

    unsigned long long trial_Length(std::size_t nSize, long long nDecimals, double dValue) const
    {
        const auto pScratch = std::make_unique_for_overwrite<Char[]>(nSize);
        print_Fixed(pScratch.get(), std::min(nSize, Max_Capacity), static_cast<int>(m_nWidth),
                    static_cast<int>(std::min<long long>(nDecimals, INT_MAX)), dValue);
        return characters::Length(pScratch.get());
    }

    static void print_Fixed(Char* pBuffer, std::size_t nSize, ...)
    {
        static constexpr Char Format[] = {'%', '*', '.', '*', 'f', 0};
        std::va_list arguments;
        va_start(arguments, nSize);
        if constexpr (sizeof(Char) == 1)
            _vsnprintf_s(pBuffer, nSize, _TRUNCATE, Format, arguments);
        else
            _vsnwprintf_s(pBuffer, nSize, _TRUNCATE, Format, arguments);
        va_end(arguments);
    }

    const Char* m_pAt;
    std::va_list m_Arguments;
    unsigned long long m_nMax_Length = 0;
    long long m_nWidth = 0;     ///< 0 when absent
    long long m_nPrecision = 0; ///< 0 when absent
    Modifier m_Modifier = Modifier::None;
    bool m_bReadable = true;
};

#endif
