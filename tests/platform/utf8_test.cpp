#include "guarded_text.h"
#include "lib_platform.h"
#include "test_text.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>
#include <vector>

// UTF-8 both ways: against published examples, and on random texts against a model that goes by the
// definition: one character at a time, by trying the forms.

namespace
{

using Bytes = std::vector<char>;
using Units = std::vector<wchar_t>;

Bytes Bytes_Of(const std::string& text) { return Bytes(text.begin(), text.end()); }

struct Form
{
    unsigned int lead_mask, lead, least, size;
};
constexpr Form FORMS[] = {
    {0x80, 0x00, 0, 1}, {0xE0, 0xC0, 0x80, 2}, {0xF0, 0xE0, 0x800, 3}, {0xF8, 0xF0, 0x10000, 4}};

/// The value that `size` bytes of a form give, with the missing ones taken as `filler`.
unsigned int Value(const Form& form, const unsigned char* text, std::size_t size, unsigned int filler)
{
    unsigned int value = text[0] & ~form.lead_mask & 0xFF;
    for (std::size_t i = 1; i < form.size; ++i)
    {
        value = value * 64 + ((i < size ? text[i] : filler) & 0x3F);
    }
    return value;
}

bool Is_Scalar(unsigned int value, const Form& form)
{
    return value >= form.least && value <= 0x10FFFF && !(value >= 0xD800 && value <= 0xDFFF);
}

/// Whether `size` bytes begin some well-formed sequence of the form: the values that they leave possible are
/// a range, and a well-formed one is in it if one is at an end or the other.
bool May_Begin(const Form& form, const unsigned char* text, std::size_t size)
{
    for (std::size_t i = 1; i < size; ++i)
    {
        if (text[i] < 0x80 || text[i] > 0xBF)
        {
            return false;
        }
    }
    return (text[0] & form.lead_mask) == form.lead &&
           (Is_Scalar(Value(form, text, size, 0x80), form) || Is_Scalar(Value(form, text, size, 0xBF), form));
}

struct Decoded
{
    Units units;
    bool bad = false;
};

void Append(Units& units, unsigned int value)
{
    if (value > 0xFFFF)
    {
        units.push_back(static_cast<wchar_t>(0xD800 + ((value - 0x10000) >> 10)));
        value = 0xDC00 + ((value - 0x10000) & 0x3FF);
    }
    units.push_back(static_cast<wchar_t>(value));
}

Decoded Model_Decode(const Bytes& source)
{
    Decoded result;
    const auto* const text = reinterpret_cast<const unsigned char*>(source.data());
    for (std::size_t at = 0; at < source.size();)
    {
        std::size_t longest = 0;
        bool whole = false;
        for (const Form& form : FORMS)
        {
            std::size_t size = 0;
            while (size < form.size && at + size < source.size() && May_Begin(form, text + at, size + 1))
            {
                ++size;
            }
            longest = std::max(longest, size);
            if (size == form.size)
            {
                Append(result.units, Value(form, text + at, size, 0));
                whole = true;
            }
        }
        if (!whole)
        {
            result.units.push_back(0xFFFD);
            result.bad = true;
        }
        at += std::max<std::size_t>(longest, 1);
    }
    return result;
}

Bytes Model_Encode(const Units& source, bool& bad)
{
    Bytes result;
    for (std::size_t i = 0; i < source.size(); ++i)
    {
        unsigned int value = source[i];
        if (value >= 0xD800 && value <= 0xDFFF)
        {
            const bool pair =
                value < 0xDC00 && i + 1 < source.size() && source[i + 1] >= 0xDC00 && source[i + 1] <= 0xDFFF;
            bad |= !pair;
            value = pair ? 0x10000 + (value - 0xD800) * 0x400 + (source[++i] - 0xDC00u) : 0xFFFDu;
        }
        const Form& form = FORMS[value < 0x80 ? 0 : value < 0x800 ? 1 : value < 0x10000 ? 2 : 3];
        result.push_back(static_cast<char>(form.lead | (value >> (6 * (form.size - 1)))));
        for (unsigned int rest = form.size - 1; rest != 0; --rest)
        {
            result.push_back(static_cast<char>(0x80 | ((value >> (6 * (rest - 1))) & 0x3F)));
        }
    }
    return result;
}

int Decode(const Bytes& source, wchar_t* target, std::size_t capacity, DWORD flags = 0)
{
    return MultiByteToWideChar(CP_UTF8, flags, source.data(), static_cast<int>(source.size()), target,
                               static_cast<int>(capacity));
}

int Encode(const Units& source, char* target, std::size_t capacity, DWORD flags = 0)
{
    return WideCharToMultiByte(CP_UTF8, flags, source.data(), static_cast<int>(source.size()), target,
                               static_cast<int>(capacity), nullptr, nullptr);
}

/// Converts with all that is promised: an exact size, no unit written behind the result, a refusal of a
/// target that is one short without writing behind it, strictness, and no read outside of the source.
template <class Source, class Target, class Convert>
void Check(const Source& plain, const Target& expected, bool bad, Convert convert)
{
    using Unit = typename Target::value_type;
    const test_support::Guarded_Copy<typename Source::value_type> source(plain);
    const std::size_t size = expected.size();
    ASSERT_EQ(static_cast<int>(size), convert(source, nullptr, std::size_t{0}, DWORD{0}));

    for (const std::size_t spare : {std::size_t{0}, std::size_t{100}})
    {
        Target target(size + spare + 8, Unit(0x55));
        ASSERT_EQ(static_cast<int>(size), convert(source, target.data(), size + spare, DWORD{0}));
        ASSERT_TRUE(std::equal(expected.begin(), expected.end(), target.begin()));
        ASSERT_TRUE(std::all_of(target.begin() + static_cast<std::ptrdiff_t>(size), target.end(),
                                [](Unit unit) { return unit == Unit(0x55); }));
    }
    if (size > 1)
    {
        Target target(size + 8, Unit(0x55));
        SetLastError(0);
        ASSERT_EQ(0, convert(source, target.data(), size - 1, DWORD{0}));
        ASSERT_EQ(ERROR_INSUFFICIENT_BUFFER, GetLastError());
        ASSERT_TRUE(std::all_of(target.begin() + static_cast<std::ptrdiff_t>(size) - 1, target.end(),
                                [](Unit unit) { return unit == Unit(0x55); }));
    }
    Target target(size);
    for (const std::size_t capacity : {std::size_t{0}, size})
    {
        SetLastError(0);
        const DWORD strict = sizeof(Unit) == 2 ? MB_ERR_INVALID_CHARS : WC_ERR_INVALID_CHARS;
        ASSERT_EQ(bad ? 0 : static_cast<int>(size), convert(source, target.data(), capacity, strict));
        ASSERT_EQ(bad ? ERROR_NO_UNICODE_TRANSLATION : 0, GetLastError());
    }
}

void Check_Decoding(const Bytes& source)
{
    const Decoded model = Model_Decode(source);
    Check(source, model.units, model.bad,
          [](const auto& text, wchar_t* target, std::size_t capacity, DWORD flags) {
              return MultiByteToWideChar(CP_UTF8, flags, text.Get(), text.Size(), target,
                                         static_cast<int>(capacity));
          });
}

void Check_Encoding(const Units& source)
{
    bool bad = false;
    const Bytes model = Model_Encode(source, bad);
    Check(source, model, bad,
          [](const auto& text, char* target, std::size_t capacity, DWORD flags)
          {
              return WideCharToMultiByte(CP_UTF8, flags, text.Get(), text.Size(), target,
                                         static_cast<int>(capacity), nullptr, nullptr);
          });
}

// A text in runs: so many characters of one size, then of another, as words and blanks are.
Units Random_Text(std::mt19937& random, std::size_t characters, bool surrogates)
{
    Units units;
    while (units.size() < characters)
    {
        const std::size_t kind = random() % (surrogates ? 6 : 4);
        for (std::size_t left = random() % 12; left != 0; --left)
        {
            const auto any = static_cast<unsigned int>(random());
            switch (kind)
            {
            case 0:
                Append(units, any % 0x80);
                break;
            case 1:
                Append(units, 0x80 + any % 0x780);
                break;
            case 2:
                Append(units, 0x800 + any % 0xD000);
                break;
            case 3:
                Append(units, 0x10000 + any % 0x100000);
                break;
            default:
                units.push_back(static_cast<wchar_t>(0xD800 + any % 0x800));
            }
        }
    }
    return units;
}

} // namespace

