#include "lib_platform.h"
#include "platform/text/format_float.h"
#include "platform/text/format_integer.h"
#include "platform/text/format_item.h"
#include "platform/text/format_output.h"
#include "platform/text/runtime_locale.h"

#include <climits>
#include <cmath>
#include <cstring>

// The bounded formatters. Both widths come from the one body below; what differs is the type of the
// characters. 8-bit and 16-bit text are mapped onto one another one to one below 256, in every locale, so
// that a text never needs more characters than it has.

namespace qn_platform
{

namespace
{

template <class Char>
const Char* Find_Percent(const Char* format)
{
    while (*format != 0 && *format != '%')
        ++format;
    return format;
}

template <class Char>
std::size_t Measure(const Char* text, long long limit)
{
    if constexpr (sizeof(Char) == 1)
        return limit < 0 ? std::strlen(text) : strnlen(text, static_cast<std::size_t>(limit));
    std::size_t length = 0;
    while (static_cast<long long>(length) != limit && text[length] != 0)
        ++length;
    return length;
}

/// What the platform pads with on the left: zeros for every conversion, unless the text stands on the left.
template <class Char>
Char Get_Padding(const Format_Item& item)
{
    return static_cast<Char>(item.m_bZero && !item.m_bLeft ? '0' : ' ');
}

template <class Char, class Source>
void Print_Text(Bounded_Output<Char>& output, const Format_Item& item, const Source* text, std::size_t length)
{
    const long long padding = item.m_nWidth - static_cast<long long>(length);
    if (!item.m_bLeft)
        output.Fill(Get_Padding<Char>(item), padding);
    output.Copy(text, length);
    if (item.m_bLeft)
        output.Fill(static_cast<Char>(' '), padding);
}

template <class Source, class Char>
void Print_String(Bounded_Output<Char>& output, const Format_Item& item, const void* argument)
{
    if (argument == nullptr)
        return Print_Text(output, item, "(null)", Measure("(null)", item.m_nPrecision));
    const Source* text = static_cast<const Source*>(argument);
    Print_Text(output, item, text, Measure(text, item.m_nPrecision));
}

/// Which width a string or character conversion reads. `capital` is the form `S` or `C`.
template <class Char>
bool Reads_Wide(const Format_Item& item, bool capital)
{
    switch (item.m_Size)
    {
    case Format_Size::narrow8:
    case Format_Size::narrow:
        return false;
    case Format_Size::wide:
        return true;
    default:
        return (sizeof(Char) == sizeof(wchar_t)) != capital;
    }
}

template <class Char>
void Print_Character(Bounded_Output<Char>& output, const Format_Item& item, int argument, bool wide)
{
    const Char character =
        wide ? To_Width<Char>(static_cast<wchar_t>(argument)) : To_Width<Char>(static_cast<char>(argument));
    Print_Text(output, item, &character, 1);
}

/// The characters in front of a number's digits.
struct Number_Prefix
{
    char m_Chars[3];
    unsigned int m_nLength = 0;

    void Add(char character) { m_Chars[m_nLength++] = character; }
    void Add_Sign(bool negative, const Format_Item& item)
    {
        if (negative)
            Add('-');
        else if (item.m_bPlus)
            Add('+');
        else if (item.m_bBlank)
            Add(' ');
    }
};

/// Digits of one base, written by the functions of format_integer.h.
struct Integer_Digits
{
    unsigned long long m_nValue;
    unsigned int m_nShift; ///< bits a digit, 0 for decimal
    const char* m_pDigits = nullptr;

    unsigned int Count() const
    {
        return m_nShift == 0 ? Count_Decimal_Digits(m_nValue) : Count_Binary_Digits(m_nValue, m_nShift);
    }

