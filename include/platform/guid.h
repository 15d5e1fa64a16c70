#ifndef QNLIB_PLATFORM_GUID_H
#define QNLIB_PLATFORM_GUID_H

#include "lib_api.h"
#include "platform/types.h"

// Globally unique identifiers. Included through lib_platform.h only. Any thread may call these at any time;
// the last error is left alone.

struct _GUID
{
    qn_platform::DWORD Data1;
    qn_platform::WORD Data2;
    qn_platform::WORD Data3;
    qn_platform::BYTE Data4[8];
};

namespace qn_platform
{

using GUID = ::_GUID;
using CLSID = GUID;
using LPCLSID = CLSID*;

inline constexpr HRESULT S_OK = 0;
inline constexpr HRESULT E_FAIL = static_cast<HRESULT>(0x80004005);
inline constexpr HRESULT E_INVALIDARG = static_cast<HRESULT>(0x80070057);
inline constexpr HRESULT CO_E_CLASSSTRING = static_cast<HRESULT>(0x800401F3);

/// Draws a new identifier, version 4: 122 bits of the kernel's random numbers. E_INVALIDARG for null; E_FAIL,
/// with the identifier left alone, if neither getrandom nor /dev/urandom gives any, as in a narrow sandbox.
LIB_API HRESULT CoCreateGuid(GUID* guid);

/// Reads "{8-4-4-4-12}" in hexadecimal digits of either case, and nothing before or behind it. A null text
/// gives the null identifier. E_INVALIDARG for a null `id`.
///
/// Any other text is refused with CO_E_CLASSSTRING. One that doesn't begin with a brace (a program's name on
/// the platform; Linux has none) leaves the null identifier, any other what was read so far: Data1 to Data3
/// take each digit as it comes and Data4 whole bytes, and what lies behind the fault keeps its old value.
LIB_API HRESULT CLSIDFromString(LPCWSTR text, LPCLSID id);

} // namespace qn_platform

#endif
