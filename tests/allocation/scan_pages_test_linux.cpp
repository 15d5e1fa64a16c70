// The search for the end of a text reads whole vectors: no page but the text's own.

#include "strings/scan.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>

#include <sys/mman.h>
#include <unistd.h>

TEST(Scan_Pages, The_End_Of_A_Text_Is_Found_Within_Its_Pages)
{
    const auto nPage = static_cast<std::size_t>(getpagesize());
    void* pPages = mmap(nullptr, 3 * nPage, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    ASSERT_NE(MAP_FAILED, pPages);
    char* pBegin = static_cast<char*>(pPages) + nPage;
    ASSERT_EQ(0, mprotect(pBegin, nPage, PROT_READ | PROT_WRITE));
    auto* pUnits = reinterpret_cast<wchar_t*>(pBegin);
    const std::size_t nUnits = nPage / sizeof(wchar_t);
    for (std::size_t nLength = 0; nLength < 40; ++nLength)
        for (wchar_t* pText : {pUnits + nLength % 9, pUnits + nUnits - nLength - 1})
        {
            std::fill_n(pUnits, nUnits, L'x');
            pText[nLength] = 0;
            EXPECT_EQ(nLength, scan::Length_Before(pText, 0));
            EXPECT_EQ(0U, scan::Length_Before(pText, nLength != 0 ? L'x' : L'y'));
        }
    munmap(pPages, 3 * nPage);
}
