#ifndef QNLIB_PLATFORM_TIME_H
#define QNLIB_PLATFORM_TIME_H

#include "lib_api.h"
#include "platform/types.h"

#include <ctime>

// The platform's forms of a time, its locales by identifier, and the text of dates. Every operation may run
// on any thread. Included through lib_platform.h only.

namespace qn_platform
{

using LCID = DWORD;
using LCTYPE = DWORD;
using DATE = double;
using BSTR = wchar_t*;
using errno_t = int;

/// A date and time by its fields. The day of the week counts from Sunday, which is 0.
struct _SYSTEMTIME
{
    WORD wYear;
    WORD wMonth;
    WORD wDayOfWeek;
    WORD wDay;
    WORD wHour;
    WORD wMinute;
    WORD wSecond;
    WORD wMilliseconds;
};
using SYSTEMTIME = _SYSTEMTIME;
using LPSYSTEMTIME = SYSTEMTIME*;

/// A time in units of 100 nanoseconds since 1 January 1601, in two halves.
struct _FILETIME
{
    DWORD dwLowDateTime;
    DWORD dwHighDateTime;
};
using FILETIME = _FILETIME;
using LPFILETIME = FILETIME*;

/// The time now, UTC, in milliseconds.
LIB_API void GetSystemTime(LPSYSTEMTIME time);

/// Fields to file time; the day of the week is not looked at. FALSE with 87, and nothing written, for a null
/// pointer, a year outside 1601 to 30827, or another field that no date and time has.
LIB_API BOOL SystemTimeToFileTime(const SYSTEMTIME* time, LPFILETIME file_time);

/// File time to fields. FALSE with 87 for a null pointer, and for a time whose highest bit is set.
LIB_API BOOL FileTimeToSystemTime(const FILETIME* file_time, LPSYSTEMTIME time);

/// To the time of the process's zone (TZ, or the system's) and from it. The bias is the one in force now, at
/// the time of the call, also for a time at which summer time is or was different. FALSE with 87, and
/// nothing written, for a null pointer or a result outside of the 64 bits.
LIB_API BOOL FileTimeToLocalFileTime(const FILETIME* file_time, LPFILETIME local_time);
LIB_API BOOL LocalFileTimeToFileTime(const FILETIME* local_time, LPFILETIME file_time);

/// Between fields and the variant form: days from 30 December 1899, with the time of day as a fraction that
/// has the sign of the day. Both answer TRUE or FALSE, with nothing written and the last error as it was.
///
/// To fields, the time is rounded to the second, half a second upwards; milliseconds are 0. FALSE for values
/// up to -657435.0, from 2958466.0 on, and those that round to the year 10000.
///
/// From fields, milliseconds are dropped. A year below 50 is taken for one after 2000, one below 100 for one
/// after 1900; FALSE for a year above 9999, a month above 12, a day above 31, an hour above 23, a minute or
/// second above 59. Month 0 is the December before, day 0 the last day of the month before, and a day behind
/// the end of its month runs into the next.
LIB_API INT VariantTimeToSystemTime(DATE value, LPSYSTEMTIME time);
LIB_API INT SystemTimeToVariantTime(LPSYSTEMTIME time, DATE* value);

/// Seconds since 1970, UTC, to fields. 0, or 22 for a null pointer and for a time outside of -43200 to
/// 32536846799, which leaves -1 in every field.
LIB_API errno_t _gmtime64_s(std::tm* fields, const long long* time);

inline constexpr LCID LOCALE_NEUTRAL = 0x0000;
inline constexpr LCID LOCALE_USER_DEFAULT = 0x0400;
inline constexpr LCID LOCALE_SYSTEM_DEFAULT = 0x0800;
inline constexpr LCID LOCALE_INVARIANT = 0x007F;

inline constexpr LCTYPE LOCALE_SENGLANGUAGE = 0x1001;
inline constexpr LCTYPE LOCALE_SENGCOUNTRY = 0x1002;
inline constexpr LCTYPE LOCALE_IDEFAULTANSICODEPAGE = 0x1004;
inline constexpr DWORD LOCALE_NOUSEROVERRIDE = 0x80000000;

/// A text about a locale: its language or country in English, or the number of its ANSI code page, "0" when
/// it has none. The answer is the length with the NUL, also when `size` is 0, which writes nothing; 0 is a
/// failure: 122 when the buffer is too small, 1004 for another type, 87 for a null buffer, a negative size or
/// an unknown locale, 126 without the provider `oleaut32`.
///
/// Known are the identifiers that ICU maps to a locale of which it has data, with whatever sort order. 0x400,
/// 0x800 and 0 (0x1000 and 0xC00 too) are the user's locale by the environment as ICU reads it (LC_ALL,
/// LC_MESSAGES, LANG), and en-US where that says nothing, "C" or a locale without data. The user's overrides,
/// which LOCALE_NOUSEROVERRIDE leaves out, don't exist here.
LIB_API int GetLocaleInfoW(LCID locale, LCTYPE type, LPWSTR buffer, int size);

inline constexpr ULONG VAR_TIMEVALUEONLY = 0x1;
inline constexpr ULONG VAR_DATEVALUEONLY = 0x2;

/// Makes the text of a date: the locale's short date with the whole year, a blank, its time with seconds.
/// The time is left out at midnight and the date at day 0, but for day 0 at midnight, which is a time; with
/// VAR_TIMEVALUEONLY or VAR_DATEVALUEONLY the other one is left out, and with that maybe both. Dates are
/// Gregorian and digits those of ASCII in every locale. The text goes to `*text`, for SysFreeString.
///
/// 0, or E_INVALIDARG (0x80070057) for a null pointer, a value that VariantTimeToSystemTime refuses, an
/// unknown locale, both flags or other flags than these two and LOCALE_NOUSEROVERRIDE; 0x8007000E when memory
/// is short; 0x8007007E without the provider `oleaut32`. A failure leaves `*text` alone.
LIB_API HRESULT VarBstrFromDate(DATE value, LCID locale, ULONG flags, BSTR* text);

/// Reads a text as a date, a time, or both in either order, with blanks between them or a comma.
///
/// A date is two or three numbers with `/`, `-`, `.`, `,` or blanks between them, or a month's name (long or
/// short, in the locale's language or in English) and one or two numbers. Numbers stand in the locale's
/// order; those that only fit otherwise are swapped, and a number of three digits or more is the year. Years
/// below 50 mean those after 2000, years below 100 those after 1900. Without a year it is the present one,
/// without a day the first.
///
/// A time is two or three numbers with `:` or the locale's separator between them, or a single number with
/// a marker; the marker for the half of the day, the locale's or the English AM and PM, stands on either
/// side. Two or three numbers with `.` are a time where the locale writes no dates so, if they fit.
///
/// 0 with the result in `*value`, or a failure that leaves it alone: DISP_E_TYPEMISMATCH (0x80020005) for any
/// other text and for null, otherwise as VarBstrFromDate. VAR_TIMEVALUEONLY and VAR_DATEVALUEONLY take that
/// part of what was read.
LIB_API HRESULT VarDateFromStr(LPCWSTR text, LCID locale, ULONG flags, DATE* value);

/// A text with its length before it, and the end of one; null is no text, and null again when memory is
/// short.
LIB_API BSTR SysAllocString(LPCWSTR text);
LIB_API void SysFreeString(BSTR text);

} // namespace qn_platform

#endif
