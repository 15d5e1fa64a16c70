#ifndef QNLIB_SRC_PLATFORM_PROVIDERS_OLEAUT32_DATE_TEXT_H
#define QNLIB_SRC_PLATFORM_PROVIDERS_OLEAUT32_DATE_TEXT_H

#include "platform/time.h"

// What writing and reading dates have in common.

namespace qn_oleaut32
{

using qn_platform::HRESULT;
using qn_platform::ULONG;

inline constexpr HRESULT INVALID_ARGUMENT = static_cast<HRESULT>(0x80070057);
inline constexpr HRESULT OUT_OF_MEMORY = static_cast<HRESULT>(0x8007000E);
inline constexpr HRESULT TYPE_MISMATCH = static_cast<HRESULT>(0x80020005);

/// The time alone and the date alone exclude each other.
constexpr bool Are_Known_Flags(ULONG flags)
{
    constexpr ULONG PARTS = qn_platform::VAR_TIMEVALUEONLY | qn_platform::VAR_DATEVALUEONLY;
    return (flags & ~(PARTS | qn_platform::LOCALE_NOUSEROVERRIDE)) == 0 && (flags & PARTS) != PARTS;
}

} // namespace qn_oleaut32

#endif
