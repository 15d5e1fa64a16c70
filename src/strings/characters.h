#ifndef QNLIB_SRC_STRINGS_CHARACTERS_H
#define QNLIB_SRC_STRINGS_CHARACTERS_H

#include "strings/scan.h"

#include <cstddef>
#include <cstring>
#include <type_traits>

// Characters of either width as the string operations handle them: moved, counted, compared as unsigned.

namespace characters
{

/// Copies to a place that may overlap. Null is allowed with a count of 0.
template <class Char>
void Move(Char* pTarget, const Char* pSource, std::size_t nCount) noexcept
{
    if (nCount != 0)
        std::memmove(pTarget, pSource, nCount * sizeof(Char));
}

/// Copies to a place elsewhere. Null is allowed with a count of 0.
template <class Char>
void Copy(Char* pTarget, const Char* pSource, std::size_t nCount) noexcept
{
    if (nCount != 0)
        std::memcpy(pTarget, pSource, nCount * sizeof(Char));
}

/// Characters before the NUL.
inline std::size_t Length(const char* pText) noexcept { return std::strlen(pText); }
inline std::size_t Length(const wchar_t* pText) noexcept { return scan::Length_Before(pText, 0); }

/// Characters before the NUL, at most nLimit; nothing behind the limit is read.
template <class Char>
std::size_t Length_Up_To(const Char* pText, std::size_t nLimit) noexcept
{
    std::size_t nLength = 0;
    while (nLength < nLimit && pText[nLength] != 0)
        ++nLength;
    return nLength;
}

/// Whether a character stands in a NUL-ended set; the NUL never does.
template <class Char>
bool Is_In(Char ch, const Char* pSet) noexcept
{
    for (; *pSet != 0; ++pSet)
        if (*pSet == ch)
            return true;
    return false;
}

/// Length of the leading run of characters that all stand, or none of which stands, in a NUL-ended set.
template <class Char>
std::size_t Run_Inside(const Char* pText, const Char* pSet) noexcept
{
    std::size_t nRun = 0;
    while (Is_In(pText[nRun], pSet))
        ++nRun;
    return nRun;
}
template <class Char>
std::size_t Run_Outside(const Char* pText, const Char* pSet) noexcept
{
    std::size_t nRun = 0;
    while (pText[nRun] != 0 && !Is_In(pText[nRun], pSet))
        ++nRun;
    return nRun;
}

} // namespace characters

#endif
