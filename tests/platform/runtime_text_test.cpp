#include "lib_strings.h"
#include "platform/runtime_text.h"
#include "test_text.h"

#include <gtest/gtest.h>

#include <atomic>
#include <bit>
#include <climits>
#include <clocale>
#include <cmath>
#include <cstdlib>
#include <random>
#include <string>
#include <thread>
#include <vector>

using namespace qn_runtime;

namespace
{

constexpr int CATEGORY_ALL = 0;

/// A test in another locale; "C" is back afterwards.
class Runtime_Locale_Test : public testing::Test
{
protected:
    ~Runtime_Locale_Test() override { _wsetlocale(CATEGORY_ALL, L"C"); }

    static bool Enter(const wchar_t* name) { return _wsetlocale(CATEGORY_ALL, name) != nullptr; }
};

/// Units in a row, so that each but NUL stands in each position of a vector.
template <class Char>
void Check_Case_Of_All_Units(std::size_t length)
{
    const unsigned int units = sizeof(Char) == 1 ? 0x100 : 0x10000;
    const unsigned int step = sizeof(Char) == 1 ? 1 : 61 + static_cast<unsigned int>(length);
    const auto fold = [](Char unit, Char from)
    { return unit >= from && unit < from + 26 ? unit ^ 0x20 : unit; };
    for (unsigned int start = 1; start < units; start += step)
    {
        std::vector<Char> lower, upper, expected_lower, expected_upper;
        for (std::size_t index = 0; index < length; ++index)
        {
            const auto unit = static_cast<Char>(1 + (start + index) % (units - 1));
            lower.push_back(unit);
            expected_lower.push_back(static_cast<Char>(fold(unit, 'A')));
            expected_upper.push_back(static_cast<Char>(fold(unit, 'a')));
        }
        upper = lower;
        Make_Lower(lower.data(), length);
        Make_Upper(upper.data(), length);
        ASSERT_EQ(lower, expected_lower) << "from " << start << ", " << length << " units";
        ASSERT_EQ(upper, expected_upper) << "from " << start << ", " << length << " units";
    }
}

} // namespace

TEST(Runtime_Text, Folds_Only_Ascii_Letters_In_The_C_Locale)
{
    for (const unsigned int length : {1u, 3u, 7u, 8u, 9u, 15u, 16u, 17u, 31u, 33u, 100u})
    {
        Check_Case_Of_All_Units<char>(length);
        Check_Case_Of_All_Units<wchar_t>(length);
    }
    Check_Case_Of_All_Units<wchar_t>(0xFFFF);
}

TEST(Runtime_Text, Compares_By_Unsigned_Units_In_The_C_Locale)
{
    EXPECT_EQ(Compare_No_Case("_", "A"), '_' - 'a');
    EXPECT_EQ(Compare_No_Case("\xFF", "a"), 0xFF - 'a');
    EXPECT_EQ(Compare_No_Case(L"\xFFFF", L"A"), 0xFFFF - 'a');
    EXPECT_NE(Compare_No_Case(L"\xC4", L"\xE4"), 0);
    EXPECT_EQ(Collate("\x80", "a"), 1);
    EXPECT_EQ(Collate(L"\xFFFF", L"\x7FFF"), 1);
}

TEST(Runtime_Text, Parses_Integers_Of_Every_Base)
{
    EXPECT_EQ(Parse_Int(L" \t\n\x00A0\x2003-12abc", 10), -12);
    EXPECT_EQ(Parse_Int(L"08", 0), 0);
    EXPECT_EQ(Parse_Int(L"0xg", 16), 0);
    for (const int base : {1, 37, INT_MIN, INT_MAX})
        EXPECT_EQ(Parse_Int(L"1", base), 0) << base;
}

