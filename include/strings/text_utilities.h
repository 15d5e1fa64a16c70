#ifndef QNLIB_STRINGS_TEXT_UTILITIES_H
#define QNLIB_STRINGS_TEXT_UTILITIES_H

#include "foundation/buffer.h"
#include "strings/lib_string.h"

// Values to text and back. What goes in must not lie in what comes out. None of these keeps state;
// std::bad_alloc can leave each that makes or converts a string.

/// Joins two path parts by one backslash and looks at neither; a null part prints as "(null)".
LIB_API Lib_String Lib_Combine_Path(const wchar_t* pLeft, const wchar_t* pRight);

/// Decimal text; six decimals for the double, with the point of the runtime's locale.
LIB_API Lib_String Lib_Int_To_String(int nValue);
LIB_API Lib_String Lib_Double_To_String(double dValue);

/// Reads white space, a sign and digits up to the first unit that is none; no digits give 0, values out of
/// range the nearest limit. Base 10, or 2 to 36, or 0 to choose by the prefix (0x, 0); base 16 takes a 0x
/// prefix. Null and other bases give 0.
LIB_API int Lib_String_To_Int(const wchar_t* pText);
LIB_API int Lib_String_To_Int(const wchar_t* pText, int nBase);

/// Reads white space, a sign, digits with the decimal point of the runtime's locale and an exponent, up to
/// the first unit that doesn't fit. No digits give 0.0; so do null and a text of 0x3FFFFFFF units or more.
/// A long text throws std::bad_alloc when memory is exhausted.
LIB_API double Lib_String_To_Double(const wchar_t* pText);

/// The next name of a numbered series: the number at the end goes up by one and loses its leading zeros
/// ("a09" gives "a10"); without one a 0 is appended. The first unit is never part of the number. Numbers
/// beyond 32 bits clamp and wrap.
LIB_API Lib_String Lib_Increment_String(const wchar_t* pText);

/// Bytes as hex text, two lower-case digits each, with a separator between them unless it is 0. Null data
/// or a size of 0 give an empty text. A text that can't be allocated throws std::bad_alloc.
LIB_API void Lib_Write_Buffer(unsigned long long nSize, void* pData, Lib_String& strOutput,
                              wchar_t chSeparator);

/// Hex text to bytes, with the same separator. A group of at most two units makes a byte by the rule of
/// Lib_String_To_Int at base 16, so `zz` gives 00 and `1z` 01; nothing is reported. Null and empty texts
/// leave the output as it is, and so does exhausted memory. With a separator a byte ends at a separator, or
/// the end, that is at least two units past the separator before; units beyond a byte's first two don't
/// count, and a token of one digit goes on in the next.
LIB_API void Lib_Read_Buffer(const wchar_t* pText, Lib_Buffer& output, wchar_t chSeparator);

/// UTF-8 to 16-bit text, `nSize` bytes without a terminator. Of sizes in this and the next function the low
/// 32 bits count; 0xFFFFFFFF means up to and with the NUL, other values from 2^31 on fail. Bad sequences
/// become U+FFFD; a NUL in the data ends the text. False when the conversion fails, with an empty output.
LIB_API bool Lib_UTF8_Buffer_To_WString(unsigned char* pData, unsigned long nSize, Lib_String& strOutput);

/// 16-bit text of `nSize` units to UTF-8 without a terminator; an unpaired surrogate becomes U+FFFD. False
/// when the conversion fails or memory is exhausted, with an empty output.
LIB_API bool Lib_WString_To_UTF8_Buffer(const wchar_t* pText, unsigned long nSize, Lib_Buffer& output);

/// 8-bit text from a buffer that may hold 8-bit or 16-bit text: a copy, or, when IsTextUnicode takes it for
/// 16-bit text, that text up to its first NUL in the ANSI code page, one byte for each unit. No terminator.
/// Text without a NUL or a control character of either byte order is taken for 8 bits, such as Chinese alone.
/// An empty buffer when the result cannot be allocated or the text is too long; std::bad_alloc when 16-bit
/// text cannot be taken in.
LIB_API Lib_Buffer convertWcharToChar(const Lib_Buffer& buffer);

#endif
