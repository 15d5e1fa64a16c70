#include "strings/white_space.h"

#include "lib_platform.h"

bool is_White_Space(wchar_t ch) noexcept
{
    if (ch < 0x100)
        return (ch >= 0x09 && ch <= 0x0D) || ch == 0x20 || ch == 0x85 || ch == 0xA0;
    WORD nTypes = 0;
    return ch != 0xFFFF && GetStringTypeW(CT_CTYPE1, &ch, 1, &nTypes) && (nTypes & C1_SPACE) != 0;
}