TEST(Runtime_Text, Parses_Doubles_As_The_C_Runtime_Does)
{
    const char* const texts[] = {"",
                                 " ",
                                 "2.5x",
                                 "-2.5e3",
                                 "+.5",
                                 "5.",
                                 "-.",
                                 "e5",
                                 "1e+",
                                 "1e-x",
                                 "1d5",
                                 "0x.",
                                 "--1",
                                 "1e400",
                                 "1e-400",
                                 "2e-324",
                                 "4.9e-324",
                                 "\v\f\r\t 1",
                                 "2.2250738585072011e-308",
                                 "1.7976931348623159e308"};
    for (const char* text : texts)
    {
        const double value = Parse_Double(text), expected = std::strtod(text, nullptr);
        EXPECT_EQ(value, expected) << text;
        EXPECT_EQ(std::signbit(value), std::signbit(expected)) << text;
    }
    for (const char* text : {"inf", "-Infinity", "nan", "0x10", "0x1p3"}) // digits only, and 0 before an x
        EXPECT_EQ(Parse_Double(text), 0.0) << text;
    EXPECT_EQ(Parse_Double(("0." + std::string(400, '0') + "1e401").c_str()), 1.0);
    EXPECT_EQ(Parse_Double((std::string(400, '9') + "e-400").c_str()), 1.0);
    EXPECT_EQ(Parse_Double((std::string(400, '9') + ".5").c_str()), HUGE_VAL);
}

TEST(Runtime_Text, Reads_Back_What_The_Runtime_Printed)
{
    std::mt19937_64 random(7);
    for (int round = 0; round < 20000; ++round)
    {
        const double value = std::bit_cast<double>(random());
        char text[64];
        std::snprintf(text, sizeof(text), "%.17g", value);
        ASSERT_TRUE(Parse_Double(text) == value || !std::isfinite(value)) << text;
    }
}

TEST(Runtime_Text, Writes_Standard_Output_As_Utf8)
{
    std::vector<wchar_t> text(1023, L'a'); // the pair lies across the inner buffer's end
    for (const wchar_t unit : {L'\xD83D', L'\xDE00', L'\x0441', L'\0', L'b'})
        text.push_back(unit);
    testing::internal::CaptureStdout();
    Write_Standard_Output(text.data(), text.size());
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              std::string(1023, 'a') + "\xF0\x9F\x98\x80\xD1\x81" + std::string("\0b", 2));
}

TEST_F(Runtime_Locale_Test, Starts_As_C_And_Tells_Its_Name)
{
    std::vector<wchar_t> very_long(5000, L'a');
    very_long.push_back(0);
    for (const wchar_t* name :
         {L"no_SUCH.place", L"\x0441", L"../../tmp", static_cast<const wchar_t*>(very_long.data())})
        EXPECT_FALSE(Enter(name));
    EXPECT_EQ(_wsetlocale(LC_CTYPE + 1, L"C"), nullptr);
    EXPECT_TEXT_EQ(L"C", _wsetlocale(CATEGORY_ALL, nullptr));
    EXPECT_TEXT_EQ(L"C", _wsetlocale(CATEGORY_ALL, L"POSIX"));
}

TEST_F(Runtime_Locale_Test, Takes_The_Users_Default_From_The_Environment)
{
    const std::string before = std::setlocale(LC_ALL, nullptr);
    setenv("LC_ALL", "C.UTF-8", 1);
    EXPECT_TEXT_EQ(L"C.UTF-8", _wsetlocale(CATEGORY_ALL, L""));
    setenv("LC_ALL", "no_SUCH.place", 1);
    EXPECT_TEXT_EQ(L"C", _wsetlocale(CATEGORY_ALL, L""));
    unsetenv("LC_ALL");
    setenv("LC_CTYPE", "C.UTF-8", 1);
    setenv("LANG", "POSIX", 1);
    const wchar_t* mixed = _wsetlocale(CATEGORY_ALL, L"");
    EXPECT_TEXT_EQ(L"LC_COLLATE=C;LC_CTYPE=C.UTF-8;LC_NUMERIC=C;LC_TIME=C", mixed);
    Enter(L"C");
    EXPECT_EQ(_wsetlocale(CATEGORY_ALL, mixed), mixed) << "a name that was answered can be set again";
    unsetenv("LC_CTYPE");
    unsetenv("LANG");
    EXPECT_EQ(std::setlocale(LC_ALL, nullptr), before) << "the host program's locale is its own";
}

