#ifndef QNLIB_TEST_TEXT_H
#define QNLIB_TEST_TEXT_H

// Comparing and printing 16-bit text in tests, on both targets.
//
//     EXPECT_TEXT_EQ(L"abc", s);                     // s: a string object, a text pointer, a null pointer
//     EXPECT_TEXT_EQ(Wide_Text(L"a\0b", 3), s);      // embedded NULs: the stored length counts
//
// A null pointer counts as the empty text, since that is what an empty string casts to. The same macro takes
// 8-bit text, as long as both sides have one width.

#include <gtest/gtest.h>

#include <concepts>
#include <cstddef>
#include <ostream>
#include <sstream>
#include <string>

namespace test_support
{

// A counted text: where it begins and how many units it has.
template <class Char>
struct Counted_Text
{
    const Char* m_pText;
    std::size_t m_nLength;

    Counted_Text(const Char* text, std::size_t length) : m_pText(text), m_nLength(length) {}

    explicit Counted_Text(const Char* text) : m_pText(text), m_nLength(0)
    {
        while (text != nullptr && text[m_nLength] != 0)
        {
            ++m_nLength;
        }
    }

    bool operator==(const Counted_Text& other) const
    {
        if (m_nLength != other.m_nLength)
        {
            return false;
        }
        for (std::size_t i = 0; i < m_nLength; ++i)
        {
            if (m_pText[i] != other.m_pText[i])
            {
                return false;
            }
        }
        return true;
    }
};

using Wide_Text = Counted_Text<wchar_t>;
using Narrow_Text = Counted_Text<char>;

template <class T>
concept Wide_String = requires(const T& text)
{
    {
        text.GetW()
        } -> std::same_as<const wchar_t*>;
    text.Get_Length();
};

template <class T>
concept Narrow_String = requires(const T& text)
{
    {
        text.GetA()
        } -> std::same_as<const char*>;
    text.Get_Length();
};

inline Wide_Text Text_Of(const Wide_Text& text) { return text; }
inline Narrow_Text Text_Of(const Narrow_Text& text) { return text; }
inline Wide_Text Text_Of(const wchar_t* text) { return Wide_Text(text); }
inline Narrow_Text Text_Of(const char* text) { return Narrow_Text(text); }
template <Wide_String T>
Wide_Text Text_Of(const T& text)
{
    return Wide_Text(text.GetW(), static_cast<std::size_t>(text.Get_Length()));
}
template <Narrow_String T>
Narrow_Text Text_Of(const T& text)
{
    return Narrow_Text(text.GetA(), static_cast<std::size_t>(text.Get_Length()));
}

// Printable ASCII as it is, every other unit as \x and its digits: a fault in one unit shows.
template <class Char>
std::string Readable(const Counted_Text<Char>& text)
{
    std::ostringstream out;
    out << (sizeof(Char) == 1 ? "\"" : "L\"") << std::hex;
    for (std::size_t i = 0; i < text.m_nLength; ++i)
    {
        const auto unit = static_cast<unsigned int>(text.m_pText[i]) & (sizeof(Char) == 1 ? 0xFFu : 0xFFFFu);
        if (unit >= 0x20 && unit < 0x7F)
        {
            out << static_cast<char>(unit);
        }
        else
        {
            out << "\\x{" << unit << '}';
        }
    }
    out << "\" (" << std::dec << text.m_nLength << ')';
    return out.str();
}

// The predicate of EXPECT_TEXT_EQ.
template <class Expected, class Actual>
testing::AssertionResult Same_Text(const char* expected_code, const char* actual_code,
                                   const Expected& expected, const Actual& actual)
{
    const auto wanted = Text_Of(expected);
    const auto found = Text_Of(actual);
    if (wanted == found)
    {
        return testing::AssertionSuccess();
    }
    return testing::AssertionFailure() << actual_code << "\n  is       " << Readable(found) << "\n  expected "
                                       << Readable(wanted) << "\n  from     " << expected_code;
}

// Which target this program was built for, for GTEST_SKIP() with its reason in a test that cannot hold there.
#if defined(_WIN32)
inline constexpr bool Windows_Target = true;
#else
inline constexpr bool Windows_Target = false;
#endif

} // namespace test_support

// How GoogleTest prints the string classes, which it finds by the name of the class's own name space.
template <class T>
requires test_support::Wide_String<T> || test_support::Narrow_String<T>
void PrintTo(const T& text, std::ostream* out)
{
    *out << test_support::Readable(test_support::Text_Of(text));
}

#define EXPECT_TEXT_EQ(expected, actual) EXPECT_PRED_FORMAT2(test_support::Same_Text, expected, actual)
#define ASSERT_TEXT_EQ(expected, actual) ASSERT_PRED_FORMAT2(test_support::Same_Text, expected, actual)

#endif