TEST(Utf8, Replaces_Maximal_Parts_As_Unicode_Recommends)
{
    const auto decoded = [](const std::string& bytes)
    {
        Units units(bytes.size());
        units.resize(static_cast<std::size_t>(Decode(Bytes_Of(bytes), units.data(), units.size())));
        return units;
    };
    const wchar_t R = 0xFFFD;
    // The examples of the standard's chapter 3: non-shortest forms, surrogates, beyond the end, truncated.
    EXPECT_EQ((Units{R, R, R, R, R, R, R, R, 0x41}), decoded("\xC0\xAF\xE0\x80\xBF\xF0\x81\x82\x41"));
    EXPECT_EQ((Units{R, R, R, R, R, R, R, R, 0x41}), decoded("\xED\xA0\x80\xED\xBF\xBF\xED\xAF\x41"));
    EXPECT_EQ((Units{R, R, R, R, R, 0x41, R, R, 0x42}), decoded("\xF4\x91\x92\x93\xFF\x41\x80\xBF\x42"));
    EXPECT_EQ((Units{R, R, R, R, 0x41}), decoded("\xE1\x80\xE2\xF0\x91\x92\xF1\xBF\x41"));
    EXPECT_EQ((Units{0x61, R, R, R, 0x62, R, 0x63, R, R, 0x64}),
              decoded("\x61\xF1\x80\x80\xE1\x80\xC2\x62\x80\x63\x80\xBF\x64"));
    // The ends of every form, and the marks, which are characters like others.
    EXPECT_EQ(
        (Units{0x7F, 0x80, 0x7FF, 0x800, 0xD7FF, 0xE000, 0xFEFF, 0xFFFF, 0xD800, 0xDC00, 0xDBFF, 0xDFFF}),
        decoded("\x7F\xC2\x80\xDF\xBF\xE0\xA0\x80\xED\x9F\xBF\xEE\x80\x80\xEF\xBB\xBF\xEF\xBF\xBF"
                "\xF0\x90\x80\x80\xF4\x8F\xBF\xBF"));
}

