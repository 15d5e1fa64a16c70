#include "lib_platform.h"
#include "test_text.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>
#include <vector>

#include <sys/mman.h>

// UTF-8 both ways: against published examples, and on random texts against a model that goes by the
// standard's table of well-formed sequences, one character at a time.

namespace
{

using Bytes = std::vector<char>;
using Units = std::vector<wchar_t>;

/// What may begin a sequence, what may stand second, and how many bytes there are.
struct Sequence
{
    unsigned int lead_from, lead_to, second_from, second_to, size;
};
constexpr Sequence SEQUENCES[] = {
    {0x00, 0x7F, 0, 0, 1},       {0xC2, 0xDF, 0x80, 0xBF, 2}, {0xE0, 0xE0, 0xA0, 0xBF, 3},
    {0xE1, 0xEC, 0x80, 0xBF, 3}, {0xED, 0xED, 0x80, 0x9F, 3}, {0xEE, 0xEF, 0x80, 0xBF, 3},
    {0xF0, 0xF0, 0x90, 0xBF, 4}, {0xF1, 0xF3, 0x80, 0xBF, 4}, {0xF4, 0xF4, 0x80, 0x8F, 4}};

void Append(Units& units, unsigned int value)
{
    if (value > 0xFFFF)
    {
        units.push_back(static_cast<wchar_t>(0xD800 + ((value - 0x10000) >> 10)));
        value = 0xDC00 + ((value - 0x10000) & 0x3FF);
    }
    units.push_back(static_cast<wchar_t>(value));
}

Units Model_Decode(const Bytes& source, bool& bad)
{
    Units result;
    const auto byte_At = [&](std::size_t at) { return static_cast<unsigned char>(source[at]); };
    for (std::size_t at = 0, taken = 1; at < source.size(); at += taken)
    {
        const unsigned int lead = byte_At(at);
        const auto form = std::find_if(std::begin(SEQUENCES), std::end(SEQUENCES),
                                       [&](const Sequence& each)
                                       { return lead >= each.lead_from && lead <= each.lead_to; });
        const unsigned int size = form == std::end(SEQUENCES) ? 0 : form->size;
        unsigned int value = size < 2 ? lead : lead & (0x7Fu >> size);
        for (taken = 1; taken < size && at + taken < source.size(); ++taken)
        {
            const unsigned int next = byte_At(at + taken);
            if (next < (taken == 1 ? form->second_from : 0x80) ||
                next > (taken == 1 ? form->second_to : 0xBF))
            {
                break;
            }
            value = value * 64 + (next & 0x3F);
        }
        bad |= taken != size;
        Append(result, taken == size ? value : 0xFFFD);
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
        const unsigned int size = value < 0x80 ? 1 : value < 0x800 ? 2 : value < 0x10000 ? 3 : 4;
        const unsigned int lead = size == 1 ? 0 : 0xF00u >> size;
        result.push_back(static_cast<char>(lead | value >> 6 * (size - 1)));
        for (unsigned int rest = size - 1; rest != 0; --rest)
        {
            result.push_back(static_cast<char>(0x80 | (value >> 6 * (rest - 1) & 0x3F)));
        }
    }
    return result;
}

int Convert(const char* source, std::size_t size, wchar_t* target, std::size_t capacity, bool strict = false)
{
    return MultiByteToWideChar(CP_UTF8, strict ? MB_ERR_INVALID_CHARS : 0, source, static_cast<int>(size),
                               target, static_cast<int>(capacity));
}

int Convert(const wchar_t* source, std::size_t size, char* target, std::size_t capacity, bool strict = false)
{
    return WideCharToMultiByte(CP_UTF8, strict ? WC_ERR_INVALID_CHARS : 0, source, static_cast<int>(size),
                               target, static_cast<int>(capacity), nullptr, nullptr);
}

/// A copy that ends where its page does, before one that may not be touched; there is one at a time.
template <class Unit>
const Unit* Guarded(const std::vector<Unit>& text)
{
    constexpr std::size_t ROOM = 65536;
    static char* const guard = []
    {
        void* const pages =
            mmap(nullptr, 2 * ROOM, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        mprotect(static_cast<char*>(pages) + ROOM, ROOM, PROT_NONE);
        return static_cast<char*>(pages) + ROOM;
    }();
    Unit* const copy = reinterpret_cast<Unit*>(guard) - text.size();
    std::copy(text.begin(), text.end(), copy);
    return copy;
}

/// Converts with all that is promised: an exact size, no unit written behind the result, a refusal of a
/// target that is one short without writing behind it, strictness, and no read outside of the source.
template <class Source, class Target>
void Check(const Source& plain, const Target& expected, bool bad)
{
    using Unit = typename Target::value_type;
    const auto* const source = Guarded(plain);
    const std::size_t size = expected.size();
    const int answer = static_cast<int>(size);
    ASSERT_EQ(answer, Convert(source, plain.size(), static_cast<Unit*>(nullptr), 0));
    for (const std::size_t capacity : {size, size + 100, size - 1})
    {
        if (capacity == 0)
        {
            continue; // it would ask for the size
        }
        Target target(size + 108, Unit(0x55));
        SetLastError(0);
        const bool fits = capacity >= size;
        ASSERT_EQ(fits ? answer : 0, Convert(source, plain.size(), target.data(), capacity));
        ASSERT_EQ(fits ? 0 : ERROR_INSUFFICIENT_BUFFER, GetLastError());
        ASSERT_TRUE(!fits || std::equal(expected.begin(), expected.end(), target.begin()));
        ASSERT_TRUE(std::all_of(target.begin() + static_cast<std::ptrdiff_t>(std::min(size, capacity)),
                                target.end(), [](Unit unit) { return unit == Unit(0x55); }));
    }
    Target target(size);
    for (const std::size_t capacity : {std::size_t{0}, size})
    {
        SetLastError(0);
        ASSERT_EQ(bad ? 0 : answer, Convert(source, plain.size(), target.data(), capacity, true));
        ASSERT_EQ(bad ? ERROR_NO_UNICODE_TRANSLATION : 0, GetLastError());
    }
}

void Check_Decoding(const Bytes& source)
{
    bool bad = false;
    const Units model = Model_Decode(source, bad);
    Check(source, model, bad);
}

// A text in runs: so many characters of one size, then of another, as words and blanks are.
Units Random_Text(std::mt19937& random, std::size_t characters, bool surrogates)
{
    constexpr std::pair<unsigned int, unsigned int> kinds[] = {
        {0, 0x80}, {0x80, 0x780}, {0x800, 0xD000}, {0x10000, 0x100000}, {0xD800, 0x800}};
    Units units;
    while (units.size() < characters)
    {
        const auto& [first, count] = kinds[random() % (surrogates ? 5 : 4)];
        for (std::size_t left = random() % 12; left != 0; --left)
        {
            Append(units, first + static_cast<unsigned int>(random()) % count);
        }
    }
    return units;
}

} // namespace

TEST(Utf8, Replaces_Maximal_Parts_As_Unicode_Recommends)
{
    const wchar_t R = 0xFFFD;
    const std::pair<const char*, Units> examples[] = {
        // Those of the standard's chapter 3: non-shortest forms, surrogates, beyond the end, truncated.
        {"\xC0\xAF\xE0\x80\xBF\xF0\x81\x82\x41", {R, R, R, R, R, R, R, R, 0x41}},
        {"\xED\xA0\x80\xED\xBF\xBF\xED\xAF\x41", {R, R, R, R, R, R, R, R, 0x41}},
        {"\xF4\x91\x92\x93\xFF\x41\x80\xBF\x42", {R, R, R, R, R, 0x41, R, R, 0x42}},
        {"\xE1\x80\xE2\xF0\x91\x92\xF1\xBF\x41", {R, R, R, R, 0x41}},
        {"\x61\xF1\x80\x80\xE1\x80\xC2\x62\x80\x63\x80\xBF\x64", {0x61, R, R, R, 0x62, R, 0x63, R, R, 0x64}},
        // The ends of every form, and the marks, which are characters like others.
        {"\x7F\xC2\x80\xDF\xBF\xE0\xA0\x80\xED\x9F\xBF\xEE\x80\x80\xEF\xBB\xBF\xEF\xBF\xBF",
         {0x7F, 0x80, 0x7FF, 0x800, 0xD7FF, 0xE000, 0xFEFF, 0xFFFF}},
        {"\xF0\x90\x80\x80\xF4\x8F\xBF\xBF", {0xD800, 0xDC00, 0xDBFF, 0xDFFF}},
    };
    for (const auto& [bytes, expected] : examples)
    {
        Units units(30);
        units.resize(static_cast<std::size_t>(Convert(bytes, std::string(bytes).size(), units.data(), 30)));
        EXPECT_EQ(expected, units) << bytes;
    }
}

TEST(Utf8, Converts_Random_Texts_As_The_Model_Does)
{
    std::mt19937 random(20);
    for (int round = 0; round < 6000; ++round)
    {
        SCOPED_TRACE(round);
        const Units units = Random_Text(random, 1 + random() % (round % 10 == 0 ? 600 : 90), round % 3 == 0);
        bool bad = false;
        Bytes bytes = Model_Encode(units, bad);
        Check(units, bytes, bad);
        for (std::size_t broken = round % 2 == 0 ? random() % 4 : 0; broken != 0; --broken)
        {
            bytes[random() % bytes.size()] = static_cast<char>(random());
        }
        Check_Decoding(bytes);
        ASSERT_FALSE(HasFatalFailure());
    }
}

TEST(Utf8, Decodes_Random_Bytes_As_The_Model_Does)
{
    // Mostly lead and continuation bytes that nearly fit together.
    constexpr unsigned char LIKELY[] = {0x80, 0x8F, 0x90, 0x9F, 0xA0, 0xBF, 0xC2, 0xE0,
                                        0xE1, 0xED, 0xF0, 0xF1, 0xF4, 0x80, 0x80, 0x41};
    std::mt19937 random(4);
    for (int round = 0; round < 4000; ++round)
    {
        Bytes bytes(1 + random() % 200);
        for (char& byte : bytes)
        {
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
}
