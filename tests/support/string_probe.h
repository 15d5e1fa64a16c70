#ifndef QNLIB_TEST_STRING_PROBE_H
#define QNLIB_TEST_STRING_PROBE_H

// Both string classes in one test: literals of either width, counted content, and a look at the block.

#include "lib_strings.h"
#include "test_text.h"

#include <algorithm>
#include <random>
#include <tuple>
#include <vector>

// A literal of the width that `Char` names where the macro stands.
#define T(text) std::get<const Char*>(std::tuple<const char*, const wchar_t*>(text, L##text))

namespace test_support
{

template <class String>
using Char_Of = std::remove_cvref_t<decltype(std::declval<String>().Get_At(0))>;

/// A text with whatever it holds, NULs too.
template <class Char>
using Units = std::vector<Char>;

template <class String>
Units<Char_Of<String>> Content(const String& text)
{
    Units<Char_Of<String>> units(text.Get_Length());
    for (std::size_t i = 0; i < units.size(); ++i)
        units[i] = text.Get_At(i);
    return units;
}

template <class String>
void Take(String& text, const Units<Char_Of<String>>& units)
{
    std::copy(units.begin(), units.end(), text.Get_Buffer(units.size()));
    text.Release_Buffer(units.size());
}

/// A string that shows its block.
template <class String>
class Open : public String
{
public:
    using Char = Char_Of<String>;

    using String::String;
    using String::operator=;
    using String::alloc_Copy;
    using String::concat_Copy;
    using String::init;
    using String::m_pChars;

    Open() = default;
    Open(const Open&) = default;
    Open(const String& source) : String(source) {}
    Open& operator=(const Open&) = default;

    int Get_Holders() const { return this->get_Data()->m_nRef_Count; }
    bool Shares_With(const Open& other) const { return m_pChars == other.m_pChars; }
};

using Both_Widths = testing::Types<Lib_StringA, Lib_StringW>;

/// Random texts over few characters, so that they often match.
template <class Char>
class Random_Text
{
public:
    explicit Random_Text(unsigned int nSeed) : m_Engine(nSeed) {}

    std::size_t Below(std::size_t nLimit) { return m_Engine() % nLimit; }

    Char Unit(std::string_view characters) { return static_cast<Char>(characters[Below(characters.size())]); }

    Units<Char> Text(std::size_t nLength, std::string_view characters)
    {
        Units<Char> units(nLength);
        for (Char& unit : units)
            unit = Unit(characters);
        return units;
    }

private:
    std::minstd_rand m_Engine;
};

} // namespace test_support

#endif
