#ifndef QNLIB_SRC_PLATFORM_WHITE_SPACE_H
#define QNLIB_SRC_PLATFORM_WHITE_SPACE_H

#include "lib_platform.h"

namespace qn_runtime
{

/// White space as the runtime classes 16-bit units, in every locale: below 256 fixed, above by CT_CTYPE1.
inline bool Is_White_Space(wchar_t unit)
{
    constexpr unsigned long long LOW = 0x1FULL << 0x09 | 1ULL << 0x20; // tab to return, blank
    if (unit < 0x40)
        return (LOW >> unit & 1) != 0;
    if (unit < 0x100)
        return unit == 0x85 || unit == 0xA0;
    const wchar_t above = unit; // whose address is taken, so that the quick ways keep the unit in a register
    WORD type = 0;
    return unit != 0xFFFF && GetStringTypeW(CT_CTYPE1, &above, 1, &type) && (type & C1_SPACE) != 0;
}

/// A byte counts as the 16-bit unit that it gives when widened with its sign.
inline bool Is_White_Space(char byte)
{
    return Is_White_Space(static_cast<wchar_t>(static_cast<signed char>(byte)));
}

} // namespace qn_runtime

#endif