    template <class Char>
    void Write(Char* target, unsigned int count) const
    {
        if (m_nShift == 0)
            Write_Decimal(target, count, m_nValue);
        else
            Write_Binary(target, count, m_nValue, m_nShift, m_pDigits);
    }
};

template <class Char>
void Put_Digits(Bounded_Output<Char>& output, const Integer_Digits& digits, unsigned int count)
{
    if (output.Get_Room() >= count)
    {
        digits.Write(output.Get_Next(), count);
        output.Advance(count);
        return;
    }
    Char scratch[MOST_DIGITS];
    digits.Write(scratch, count);
    output.Copy(scratch, count);
}

/// An integer in a field of its own, by width, precision or flags.
template <class Char>
void Print_Integer_Field(Bounded_Output<Char>& output, const Format_Item& item, const Number_Prefix& prefix,
                         const Integer_Digits& digits)
{
    const unsigned int count = item.m_nPrecision == 0 && digits.m_nValue == 0 ? 0 : digits.Count();
    const long long used = static_cast<long long>(prefix.m_nLength) + count;
    long long zeros = item.m_nPrecision - count;
    if (digits.m_nShift == 3 && item.m_bAlternate && zeros <= 0 && (digits.m_nValue != 0 || count == 0))
        zeros = 1;
    if (item.m_nPrecision < 0 && item.m_bZero && !item.m_bLeft)
        zeros = std::max(zeros, item.m_nWidth - used);
    zeros = std::max(zeros, 0ll);
    const long long padding = item.m_nWidth - used - zeros;
    if (!item.m_bLeft)
        output.Fill(static_cast<Char>(' '), padding);
    output.Copy(prefix.m_Chars, prefix.m_nLength);
    output.Fill(static_cast<Char>('0'), zeros);
    Put_Digits(output, digits, count);
    if (item.m_bLeft)
        output.Fill(static_cast<Char>(' '), padding);
}

/// Sign or prefix, zeros and digits in the field of the item.
template <class Char>
inline void Print_Integer(Bounded_Output<Char>& output, const Format_Item& item, const Number_Prefix& prefix,
                          const Integer_Digits& digits)
{
    if (item.m_nWidth != 0 || item.m_nPrecision >= 0 || item.m_bAlternate)
        return Print_Integer_Field(output, item, prefix, digits);
    if (prefix.m_nLength != 0)
        output.Put(static_cast<Char>(prefix.m_Chars[0]));
    Put_Digits(output, digits, digits.Count());
}

unsigned long long Take_Unsigned(Argument_List& arguments, const Format_Item& item)
{
    if (item.m_Size == Format_Size::int64)
        return arguments.Take_Int64();
    const unsigned int value = static_cast<unsigned int>(arguments.Take_Int());
    if (item.m_Size == Format_Size::narrow)
        return static_cast<unsigned short>(value);
    return item.m_Size == Format_Size::narrow8 ? static_cast<unsigned char>(value) : value;
}

long long Take_Signed(Argument_List& arguments, const Format_Item& item)
{
    if (item.m_Size == Format_Size::int64)
        return static_cast<long long>(arguments.Take_Int64());
    const int value = arguments.Take_Int();
    if (item.m_Size == Format_Size::narrow)
        return static_cast<short>(value);
    return item.m_Size == Format_Size::narrow8 ? static_cast<signed char>(value) : value;
}

template <class Char>
void Print_Signed(Bounded_Output<Char>& output, const Format_Item& item, long long value)
{
    Number_Prefix prefix;
    prefix.Add_Sign(value < 0, item);
    const auto magnitude = static_cast<unsigned long long>(value);
    Print_Integer(output, item, prefix, Integer_Digits{value < 0 ? 0 - magnitude : magnitude, 0});
}

template <class Char>
void Print_Hex(Bounded_Output<Char>& output, const Format_Item& item, unsigned long long value, bool upper)
{
    Number_Prefix prefix;
    if (item.m_bAlternate && value != 0)
    {
        prefix.Add('0');
        prefix.Add(upper ? 'X' : 'x');
    }
    Print_Integer(output, item, prefix,
                  Integer_Digits{value, 4, upper ? "0123456789ABCDEF" : "0123456789abcdef"});
}

template <class Char>
void Print_Pointer(Bounded_Output<Char>& output, Format_Item item, const void* pointer)
{
    item.m_nPrecision = 2 * sizeof(void*);
    Print_Hex(output, item, reinterpret_cast<unsigned long long>(pointer), true);
}

template <class Char>
void Print_Not_Finite(Bounded_Output<Char>& output, Format_Item item, double value, bool upper)
{
    Number_Prefix text;
    text.Add_Sign(std::signbit(value), item);
    char whole[sizeof(text.m_Chars) + 3];
    std::memcpy(whole, text.m_Chars, text.m_nLength);
    std::memcpy(whole + text.m_nLength, std::isnan(value) ? (upper ? "NAN" : "nan") : (upper ? "INF" : "inf"),
                3);
    item.m_bZero = false;
    Print_Text(output, item, whole, text.m_nLength + 3);
}

template <class Char>
void Put_Float_Text(Bounded_Output<Char>& output, const Float_Text& text, const Runtime_Locale& locale)
{
    output.Copy(text.m_Chars, text.m_nInteger);
    if (text.m_bPoint)
        output.Put(To_Decimal_Point<Char>(locale));
    output.Copy(text.m_Chars + text.m_nFraction_Start, text.m_nFraction);
    output.Fill(static_cast<Char>('0'), text.m_nZeros);
    output.Copy(text.m_Chars + text.m_nFraction_Start + text.m_nFraction, text.m_nExponent);
}

template <class Char>
void Print_Float(Bounded_Output<Char>& output, const Format_Item& item, char conversion, double value)
{
    if (!std::isfinite(value))
        return Print_Not_Finite(output, item, value, (conversion & 0x20) == 0);
    Number_Prefix prefix;
    prefix.Add_Sign(std::signbit(value), item);
    if ((conversion | 0x20) == 'a')
    {
        prefix.Add('0');
        prefix.Add(static_cast<char>(conversion - 'a' + 'x'));
    }
    Float_Text text;
    Convert_Float(std::fabs(value), conversion, item.m_bAlternate, item.m_nPrecision, text);
    const long long padding = item.m_nWidth - prefix.m_nLength - (text.m_bPoint ? 1 : 0) - text.m_nZeros -
                              static_cast<long long>(text.m_nInteger + text.m_nFraction + text.m_nExponent);
    if (!item.m_bLeft && !item.m_bZero)
        output.Fill(static_cast<Char>(' '), padding);
    output.Copy(prefix.m_Chars, prefix.m_nLength);
    if (!item.m_bLeft && item.m_bZero)
        output.Fill(static_cast<Char>('0'), padding);
    Put_Float_Text(output, text, *item.m_pLocale);
    if (item.m_bLeft)
        output.Fill(static_cast<Char>(' '), padding);
}

/// `c`, `C`, `s` and `S`. A modifier that marks an integer takes them out of the known conversions: they
/// then print themselves and no argument is read.
template <class Char>
void Print_Character_Item(Bounded_Output<Char>& output, const Format_Item& item, Char conversion,
                          Argument_List& arguments)
{
    if (item.m_Size == Format_Size::int64 || item.m_Size == Format_Size::int32)
        return output.Put(conversion);
    const bool wide = Reads_Wide<Char>(item, conversion == 'S' || conversion == 'C');
    if (conversion == 'c' || conversion == 'C')
        Print_Character(output, item, arguments.Take_Int(), wide);
    else if (wide)
        Print_String<wchar_t>(output, item, arguments.Take_Pointer());
    else
        Print_String<char>(output, item, arguments.Take_Pointer());
}

template <class Char>
void Print_Item(Bounded_Output<Char>& output, const Format_Item& item, Char conversion,
                Argument_List& arguments)
{
    switch (conversion)
    {
    case 'c':
    case 'C':
    case 's':
    case 'S':
        return Print_Character_Item(output, item, conversion, arguments);
    case 'd':
    case 'i':
        return Print_Signed(output, item, Take_Signed(arguments, item));
    case 'u':
        return Print_Integer(output, item, Number_Prefix{},
                             Integer_Digits{Take_Unsigned(arguments, item), 0});
    case 'x':
    case 'X':
        return Print_Hex(output, item, Take_Unsigned(arguments, item), conversion == 'X');
    case 'o':
        return Print_Integer(output, item, Number_Prefix{},
                             Integer_Digits{Take_Unsigned(arguments, item), 3, "01234567"});
    case 'a':
    case 'A':
    case 'e':
    case 'E':
    case 'f':
    case 'g':
    case 'G':
        return Print_Float(output, item, static_cast<char>(conversion), arguments.Take_Double());
    case 'p':
        return Print_Pointer(output, item, arguments.Take_Pointer());
    case 'n':
        arguments.Take_Pointer();
        return;
    default:
        return output.Put(conversion);
    }
}

template <class Char>
void Print_Format(Bounded_Output<Char>& output, const Char* format, Argument_List& arguments)
{
    const Runtime_Locale& locale = Get_Runtime_Locale();
    while (!output.Is_Cut())
    {
        const Char* percent = Find_Percent(format);
        output.Copy(format, static_cast<std::size_t>(percent - format));
        if (*percent == 0)
            return;
        Format_Item item;
        item.m_pLocale = &locale;
        const Char* conversion = Read_Format_Item(percent + 1, arguments, item);
        if (*conversion == 0)
            return;
        Print_Item(output, item, *conversion, arguments);
        format = conversion + 1;
    }
}

template <class Char>
int Print_Bounded(Char* buffer, std::size_t capacity, std::size_t count, const Char* format,
                  std::va_list arguments)
{
    if (buffer == nullptr || capacity == 0)
        return -1;
    *buffer = 0;
    if (format == nullptr)
        return -1;
    Bounded_Output<Char> output(buffer, std::min(capacity - 1, count));
    Argument_List list(arguments);
    Print_Format(output, format, list);
    *output.Get_Next() = 0;
    const auto length = output.Get_Next() - buffer;
    return output.Is_Cut() || length > INT_MAX ? -1 : static_cast<int>(length);
}

} // namespace

int _vsnprintf_s(char* buffer, std::size_t capacity, std::size_t count, const char* format,
                 std::va_list arguments)
{
    return Print_Bounded(buffer, capacity, count, format, arguments);
}

int _vsnwprintf_s(wchar_t* buffer, std::size_t capacity, std::size_t count, const wchar_t* format,
                  std::va_list arguments)
{
    return Print_Bounded(buffer, capacity, count, format, arguments);
}

} // namespace qn_platform
