#include "lib_strings.h"
#include "test_text.h"

#include <gtest/gtest.h>

#include <bit>
#include <cfloat>
#include <climits>
#include <cmath>
#include <cstdio>
#include <limits>
#include <random>
#include <string>
#include <vector>

namespace
{

constexpr char CANARY = 0x5A;
constexpr char CUT = '~';

/// What a formatter left, with a mark behind it if that is cut. It must have kept within its capacity.
template <class Char>
std::string Read_Back(int result, const std::vector<Char>& buffer, std::size_t capacity)
{
    EXPECT_EQ(buffer[capacity], CANARY) << "written behind the capacity of " << capacity;
    std::string text;
    const std::size_t length = result >= 0 ? static_cast<std::size_t>(result) : capacity;
    for (std::size_t index = 0; index < length && (result >= 0 || buffer[index] != 0); ++index)
        text += static_cast<char>(buffer[index]);
    EXPECT_EQ(buffer[text.size()], capacity != 0 ? 0 : CANARY) << "the text is not ended";
    return result >= 0 ? text : text + CUT;
}

std::string Print(std::size_t capacity, std::size_t count, const char* format, ...)
{
    std::vector<char> buffer(capacity + 1, CANARY);
    std::va_list arguments;
    va_start(arguments, format);
    const int result = _vsnprintf_s(buffer.data(), capacity, count, format, arguments);
    va_end(arguments);
    return Read_Back(result, buffer, capacity);
}

std::string Print(std::size_t capacity, std::size_t count, const wchar_t* format, ...)
{
    std::vector<wchar_t> buffer(capacity + 1, CANARY);
    std::va_list arguments;
    va_start(arguments, format);
    const int result = _vsnwprintf_s(buffer.data(), capacity, count, format, arguments);
    va_end(arguments);
    return Read_Back(result, buffer, capacity);
}

/// Prints at both widths, which must agree.
template <class... Arguments>
std::string Within(std::size_t capacity, const std::string& format, Arguments... arguments)
{
    const std::vector<wchar_t> wide(format.c_str(), format.c_str() + format.size() + 1);
    const std::string text = Print(capacity, _TRUNCATE, format.c_str(), arguments...);
    EXPECT_EQ(Print(capacity, _TRUNCATE, wide.data(), arguments...), text) << format;
    return text;
}

/// With ample room, then with just enough and with room for one character less.
template <class... Arguments>
std::string Both(const std::string& format, Arguments... arguments)
{
    const std::string text = Within(4096, format, arguments...);
    if (!text.empty())
    {
        EXPECT_EQ(Within(text.size(), format, arguments...), text.substr(0, text.size() - 1) + CUT) << format;
        EXPECT_EQ(Within(text.size() + 1, format, arguments...), text) << format;
    }
    return text;
}

/// The C runtime's own opinion.
template <class... Arguments>
std::string Expected(const std::string& format, Arguments... arguments)
{
    std::vector<char> buffer(4096);
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
#pragma GCC diagnostic ignored "-Wformat-security"
    std::snprintf(buffer.data(), buffer.size(), format.c_str(), arguments...);
#pragma GCC diagnostic pop
    return buffer.data();
}

class Format_Maker
{
public:
    /// Random flags out of `flags`, width and precision; the numbers sometimes as digits of the format.
    std::string Make(const char* flags, int widest, int most_precise)
    {
        std::string format = "%";
        for (const char* flag = flags; *flag != 0; ++flag)
            format += pick(3) == 0 ? std::string(1, *flag) : std::string();
        if (pick(2) == 0)
            format += std::to_string(1 + pick(widest));
        if (pick(2) == 0)
            format += "." + (pick(8) == 0 ? std::string() : std::to_string(pick(most_precise)));
        return format;
    }

    std::uint64_t Bits() { return m_Random() >> pick(64); }
    int pick(int limit) { return static_cast<int>(m_Random() % static_cast<unsigned int>(limit)); }
    std::uint64_t Raw() { return m_Random(); }

private:
    std::mt19937_64 m_Random{20};
};

} // namespace