TEST_F(Runtime_Locale_Test, Keeps_The_Rules_Of_C_In_The_Categories_That_Are_C)
{
    ASSERT_TRUE(Enter(L"C.UTF-8"));
    ASSERT_NE(_wsetlocale(CATEGORY_ALL, L""), nullptr);
    for (const char* variable : {"LC_CTYPE", "LC_COLLATE"})
    {
        unsetenv("LC_ALL");
        setenv("LANG", "C", 1);
        setenv(variable, "C.UTF-8", 1);
        ASSERT_NE(_wsetlocale(CATEGORY_ALL, L""), nullptr);
        unsetenv(variable);
        wchar_t letter[] = L"\x00E9";
        Make_Upper(letter, 1);
        EXPECT_EQ(letter[0], std::string(variable) == "LC_CTYPE" ? L'\x00C9' : L'\x00E9') << variable;
        EXPECT_LT(Collate(L"a", L"\x044F"), 0);
    }
    unsetenv("LANG");
}

TEST_F(Runtime_Locale_Test, Folds_Letters_Of_Every_Alphabet_Outside_C)
{
    ASSERT_TRUE(Enter(L"C.UTF-8"));
    wchar_t wide[] = L"\x042F\x00C4z\xD83D\xDE00\x0130";
    Make_Lower(wide, 6);
    EXPECT_TEXT_EQ(L"\x044F\x00E4z\xD83D\xDE00i", wide);
    char narrow[] = "\xC4\x8A\xD7z"; // letters of Windows-1252
    Make_Lower(narrow, 4);
    EXPECT_TEXT_EQ("\xE4\x9A\xD7z", narrow);
    Make_Upper(narrow, 4);
    EXPECT_TEXT_EQ("\xC4\x8A\xD7Z", narrow);
    EXPECT_EQ(Compare_No_Case(L"\x042F", L"\x044F"), 0);
    EXPECT_EQ(Compare_No_Case("\xC4", "\xE4"), 0);
    EXPECT_EQ(Collate_No_Case(L"\x042F", L"\x044F"), 0);
    EXPECT_LT(Collate(L"\x042F", L"\x044F"), 0);
    std::vector<wchar_t> very_long(5000, L'\x042F');
    very_long.push_back(0);
    EXPECT_EQ(Collate(very_long.data(), very_long.data()), 0);
}

TEST_F(Runtime_Locale_Test, Brings_Order_And_Decimal_Point)
{
    ASSERT_TRUE(Enter(L"German_Germany.1252"));
    EXPECT_EQ(Parse_Double("-1,5e1.5"), -15.0);
    EXPECT_EQ(Parse_Double("1.5"), 1.0);
    EXPECT_TEXT_EQ(L"1,500000", Lib_Double_To_String(1.5));
}

TEST_F(Runtime_Locale_Test, Changes_While_Other_Threads_Compare)
{
    ASSERT_TRUE(Enter(L"C.UTF-8"));
    std::atomic<bool> done = false;
    std::atomic<int> wrong = 0;
    std::vector<std::thread> readers;
    for (int reader = 0; reader < 3; ++reader)
        readers.emplace_back(
            [&]
            {
                while (!done)
                {
                    const int order = Compare_No_Case(L"\x042F", L"\x044F");
                    wrong += order != 0 && order != 0x042F - 0x044F;
                    wrong += Collate(L"a", L"b") >= 0;
                    wrong += Parse_Double("2.5") != 2.5;
                    wchar_t text[] = L"A\x042F";
                    Make_Lower(text, 2);
                    wrong += text[0] != L'a' || (text[1] != 0x042F && text[1] != 0x044F);
                }
            });
    for (int change = 0; change < 2000; ++change)
        Enter(change % 2 == 0 ? L"C" : L"C.UTF-8");
    done = true;
    for (std::thread& reader : readers)
        reader.join();
    EXPECT_EQ(wrong, 0);
}
