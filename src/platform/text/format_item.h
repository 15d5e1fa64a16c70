#ifndef QNLIB_SRC_PLATFORM_TEXT_FORMAT_ITEM_H
#define QNLIB_SRC_PLATFORM_TEXT_FORMAT_ITEM_H

#include <climits>
#include <cstdarg>

// One conversion of a format, and how it is read.

namespace qn_platform
{

/// The arguments of a format, each of which stands in a full slot: a 32-bit value is the low half of its
/// slot, whether the caller gave an int or a long.
class Argument_List
{
public:
    explicit Argument_List(std::va_list arguments) { va_copy(m_List, arguments); }
    ~Argument_List() { va_end(m_List); }
    Argument_List(const Argument_List&) = delete;
    Argument_List& operator=(const Argument_List&) = delete;

    int Take_Int() { return va_arg(m_List, int); }
    unsigned long long Take_Int64() { return va_arg(m_List, unsigned long long); }
    double Take_Double() { return va_arg(m_List, double); }
    const void* Take_Pointer() { return va_arg(m_List, const void*); }

private:
    std::va_list m_List;
};

struct Runtime_Locale;

enum class Format_Size : unsigned char
{
    natural, ///< no modifier, or one without effect: `F`, `L` and `N`
    narrow8, ///< `hh`
    narrow,  ///< `h`
    wide,    ///< `l` and `w`; integers have 32 bits, the width of the platform's long
    int32,   ///< `I32`
    int64,   ///< `I64`, `ll`, `I`, `j`, `z` and `t`
};

struct Format_Item
{
    const Runtime_Locale* m_pLocale = nullptr; ///< the one in force when the formatter began
    long long m_nWidth = 0;
    long long m_nPrecision = -1; ///< -1: none given
    Format_Size m_Size = Format_Size::natural;
    bool m_bLeft = false;
    bool m_bPlus = false;
    bool m_bBlank = false;
    bool m_bZero = false;
    bool m_bAlternate = false;

    void Set_Star_Width(int width)
    {
        m_bLeft = m_bLeft || width < 0;
        m_nWidth = width < 0 ? -static_cast<long long>(width) : width;
    }
};

/// Reads decimal digits; a number beyond the int range counts as the largest int.
template <class Char>
const Char* Read_Format_Number(const Char* position, long long& number)
{
    for (; *position >= '0' && *position <= '9'; ++position)
        number = number > INT_MAX / 10 ? INT_MAX : number * 10 + (*position - '0');
    if (number > INT_MAX)
        number = INT_MAX;
    return position;
}

template <class Char>
const Char* Read_Format_Flags(const Char* position, Argument_List& arguments, Format_Item& item)
{
    for (;; ++position)
    {
        switch (*position)
        {
        case '#':
            item.m_bAlternate = true;
            break;
        case '*':
            item.Set_Star_Width(arguments.Take_Int());
            break;
        case ' ':
            item.m_bBlank = true;
            break;
        case '+':
            item.m_bPlus = true;
            break;
        case '-':
            item.m_bLeft = true;
            break;
        case '0':
            item.m_bZero = true;
            break;
        default:
            return position;
        }
    }
}

template <class Char>
const Char* Read_Format_Precision(const Char* position, Argument_List& arguments, Format_Item& item)
{
    item.m_nPrecision = 0;
    if (*position != '*')
        return Read_Format_Number(position, item.m_nPrecision);
    const int precision = arguments.Take_Int();
    item.m_nPrecision = precision < 0 ? -1 : precision;
    return position + 1;
}

/// `I64` and `I32`; `I` alone is a modifier only in front of an integer conversion.
template <class Char>
const Char* Read_Sized_Modifier(const Char* position, Format_Item& item)
{
    if (position[1] == '6' && position[2] == '4')
    {
        item.m_Size = Format_Size::int64;
        return position + 3;
    }
    if (position[1] == '3' && position[2] == '2')
    {
        item.m_Size = Format_Size::int32;
        return position + 3;
    }
    switch (position[1])
    {
    case 'd':
    case 'i':
    case 'o':
    case 'u':
    case 'x':
    case 'X':
        item.m_Size = Format_Size::int64;
        return position + 1;
    default:
        return position;
    }
}

template <class Char>
const Char* Read_Format_Modifier(const Char* position, Format_Item& item)
{
    switch (*position)
    {
    case 'F':
    case 'L':
    case 'N':
        return position + 1;
    case 'h':
        item.m_Size = position[1] == 'h' ? Format_Size::narrow8 : Format_Size::narrow;
        return position + (position[1] == 'h' ? 2 : 1);
    case 'l':
        item.m_Size = position[1] == 'l' ? Format_Size::int64 : Format_Size::wide;
        return position + (position[1] == 'l' ? 2 : 1);
    case 'w':
        item.m_Size = Format_Size::wide;
        return position + 1;
    case 'j':
    case 't':
    case 'z':
        item.m_Size = Format_Size::int64;
        return position + 1;
    case 'I':
        return Read_Sized_Modifier(position, item);
    default:
        return position;
    }
}

/// Reads what stands between a `%` and its conversion character, and answers where that character is.
/// Flags come in any order and number, a `*` for the width among them; digits give the width when it is
/// still 0; then a precision and one modifier.
template <class Char>
const Char* Read_Format_Item(const Char* position, Argument_List& arguments, Format_Item& item)
{
    if (*position <= '9') // no flag, digit or point stands behind '9'
    {
        position = Read_Format_Flags(position, arguments, item);
        if (item.m_nWidth == 0)
            position = Read_Format_Number(position, item.m_nWidth);
        if (*position == '.')
            position = Read_Format_Precision(position + 1, arguments, item);
    }
    return Read_Format_Modifier(position, item);
}

} // namespace qn_platform

#endif