TEST(Formatter, Prints_Integers_As_The_C_Runtime_Does)
{
    Format_Maker maker;
    const std::pair<const char*, const char*> modifiers[] = {
        {"", ""},     {"h", "h"},  {"hh", "hh"}, {"l", ""},   {"I32", ""}, {"I64", "ll"},
        {"ll", "ll"}, {"j", "ll"}, {"z", "ll"},  {"t", "ll"}, {"I", "ll"}, {"F", ""}};
    for (int round = 0; round < 20000; ++round)
    {
        const auto& [modifier, peer_modifier] = modifiers[maker.pick(12)];
        const char conversion = "diuxXo"[maker.pick(6)];
        const bool is_signed = conversion == 'd' || conversion == 'i';
        const std::string head = maker.Make(is_signed ? "+- 0" : conversion == 'u' ? "-0" : "#-0", 40, 30);
        const std::uint64_t value = maker.pick(4) == 0 ? 0 - maker.Bits() : maker.Bits();
        EXPECT_EQ(Both(head + modifier + conversion, value),
                  Expected(head + peer_modifier + conversion, value))
            << head << modifier << conversion << " of " << value;
    }
}

TEST(Formatter, Prints_Integer_Limits)
{
    EXPECT_EQ(Both("%d %I64d", INT_MIN, LLONG_MIN), "-2147483648 -9223372036854775808");
    EXPECT_EQ(Both("%I64u %I64o", ULLONG_MAX, ULLONG_MAX), "18446744073709551615 1777777777777777777777");
    EXPECT_EQ(Both("%ld %lu %lx", -1l, ULONG_MAX, 0x123456789L), "-1 4294967295 23456789");
    unsigned long long power = 1;
    for (int digits = 1; digits <= 20; ++digits, power *= 10)
        EXPECT_EQ(Both("%llu,%llu", power - 1, power),
                  std::to_string(power - 1) + "," + std::to_string(power));
}

TEST(Formatter, Prints_Doubles_As_The_C_Runtime_Does)
{
    Format_Maker maker;
    for (int round = 0; round < 40000; ++round)
    {
        double value = std::bit_cast<double>(maker.Raw());
        if (maker.pick(3) != 0) // everyday numbers, halves among them
            value = static_cast<double>(static_cast<std::int64_t>(maker.Raw() >> maker.pick(60))) /
                    static_cast<double>(1ull << maker.pick(63));
        if (!std::isfinite(value))
            continue;
        const char conversion = "eEfgGaA"[maker.pick(7)];
        std::string head = maker.Make("+- 0#", 60, maker.pick(20) == 0 ? 1200 : 24);
        if ((conversion | 0x20) == 'a' && head.find('.') == std::string::npos)
            head += ".13";
        EXPECT_EQ(Both(head + conversion, value), Expected(head + conversion, value)) << head << conversion;
    }
}

TEST(Formatter, Prints_The_Ends_Of_The_Double_Range)
{
    for (const double value : {0.0, -0.0, 1e308, DBL_MAX, DBL_MIN, 5e-324, 0.5, 1.5, 2.5, 9.5, 0.99999999,
                               999999.4, 1e15, 9007199254740993.0, 18446744073709551615.0})
    {
        for (const char* format : {"%f", "%.0f", "%#.0f", "%e", "%.0e", "%g", "%#g", "%.0g", "%#.3g", "%.19f",
                                   "%.20f", "%.400f", "%.1100e", "%.1200g", "%.0a", "%.3a", "%-30.2f|"})
            EXPECT_EQ(Both(format, value), Expected(format, value)) << format;
    }
    EXPECT_EQ(Both("%a %A", 1.0, 1.0), "0x1.0000000000000p+0 0X1.0000000000000P+0");
    EXPECT_EQ(Both("%Lf %#g", 2.5, 999999.5), "2.500000 1.00000e+06");
}

TEST(Formatter, Prints_Infinity_And_Nan_Without_Zeros)
{
    const double infinity = std::numeric_limits<double>::infinity();
    EXPECT_EQ(Both("%f %E %+g|%08f|%-6a|", infinity, -infinity, infinity, -infinity, infinity),
              "inf -INF +inf|    -inf|inf   |");
    EXPECT_EQ(Both("%f %G", std::nan(""), std::nan("")), "nan NAN");
}

TEST(Formatter, Reads_Texts_Of_The_Width_That_The_Conversion_Names)
{
    const char* narrow = "a\xE9z";
    const wchar_t* wide = L"b\x0441y";
    EXPECT_EQ(
        Print(99, _TRUNCATE, "%s %S %hs %hS %ls %lS %ws", narrow, wide, narrow, narrow, wide, wide, wide),
        "a\xE9z b?y a\xE9z a\xE9z b?y b?y b?y");
    EXPECT_EQ(Print(99, _TRUNCATE, "%c%C%hC%lc", 'a', 0x441, 'b', L'c'), "a?bc");
    Lib_StringW text;
    text.Format(L"%s %S %hs %hS %ls %lS", wide, narrow, narrow, narrow, wide, wide);
    EXPECT_TEXT_EQ(L"b\x0441y a\x00E9z a\x00E9z a\x00E9z b\x0441y b\x0441y", text);
    text.Format(L"%c%C%hc%lc", 0x441, 0xE9, 0xFFE9, 0x441);
    EXPECT_TEXT_EQ(L"\x0441\x00E9\x00E9\x0441", text);
}