TEST(Utf8, Decodes_Sequences_At_Every_Offset_Of_A_Block)
{
    const char* const parts[] = {"\xD0\x96",
                                 "\xE6\x97\xA5",
                                 "\xF0\x9F\x98\x80",
                                 "\xC1\xBF",
                                 "\xED\xA0\x80",
                                 "\xE0\x9F\xBF",
                                 "\xF4\x90\x80\x80",
                                 "\xF0\x8F\xBF\xBF",
                                 "\x80",
                                 "\xFF",
                                 "\xC3",
                                 "\xE6\x97",
                                 "\xF0\x9F\x98",
                                 "\xF0\x9F",
                                 "\xE0",
                                 "\xF5\x80\x80\x80",
                                 "\xD0\x96\xD0\xA6",
                                 "\xDF\xBF\xDF\xBF"};
    for (const char* const filler : {"a", "\xD0\x96", "\xE6\x97\xA5", "\xF0\x9F\x98\x80"})
    {
        for (std::size_t before = 0; before < 70; ++before)
        {
            std::string text;
            for (std::size_t i = 0; i < before; ++i)
            {
                text += filler;
            }
            for (const char* const part : parts)
            {
                SCOPED_TRACE(testing::Message() << filler << " times " << before << ", then " << part);
                Check_Decoding(Bytes_Of(text + part));
                Check_Decoding(Bytes_Of(text + part + text + "z"));
                ASSERT_FALSE(HasFatalFailure());
            }
        }
    }
}

TEST(Utf8, Converts_Random_Texts_As_The_Model_Does)
{
    std::mt19937 random(20);
    for (int round = 0; round < 6000; ++round)
    {
        SCOPED_TRACE(round);
        const Units units = Random_Text(random, 1 + random() % (round % 10 == 0 ? 600 : 90), round % 3 == 0);
        Check_Encoding(units);
        bool bad = false;
        Bytes bytes = Model_Encode(units, bad);
        if (round % 2 == 0)
        {
            for (std::size_t broken = random() % 4; broken != 0 && !bytes.empty(); --broken)
            {
                bytes[random() % bytes.size()] = static_cast<char>(random());
            }
        }
        Check_Decoding(bytes);
        ASSERT_FALSE(HasFatalFailure());
    }
}

TEST(Utf8, Decodes_Random_Bytes_As_The_Model_Does)
{
    std::mt19937 random(4);
    for (int round = 0; round < 4000; ++round)
    {
        Bytes bytes(1 + random() % 200);
        for (char& byte : bytes)
        {
            // Mostly lead and continuation bytes that nearly fit together.
            constexpr unsigned char LIKELY[] = {0x80, 0x8F, 0x90, 0x9F, 0xA0, 0xBF, 0xC2, 0xE0,
                                                0xE1, 0xED, 0xF0, 0xF1, 0xF4, 0x80, 0x80, 0x41};
            byte = static_cast<char>(random() % 8 == 0 ? random() : LIKELY[random() % sizeof LIKELY]);
        }
        SCOPED_TRACE(round);
        Check_Decoding(bytes);
        ASSERT_FALSE(HasFatalFailure());
    }
}

TEST(Utf8, Ends_An_Unmeasured_Text_At_Its_Nul)
{
    wchar_t wide[8];
    EXPECT_EQ(3, MultiByteToWideChar(CP_UTF8, 0, "\xD0\x96z\0behind", -1, wide, 8));
    EXPECT_TEXT_EQ(L"\u0416z", static_cast<const wchar_t*>(wide));
    char narrow[8];
    EXPECT_EQ(4, WideCharToMultiByte(CP_UTF8, 0, L"\u0416z\0behind", -1, narrow, 8, nullptr, nullptr));
    EXPECT_STREQ("\xD0\x96z", narrow);
    EXPECT_EQ(4, WideCharToMultiByte(CP_UTF8, 0, L"\u0416z", -1, nullptr, 0, nullptr, nullptr));
    EXPECT_EQ(3, Encode({0xD800}, narrow, 8));
}
