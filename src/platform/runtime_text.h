#ifndef QNLIB_SRC_PLATFORM_RUNTIME_TEXT_H
#define QNLIB_SRC_PLATFORM_RUNTIME_TEXT_H

#include <cstddef>

// What the library needs of the language runtime for text of both widths, under names of its own, because
// the runtime's names mean 32-bit text on Linux. src/platform/text implements it for Linux,
// src/platform/windows by the runtime of Windows. All of it follows the runtime's locale, which starts as
// the "C" locale: there case folds A to Z only, and collation is the order of the units as unsigned values.
//
// Texts are not null and end with a NUL unless a length is given. Any thread may call any of these.

namespace qn_runtime
{

/// Case-insensitive order. In the "C" locale the difference of the first two differing units after A to Z
/// were folded to a to z, as unsigned values.
int Compare_No_Case(const char* left, const char* right);
int Compare_No_Case(const wchar_t* left, const wchar_t* right);

/// Order by the locale's alphabet. In the "C" locale -1, 0 or 1 by the units.
int Collate(const char* left, const char* right);
int Collate(const wchar_t* left, const wchar_t* right);

/// Order by the locale's alphabet without regard to case; in the "C" locale the same as Compare_No_Case.
int Collate_No_Case(const char* left, const char* right);
int Collate_No_Case(const wchar_t* left, const wchar_t* right);

/// Change the case of `length` characters in place, one for one. text[length] is a NUL, and no NUL stands
/// before it.
void Make_Lower(char* text, std::size_t length);
void Make_Lower(wchar_t* text, std::size_t length);
void Make_Upper(char* text, std::size_t length);
void Make_Upper(wchar_t* text, std::size_t length);

/// The strtol rule at 32 bits: white space, a sign, digits of the base (0, or 2 to 36) with its prefix; out
/// of range gives the nearest limit, no digits 0.
int Parse_Int(const wchar_t* text, int base);

/// White space, a sign, digits with the locale's decimal point and an optional exponent; no digits give 0.
double Parse_Double(const char* text);

/// Whether the bounded formatters may take an argument where the conversion is none of c C s S d i u x X o p
/// e E f g G n, or is one of the first four behind `I64` (`int64`): it may be one of their own, or another
/// modifier in front of a conversion.
bool May_Take_Argument(wchar_t conversion, bool int64);

/// Writes `length` units to standard output: UTF-8 on Linux, as the runtime's wide output does on Windows.
void Write_Standard_Output(const wchar_t* text, std::size_t length);

} // namespace qn_runtime

#endif