TEST(Formatter, Reads_A_Text_No_Further_Than_Its_Precision)
{
    const char unended[] = {'a', 'b', 'c'};
    const wchar_t unended_wide[] = {'a', 'b', 'c'};
    EXPECT_EQ(Both("%.3hs%.3ls", +unended, +unended_wide), "abcabc");
    EXPECT_EQ(Both("%S %.3ls %9s", nullptr, nullptr, nullptr), "(null) (nu    (null)");
    EXPECT_EQ(Both("%3c|%-3c|%c", 'a', 'b', 0), std::string("  a|b  |\0", 9));
}

TEST(Formatter, Takes_Stars_Anywhere_Among_The_Flags)
{
    EXPECT_EQ(Both("%*+-d|%**d|%*06d", 4, 7, 9, 3, 7, 0, 7), "+7  |  7|000007");
    EXPECT_EQ(Both("%*5d|%d", 4, 7), "5d|7");
    EXPECT_EQ(Both("%.*f %.*f %*.*hs", 2, 1.0, -2, 1.0, -6, -1, "ab"), "1.00 1.000000 ab    ");
}

TEST(Formatter, Prints_Unknown_Conversions_Themselves_Without_An_Argument)
{
    EXPECT_EQ(Both("%% %y %5k %I64s %lls %hq %I %d", 7), "% y k s s q I 7");
    for (const char* cut : {"%", "%-", "%5", "%.", "%.3", "%l", "%I64", "%F", "%h"})
        EXPECT_EQ(Both(std::string("ab") + cut, 7), "ab") << cut;
    int untouched = 5;
    EXPECT_EQ(Both("a%nb%d", &untouched, 7), "ab7");
    EXPECT_EQ(untouched, 5);
}

TEST(Formatter, Prints_Pointers_In_Sixteen_Digits)
{
    const void* pointer = reinterpret_cast<const void*>(0x7FFE12345678ABCDull);
    EXPECT_EQ(Both("%p|%20p|%-20p|%p", pointer, pointer, pointer, nullptr),
              "7FFE12345678ABCD|    7FFE12345678ABCD|7FFE12345678ABCD    |0000000000000000");
}

TEST(Formatter, Never_Writes_Beyond_Its_Capacity)
{
    for (const unsigned int capacity : {0u, 1u, 2u, 3u, 5u, 8u, 13u, 21u, 34u, 55u})
    {
        for (const char* format :
             {"%d %hs %f", "%2147483647d%hs", "%-2147483647d%hs", "%.2147483647d%hs", "%99999999999d%hs%f",
              "%010d%-60hs%f", "%d%2147483647.2147483647hs%.400f", "%o%hs%2147483647.2147483647f"})
        {
            const std::string text = Within(capacity, format, 123456789, "a long text", 1e300);
            EXPECT_EQ(text.back(), CUT) << format;
            EXPECT_EQ(text.size(), capacity == 0 ? 1u : capacity) << format;
        }
    }
    EXPECT_EQ(Within(9, "%*d", INT_MIN, 7), "7       ~");
    EXPECT_EQ(Within(9, "%.*e", INT_MAX, 5e-324), "4.940656~");
    EXPECT_EQ(Within(9, "%#.*g", INT_MAX, 1e300), "10000000~");
    EXPECT_EQ(Within(9, "%.*a", INT_MAX, 1.0), "0x1.0000~");
}

TEST(Formatter, Holds_To_The_Lesser_Of_Count_And_Capacity)
{
    EXPECT_EQ(Print(9, 3, "%s", "abcdef"), "abc~");
    EXPECT_EQ(Print(9, 3, "%s", "abc"), "abc");
    EXPECT_EQ(Print(4, 9, "%s", "abcdef"), "abc~");
    EXPECT_EQ(Print(9, 0, L"%d", 7), "~");
    EXPECT_EQ(Print(9, _TRUNCATE, static_cast<const char*>(nullptr)), "~");
    EXPECT_EQ(Print(9, _TRUNCATE, L""), "");
    std::va_list none{};
    EXPECT_EQ(_vsnwprintf_s(nullptr, 9, _TRUNCATE, L"a", none), -1);
}
