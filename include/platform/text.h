#ifndef QNLIB_PLATFORM_TEXT_H
#define QNLIB_PLATFORM_TEXT_H

#include "lib_api.h"
#include "platform/types.h"

#include <cstdarg>
#include <cstddef>

// Code pages, character classes and the bounded formatters of the platform. The system ANSI code page is
// Windows-1252, the OEM code page 437. Every operation may run on any thread; those that read the runtime's
// locale see the one in force when they begin. Included through lib_platform.h only.

namespace qn_platform
{

inline constexpr UINT CP_ACP = 0;
inline constexpr UINT CP_OEMCP = 1;
inline constexpr UINT CP_UTF8 = 65001;

inline constexpr DWORD MB_PRECOMPOSED = 0x1;
inline constexpr DWORD MB_ERR_INVALID_CHARS = 0x8;
inline constexpr DWORD WC_ERR_INVALID_CHARS = 0x80;
inline constexpr DWORD WC_NO_BEST_FIT_CHARS = 0x400;

/// 8-bit to 16-bit text. `source_size` counts bytes, -1 means up to and with the NUL. With a capacity of 0
/// the answer is the number of units needed and nothing is written; otherwise the number of units written.
/// 0 is a failure with last error 122 (target too small; its content is then undefined), 87 (bad argument:
/// null source, size 0 or below -1, null or negative target, target equal to the source, unknown code page),
/// 1004 (bad flags) or 1113 (MB_ERR_INVALID_CHARS and a bad sequence). Code pages: CP_ACP, CP_OEMCP, 1252,
/// 437, 65001. Without MB_ERR_INVALID_CHARS each maximal bad part of UTF-8 becomes one U+FFFD. After success
/// nothing behind the units counted was written.
LIB_API int MultiByteToWideChar(UINT code_page, DWORD flags, LPCSTR source, int source_size, LPWSTR target,
                                int target_size);

/// 16-bit to 8-bit text, the mirror of MultiByteToWideChar. What the code page lacks becomes
/// `default_char`, or `?` when that is null, and `*default_used` tells whether that happened; for 65001
/// both must be null (87). An unpaired surrogate becomes U+FFFD in UTF-8, or 1113 with WC_ERR_INVALID_CHARS.
LIB_API int WideCharToMultiByte(UINT code_page, DWORD flags, LPCWSTR source, int source_size, LPSTR target,
                                int target_size, LPCSTR default_char, LPBOOL default_used);

/// The numbers of the ANSI and of the OEM code page.
LIB_API UINT GetACP();
LIB_API UINT GetOEMCP();

/// Turns NUL-ended ANSI text into OEM text and back; source and target may be the same. Null gives FALSE.
LIB_API BOOL CharToOemA(LPCSTR source, LPSTR target);
LIB_API BOOL OemToCharA(LPCSTR source, LPSTR target);

inline constexpr DWORD CT_CTYPE1 = 1;
inline constexpr DWORD CT_CTYPE2 = 2;
inline constexpr DWORD CT_CTYPE3 = 4;

inline constexpr WORD C1_UPPER = 0x0001;
inline constexpr WORD C1_LOWER = 0x0002;
inline constexpr WORD C1_DIGIT = 0x0004;
inline constexpr WORD C1_SPACE = 0x0008;
inline constexpr WORD C1_PUNCT = 0x0010;
inline constexpr WORD C1_CNTRL = 0x0020;
inline constexpr WORD C1_BLANK = 0x0040;
inline constexpr WORD C1_XDIGIT = 0x0080;
inline constexpr WORD C1_ALPHA = 0x0100;
inline constexpr WORD C1_DEFINED = 0x0200;

/// The character classes of each of `source_size` units (-1: up to and with the NUL), one WORD a unit.
/// Only CT_CTYPE1 is known: other types give FALSE and 50 where they exist, 1004 otherwise; null pointers
/// and a size of 0 give FALSE and 87.
LIB_API BOOL GetStringTypeW(DWORD info_type, LPCWSTR source, int source_size, WORD* types);

inline constexpr INT IS_TEXT_UNICODE_ASCII16 = 0x0001;
inline constexpr INT IS_TEXT_UNICODE_STATISTICS = 0x0002;
inline constexpr INT IS_TEXT_UNICODE_CONTROLS = 0x0004;
inline constexpr INT IS_TEXT_UNICODE_SIGNATURE = 0x0008;
inline constexpr INT IS_TEXT_UNICODE_REVERSE_ASCII16 = 0x0010;
inline constexpr INT IS_TEXT_UNICODE_REVERSE_STATISTICS = 0x0020;
inline constexpr INT IS_TEXT_UNICODE_REVERSE_CONTROLS = 0x0040;
inline constexpr INT IS_TEXT_UNICODE_REVERSE_SIGNATURE = 0x0080;
inline constexpr INT IS_TEXT_UNICODE_ILLEGAL_CHARS = 0x0100;
inline constexpr INT IS_TEXT_UNICODE_ODD_LENGTH = 0x0200;
inline constexpr INT IS_TEXT_UNICODE_NULL_BYTES = 0x1000;
inline constexpr INT IS_TEXT_UNICODE_UNICODE_MASK = 0x000F;
inline constexpr INT IS_TEXT_UNICODE_REVERSE_MASK = 0x00F0;
inline constexpr INT IS_TEXT_UNICODE_NOT_UNICODE_MASK = 0x0F00;
inline constexpr INT IS_TEXT_UNICODE_NOT_ASCII_MASK = 0xF000;

/// Whether `size` bytes look like 16-bit text. `tests` names the tests to run and receives those that
/// passed; null runs all of them. TRUE when a test of IS_TEXT_UNICODE_UNICODE_MASK passed and none of
/// IS_TEXT_UNICODE_NOT_UNICODE_MASK did, where IS_TEXT_UNICODE_CONTROLS counts only if it is the only one of
/// the former that is asked for. Data without a NUL or control byte that 8-bit text lacks is never taken for
/// 16-bit text by the statistics, so ASCII, Windows-1252 and UTF-8 are not; NULs at the end are a
/// terminator, whatever their number. Null data or a size below 1 give FALSE.
LIB_API BOOL IsTextUnicode(LPCVOID data, int size, LPINT tests);

/// Units before the NUL; 0 for null.
LIB_API int lstrlenW(LPCWSTR text);

inline constexpr std::size_t _TRUNCATE = static_cast<std::size_t>(-1);

/// The bounded formatters. They write at most `capacity` - 1 characters (with _TRUNCATE as `count`, or
/// `count` if that is less) and always end the text. The answer is the number of characters written, -1 if
/// the text was cut, or -1 with an empty text for a null format. A null string prints as "(null)". `s` and
/// `c` take the function's own width, `S` and `C` the other one, `h` the 8-bit and `l` the 16-bit one; `I64`
/// and `ll` mark 64-bit integers; `n` takes its pointer and writes nothing through it. A negative width by
/// `*` aligns to the left, a negative precision counts as none. Numbers follow the runtime's locale.
LIB_API int _vsnprintf_s(char* buffer, std::size_t capacity, std::size_t count, const char* format,
                         std::va_list arguments);
LIB_API int _vsnwprintf_s(wchar_t* buffer, std::size_t capacity, std::size_t count, const wchar_t* format,
                          std::va_list arguments);

/// Asks for or changes the locale of the runtime that the library uses ("C" at first): case folding,
/// collation, the decimal point of the formatters and parsers, and the text of times. `category` is LC_ALL,
/// by its number here or on Windows (0); others give null. A null name only asks; "C" and "" (the user's
/// default locale, from the environment) are always known; other names are those of the host system, and
/// those of the platform that GetLocaleInfoW helps to make, "German_Germany.1252" (with the host's case and
/// collation if it has that locale, otherwise with Unicode's case and the order of the units). The answer is
/// the name now in force, or null when the name is unknown, which changes nothing. The host program's own
/// locale is neither read nor changed.
LIB_API wchar_t* _wsetlocale(int category, const wchar_t* name);

} // namespace qn_platform

#endif
