#include "string_probe.h"

#include <bit>
#include <cmath>
#include <cstdarg>
#include <limits>
#include <random>
#include <vector>

using namespace test_support;

namespace
{

/// By the formatter that writes the results, too.
unsigned long long Printed_Length(const char* pFormat, ...)
{
    char text[1000];
    std::va_list arguments;
    va_start(arguments, pFormat);
    const int nLength = _vsnprintf_s(text, sizeof text, _TRUNCATE, pFormat, arguments);
    va_end(arguments);
    return static_cast<unsigned long long>(nLength);
}

} // namespace

// What is reserved for a result, and that it fits; each conversion's own forms are the formatter's matter.
template <class String>
class Format : public testing::Test
{
protected:
    using Unit = Char_Of<String>;

    /// The text, and exactly what was reserved for it.
    template <class... Arguments>
    static void Expect(const Unit* pExpected, unsigned long long nReserve, const Unit* pFormat,
                       Arguments... arguments)
    {
        SCOPED_TRACE(testing::PrintToString(String(pFormat)));
        String text;
        text.Format(pFormat, arguments...);
        EXPECT_TEXT_EQ(pExpected, text);
        EXPECT_EQ(nReserve, text.Get_Alloc_Length());
    }
};
TYPED_TEST_SUITE(Format, Both_Widths);

TYPED_TEST(Format, Reserves_By_The_Rules_For_Literals_And_Numbers)
{
    using Char = Char_Of<TypeParam>;
    const auto Expect = [](const Char* pExpected, unsigned long long nReserve, auto... row)
    { TestFixture::Expect(pExpected, nReserve, row...); };
    Expect(T(""), 0, T(""));
    Expect(T("abc"), 3 + 2 + 1, T("abc"));
    Expect(T("%"), 1, T("%%"));
    Expect(T("a%b"), 4 + 2 + 1, T("a%%b"));
    Expect(T("-7x"), 32 + 1, T("%dx"), -7);
    Expect(T("                              0000000007"), 50, T("%40.10d"), 7);
    Expect(T("0xff"), 34, T("%#x"), 255);
    Expect(T("+7 7"), 2 * 32, T("%+d% d"), 7, 7);
    Expect(T("  7ab"), 32 + 2, T("%*d%s"), 3, 7, T("ab"));
    Expect(T("7  ab"), 32 + 2, T("%*d%s"), -3, 7, T("ab"));
    Expect(T("7                                       "), 40, T("%*d"), -40, 7);
    Expect(T("007  "), 32, T("%*.*d"), -5, 3, 7);
    Expect(T("7"), 32, T("%.*d"), -5, 7);
    Expect(T("9223372036854775807 1"), 64 + 3, T("%I64d %d"), 9223372036854775807LL, 1);
    Expect(T("-1 65535 4294967295"), 3 * 32 + 8 + 4, T("%hd %hu %lu"), -1, -1, -1);

    TypeParam text;
    text.Format(T("%40.1p"), nullptr);
    EXPECT_EQ(41U, text.Get_Alloc_Length());
    text.Flush();
    text.Format(T("ab%"));
    EXPECT_EQ(3U + 2U, text.Get_Alloc_Length()) << "ends at a lone percent sign";
}

TYPED_TEST(Format, Reserves_By_The_Rules_For_Floating_Point)
{
    using Char = Char_Of<TypeParam>;
    TestFixture::Expect(T("-1.50"), 11, T("%.2f"), -1.5);
    TestFixture::Expect(T("  1.500000"), 10, T("%10f"), 1.5);
    TestFixture::Expect(T("2.50 x"), 10 + 3 + 1, T("%*.*f %s"), 4, 2, 2.5, T("x"));
    TestFixture::Expect(T("                           1.5"), 128, T("%30.2G"), 1.5);

    TypeParam text;
    text.Format(T("%200.10g"), 1.5);
    EXPECT_EQ(210U, text.Get_Alloc_Length());
    text.Format(T("%f"), -std::numeric_limits<double>::max());
    EXPECT_EQ(1U + 309 + 1 + 6, text.Get_Length()) << "the largest fits";
    TestFixture::Expect(T("+1.50000"), 8, T("%+f"), 1.5); // no room is reserved for a sign that is asked for
    // The trial print of 8 bits has room for one character less than so wide a field.
    const unsigned long long nWide = sizeof(Char) == 1 ? 399 : 400;
    text.Flush();
    text.Format(T("%400f"), 1.5);
    EXPECT_EQ(nWide, text.Get_Alloc_Length());
    EXPECT_EQ(nWide, text.Get_Length());
}

