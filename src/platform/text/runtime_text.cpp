#include "platform/runtime_text.h"

#include "lib_platform.h"
#include "platform/c_locale_text.h"
#include "platform/text/runtime_locale.h"

#include <array>
#include <climits>
#include <cstdio>
#include <cstring>
#include <memory>
#include <new>
#include <string_view>

#include <string.h>

namespace qn_runtime
{

namespace
{

using qn_platform::Get_Runtime_Locale;
using qn_platform::Runtime_Locale;

template <class Char>
int compare_Folded(const Char* left, const Char* right, const Runtime_Locale& locale)
{
    for (;; ++left, ++right)
    {
        const int difference = To_Unit(locale.Lower(*left)) - To_Unit(locale.Lower(*right));
        if (difference != 0 || *left == 0)
            return difference;
    }
}

std::size_t measure(const char* text) { return std::strlen(text); }

std::size_t measure(const wchar_t* text) { return static_cast<std::size_t>(lstrlenW(text)); }

wchar_t to_Unicode(wchar_t unit) { return unit; }

wchar_t to_Unicode(char byte)
{
    wchar_t unit = 0;
    MultiByteToWideChar(CP_ACP, 0, &byte, 1, &unit, 1);
    return unit;
}

/// A text in UTF-8, which is what the host's collation reads; folded to lower case on demand. It has no
/// text when memory is short or the source is beyond the platform's lengths.
class Host_Text
{
public:
    template <class Char>
    Host_Text(const Char* text, const Runtime_Locale& locale, bool folded)
    {
        const std::size_t length = measure(text) + 1;
        const std::size_t capacity = (sizeof(wchar_t) + MOST_BYTES) * length;
        if (length > LONGEST)
            return;
        char* block = m_Inside;
        if (capacity > sizeof(m_Inside))
        {
            m_pBlock.reset(new (std::nothrow) char[capacity]);
            block = m_pBlock.get();
        }
        if (block != nullptr)
            fill(reinterpret_cast<wchar_t*>(block), text, length, folded ? &locale : nullptr);
    }

    const char* Get() const { return m_pUtf8; }

private:
    static constexpr std::size_t MOST_BYTES = 3; ///< of one unit in UTF-8
    static constexpr std::size_t LONGEST = INT_MAX / MOST_BYTES;

    template <class Char>
    void fill(wchar_t* units, const Char* text, std::size_t length, const Runtime_Locale* folding)
    {
        for (std::size_t index = 0; index < length; ++index)
        {
            const Char character = folding == nullptr ? text[index] : folding->Lower(text[index]);
            units[index] = to_Unicode(character);
        }
        char* const utf8 = reinterpret_cast<char*>(units + length);
        const int size = static_cast<int>(length);
        if (WideCharToMultiByte(CP_UTF8, 0, units, size, utf8, size * static_cast<int>(MOST_BYTES), nullptr,
                                nullptr) != 0)
            m_pUtf8 = utf8;
    }

    alignas(wchar_t) char m_Inside[600];
    std::unique_ptr<char[]> m_pBlock;
    const char* m_pUtf8 = nullptr;
};

/// The order by the host's locale, or by the units when a text cannot be brought to it.
template <class Char>
int collate(const Char* left, const Char* right, const Runtime_Locale& locale, bool folded)
{
    const Host_Text left_text(left, locale, folded);
    const Host_Text right_text(right, locale, folded);
    if (left_text.Get() == nullptr || right_text.Get() == nullptr)
        return folded ? compare_Folded(left, right, locale) : Compare_C(left, right);
    return strcoll_l(left_text.Get(), right_text.Get(), locale.m_Host);
}

template <class Char>
int compare_No_Case(const Char* left, const Char* right)
{
    const Runtime_Locale& locale = Get_Runtime_Locale();
    return locale.m_bC_Case ? Compare_C_No_Case(left, right) : compare_Folded(left, right, locale);
}

template <class Char>
int collate(const Char* left, const Char* right)
{
    const Runtime_Locale& locale = Get_Runtime_Locale();
    return locale.m_bC_Collation ? Compare_C(left, right) : collate(left, right, locale, false);
}

template <class Char>
int collate_No_Case(const Char* left, const Char* right)
{
    const Runtime_Locale& locale = Get_Runtime_Locale();
    return locale.m_bC_Collation ? compare_No_Case(left, right) : collate(left, right, locale, true);
}

template <class Char>
void make_Lower(Char* text, std::size_t length)
{
    const Runtime_Locale& locale = Get_Runtime_Locale();
    if (locale.m_bC_Case)
        return Change_C_Case<Char, 'A'>(text, length);
    for (Char* const end = text + length; text != end; ++text)
        *text = locale.Lower(*text);
}

template <class Char>
void make_Upper(Char* text, std::size_t length)
{
    const Runtime_Locale& locale = Get_Runtime_Locale();
    if (locale.m_bC_Case)
        return Change_C_Case<Char, 'a'>(text, length);
    for (Char* const end = text + length; text != end; ++text)
        *text = locale.Upper(*text);
}

} // namespace

int Compare_No_Case(const char* left, const char* right) { return compare_No_Case(left, right); }

int Compare_No_Case(const wchar_t* left, const wchar_t* right) { return compare_No_Case(left, right); }

int Collate(const char* left, const char* right) { return collate(left, right); }

int Collate(const wchar_t* left, const wchar_t* right) { return collate(left, right); }

int Collate_No_Case(const char* left, const char* right) { return collate_No_Case(left, right); }

int Collate_No_Case(const wchar_t* left, const wchar_t* right) { return collate_No_Case(left, right); }

void Make_Lower(char* text, std::size_t length) { make_Lower(text, length); }

void Make_Lower(wchar_t* text, std::size_t length) { make_Lower(text, length); }

void Make_Upper(char* text, std::size_t length) { make_Upper(text, length); }

void Make_Upper(wchar_t* text, std::size_t length) { make_Upper(text, length); }

bool May_Take_Argument(wchar_t conversion, bool)
{
    constexpr std::string_view WITH_ARGUMENT = "aAhIjltwz";
    return conversion < 0x80 && WITH_ARGUMENT.find(static_cast<char>(conversion)) != std::string_view::npos;
}

void Write_Standard_Output(const wchar_t* text, std::size_t length)
{
    constexpr std::size_t CHUNK = 1024;
    std::array<char, 3 * CHUNK> utf8;
    flockfile(stdout); // the text stays whole beside those of other threads
    while (length != 0)
    {
        std::size_t part = length < CHUNK ? length : CHUNK;
        const bool split_pair = part < length && text[part - 1] >= 0xD800 && text[part - 1] <= 0xDBFF;
        part -= split_pair ? 1 : 0;
        const int size = WideCharToMultiByte(CP_UTF8, 0, text, static_cast<int>(part), utf8.data(),
                                             static_cast<int>(utf8.size()), nullptr, nullptr);
        std::fwrite(utf8.data(), 1, static_cast<std::size_t>(size), stdout);
        text += part;
        length -= part;
    }
    funlockfile(stdout);
}

} // namespace qn_runtime
