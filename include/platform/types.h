#ifndef QNLIB_PLATFORM_TYPES_H
#define QNLIB_PLATFORM_TYPES_H

#include <cstdint>

// The platform's basic types at their documented widths, and the codes of the last error. Included through
// lib_platform.h only.

// The platform's calling convention: there is only one here.
#ifndef WINAPI
#define WINAPI
#endif

// Macros, as on the platform: other headers of a program may define them first.
#ifndef FALSE
#define FALSE 0
#endif
#ifndef TRUE
#define TRUE 1
#endif

namespace qn_platform
{

using BOOL = int;
using BYTE = unsigned char;
using WORD = unsigned short;
using DWORD = unsigned int;
using INT = int;
using UINT = unsigned int;
using LONG = int;
using ULONG = unsigned int;
using LONGLONG = long long;
using ULONGLONG = unsigned long long;
using HRESULT = int;
using CHAR = char;
using WCHAR = wchar_t;
using LPSTR = char*;
using LPCSTR = const char*;
using LPWSTR = wchar_t*;
using LPCWSTR = const wchar_t*;
using LPBOOL = BOOL*;
using LPINT = int*;
using LPVOID = void*;
using LPCVOID = const void*;
using HANDLE = void*;
using HINSTANCE = struct HINSTANCE__*;
using HMODULE = HINSTANCE;

static_assert(sizeof(WCHAR) == 2 && sizeof(DWORD) == 4 && sizeof(LONG) == 4 && sizeof(void*) == 8);

inline constexpr DWORD ERROR_SUCCESS = 0;
inline constexpr DWORD ERROR_INVALID_HANDLE = 6;
inline constexpr DWORD ERROR_NOT_ENOUGH_MEMORY = 8;
inline constexpr DWORD ERROR_NOT_SUPPORTED = 50;
inline constexpr DWORD ERROR_INVALID_PARAMETER = 87;
inline constexpr DWORD ERROR_CALL_NOT_IMPLEMENTED = 120;
inline constexpr DWORD ERROR_INSUFFICIENT_BUFFER = 122;
inline constexpr DWORD ERROR_MOD_NOT_FOUND = 126;
inline constexpr DWORD ERROR_INVALID_FLAGS = 1004;
inline constexpr DWORD ERROR_NO_UNICODE_TRANSLATION = 1113;
inline constexpr DWORD ERROR_RESOURCE_DATA_NOT_FOUND = 1812;
inline constexpr DWORD ERROR_RESOURCE_NAME_NOT_FOUND = 1814;

} // namespace qn_platform

#endif
