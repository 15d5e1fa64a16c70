#ifndef QNLIB_SRC_STRINGS_WHITE_SPACE_H
#define QNLIB_SRC_STRINGS_WHITE_SPACE_H

/// White space as the runtime classes 16-bit units: below 256 fixed, above by CT_CTYPE1.
bool is_White_Space(wchar_t ch) noexcept;

/// A byte counts as the 16-bit unit that it gives when widened with its sign.
inline bool is_White_Space(char ch) noexcept
{
    return is_White_Space(static_cast<wchar_t>(static_cast<signed char>(ch)));
}

#endif
