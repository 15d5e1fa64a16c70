#ifndef QNLIB_SRC_STRINGS_SCAN_H
#define QNLIB_SRC_STRINGS_SCAN_H

#include <cstddef>

// The searches of the strings, at the speed of the machine's vectors. A text that is given with its length
// ends with a NUL there and is searched up to its first NUL; nothing behind the length is read. Positions
// count characters; None means not found.

namespace scan
{

inline constexpr std::size_t None = static_cast<std::size_t>(-1);

/// The first `ch`; for a NUL the position of the first NUL.
std::size_t Find_Character(const char* pText, std::size_t nLength, char ch) noexcept;
std::size_t Find_Character(const wchar_t* pText, std::size_t nLength, wchar_t ch) noexcept;

/// The first occurrence of a part, which holds no NUL; an empty one is found at 0.
std::size_t Find_Text(const char* pText, std::size_t nLength, const char* pPart, std::size_t nPart) noexcept;
std::size_t Find_Text(const wchar_t* pText, std::size_t nLength, const wchar_t* pPart,
                      std::size_t nPart) noexcept;

/// Units before the first `ch`, or before the NUL, of a text whose length isn't known. Reads whole vectors:
/// up to 14 bytes before the text and behind its NUL, but of no other page.
std::size_t Length_Before(const wchar_t* pText, wchar_t ch) noexcept;

} // namespace scan

#endif
