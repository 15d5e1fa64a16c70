// GoogleTest in one translation unit, with the few wide-text functions of the C runtime that it calls
// replaced: the runtime on Linux takes wchar_t for 32 bits, so it would run past the end of a 16-bit text
// when an assertion prints or compares one.

#include <cwchar>
#include <cwctype>

namespace test_support
{

std::size_t Wide_Length(const wchar_t* text)
{
    std::size_t length = 0;
    while (text[length] != 0)
    {
        ++length;
    }
    return length;
}

int Compare_Wide(const wchar_t* left, const wchar_t* right)
{
    while (*left != 0 && *left == *right)
    {
        ++left;
        ++right;
    }
    return static_cast<int>(*left) - static_cast<int>(*right);
}

} // namespace test_support

#define wcslen test_support::Wide_Length
#define wcscmp test_support::Compare_Wide

#include "src/gtest-all.cc"
