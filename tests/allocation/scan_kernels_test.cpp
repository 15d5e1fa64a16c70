// The vector searches that every machine has and those chosen for this one, with texts that end where their
// memory ends.

#include "strings/scan.h"
#include "strings/scan_dispatch.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <random>
#include <vector>

namespace
{

/// What the module has chosen for this machine.
constexpr scan::Kernels s_Chosen_Kernels = {scan::Find_Character, scan::Find_Character, scan::Find_Text,
                                            scan::Find_Text};

auto Find_Character(const scan::Kernels& kernels, const char* pText, std::size_t nLength, char ch)
{
    return kernels.m_pFind_CharacterA(pText, nLength, ch);
}
auto Find_Character(const scan::Kernels& kernels, const wchar_t* pText, std::size_t nLength, wchar_t ch)
{
    return kernels.m_pFind_CharacterW(pText, nLength, ch);
}
auto Find_Text(const scan::Kernels& kernels, const char* pText, std::size_t nLength,
               const std::vector<char>& part)
{
    return kernels.m_pFind_TextA(pText, nLength, part.data(), part.size());
}
auto Find_Text(const scan::Kernels& kernels, const wchar_t* pText, std::size_t nLength,
               const std::vector<wchar_t>& part)
{
    return kernels.m_pFind_TextW(pText, nLength, part.data(), part.size());
}

/// A text of a few characters at an offset in memory that it ends.
template <class Char>
void Check(const scan::Kernels& kernels, std::minstd_rand& random, std::size_t nLength, std::size_t nOffset)
{
    const auto pMemory = std::make_unique<Char[]>(nOffset + nLength + 1);
    Char* pText = pMemory.get() + nOffset;
    for (std::size_t i = 0; i < nLength; ++i)
        pText[i] = static_cast<Char>(random() % 16 != 0 ? 'a' : random() % 8 != 0 ? 'b' : 0);
    const Char* pStretch_End = std::find(pText, pText + nLength, Char(0));
    const auto Expected = [&](const Char* pFound, const Char* pNone)
    { return pFound == pNone ? scan::None : static_cast<std::size_t>(pFound - pText); };

    for (const Char ch : {Char('a'), Char('b'), Char('c')})
        ASSERT_EQ(Expected(std::find(static_cast<const Char*>(pText), pStretch_End, ch), pStretch_End),
                  Find_Character(kernels, pText, nLength, ch));
    ASSERT_EQ(static_cast<std::size_t>(pStretch_End - pText),
              Find_Character(kernels, pText, nLength, Char(0)));

    if constexpr (sizeof(Char) == 2)
    {
        for (const Char ch : {Char(0), Char('a'), Char('b'), Char('c')})
            ASSERT_EQ(std::find(static_cast<const Char*>(pText), pStretch_End, ch) - pText,
                      static_cast<std::ptrdiff_t>(scan::Length_Before(pText, ch)));
    }

    std::vector<Char> part(2 + random() % 6, 'a');
    part[random() % part.size()] = 'b';
    ASSERT_EQ(Expected(std::search(static_cast<const Char*>(pText), pStretch_End, part.begin(), part.end()),
                       pStretch_End),
              Find_Text(kernels, pText, nLength, part));
    part.assign(pText + random() % (nLength + 1), pText + nLength);
    part.resize(static_cast<std::size_t>(std::find(part.begin(), part.end(), Char(0)) - part.begin()));
    const Char* pFound = std::search(static_cast<const Char*>(pText), pStretch_End, part.begin(), part.end());
    ASSERT_EQ(part.empty() ? 0 : Expected(pFound, pStretch_End), Find_Text(kernels, pText, nLength, part));
}

} // namespace

TEST(Scan_Kernels, Agree_With_A_Plain_Search_At_Every_Length_And_Alignment)
{
    std::minstd_rand random(2);
    for (const scan::Kernels* pKernels : {&scan::Base_Kernels, &s_Chosen_Kernels})
        for (std::size_t nLength = 0; nLength < 300 && !HasFailure(); ++nLength)
            for (std::size_t nOffset = 0; nOffset < 33 && !HasFailure(); ++nOffset)
            {
                SCOPED_TRACE(testing::Message() << nLength << " characters at " << nOffset
                                                << (pKernels == &scan::Base_Kernels ? ", base" : ", chosen"));
                Check<char>(*pKernels, random, nLength, nOffset);
                Check<wchar_t>(*pKernels, random, nLength, nOffset);
            }
}