TYPED_TEST(Format, Reserves_As_Many_As_A_Print_With_Six_Decimals_More)
{
    using Char = Char_Of<TypeParam>;
    std::vector<double> values{0.0,  -0.0,  0.5,  9.5,   9.9999995, -99.4999, 999999.9999999,
                               1e15, -1e15, 1e16, 1e-300};
    std::mt19937_64 random(1);
    for (int i = 0; i < 2000; ++i)
        values.push_back(std::bit_cast<double>(random() % 3 == 0 ? random() : random() >> 8 | 0x40ULL << 56));
    for (double dLimit = 10; dLimit < 1e17; dLimit *= 10) // at the edge of one more digit
        values.insert(values.end(), {std::nextafter(dLimit, 0), -dLimit, dLimit - 0.5, dLimit - 4e-7});
    std::erase_if(values,
                  [](double dValue) { return !std::isfinite(dValue); }); // their names are the runtime's
    for (const double dValue : values)
    {
        const int nWidth = static_cast<int>(random() % 40), nPrecision = static_cast<int>(random() % 70);
        TypeParam text;
        text.Format(T("%*.*f"), nWidth, nPrecision, dValue);
        EXPECT_EQ(Printed_Length("%*.*f", nWidth, nPrecision + 6, dValue), text.Get_Alloc_Length())
            << nWidth << ' ' << nPrecision << ' ' << dValue;
    }
}

TYPED_TEST(Format, Reserves_By_The_Rules_For_Texts)
{
    using Char = Char_Of<TypeParam>;
    const auto Expect = [](const Char* pExpected, unsigned long long nReserve, auto... row)
    { TestFixture::Expect(pExpected, nReserve, row...); };
    const Char* const pNull = nullptr;
    Expect(T("abc"), 3, T("%s"), T("abc"));
    Expect(T(""), 1, T("%s"), T(""));
    Expect(T("(null)"), 6, T("%s"), pNull);
    Expect(T("(n"), 2, T("%.2s"), pNull);
    Expect(T("ab   "), 5, T("%-5s"), T("ab"));
    Expect(T("ab"), 2, T("%.2s"), T("abcd"));
    Expect(T("    a"), 5, T("%5.1s"), T("abc"));
    Expect(T(""), 3, T("%.0s"), T("abc"));
    Expect(T("abc"), 3, T("%.*s"), -1, T("abc"));
    Expect(T("x"), 2, T("%c"), 'x');
    Expect(T("  x"), 3, T("%3C"), 'x');
    Expect(T("ab|cd|ef|gh"), 12 + 8 + 4 + 4 * 2, T("%hs|%ls|%hS|%lS"), "ab", L"cd", "ef", L"gh");
    Expect(T("ab|cd"), 2 + 3 + 2, T("%Fs|%S"), T("ab"),
           std::get<std::conditional_t<sizeof(Char) == 1, const wchar_t*, const char*>>(
               std::tuple("cd", L"cd")));
    Expect(T("xyz"), 2 + 2 + 2, T("%hc%lc%C"), 'x', 'y', 'z');
}

TYPED_TEST(Format, Cuts_The_Result_Behind_A_Conversion_It_Does_Not_Know)
{
    using Char = Char_Of<TypeParam>;
    // The number, which the first pass doesn't take, must not be read as the text behind it.
    TestFixture::Expect(T("5 0123456789a"), 4 + 3 + 6, T("%lld %s"), 5LL, T("0123456789abcdef"));
    TestFixture::Expect(T("5 0123456789abcdef"), 5 + 4 + 3 + 6, T("%I32d%s"), 5, T(" 0123456789abcdefgh"));
}

TYPED_TEST(Format, Leaves_Other_Holders_And_A_Lock_Alone)
{
    using Char = Char_Of<TypeParam>;
    Open<TypeParam> text(T("other"));
    const Open<TypeParam> other(text);
    text.Format(T("%d"), 1);
    const Char* pLocked = text.Lock_Buffer();
    text.Format(T("%s"), T("fits in the former block"));
    EXPECT_EQ(pLocked, text.m_pChars);
    EXPECT_EQ(-1, text.Get_Holders());
    text.Format(T("%s %d"), T("does not"), 2);
    EXPECT_EQ(1, text.Get_Holders());
    text.Format(static_cast<const Char*>(nullptr));
    EXPECT_TRUE(text.Is_Empty());
    EXPECT_TEXT_EQ(T("other"), other);
}
