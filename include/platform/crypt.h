#ifndef QNLIB_PLATFORM_CRYPT_H
#define QNLIB_PLATFORM_CRYPT_H

#include "lib_api.h"
#include "platform/types.h"

// Protected memory, and bytes as printable text. Any thread may call any of these. Included through
// lib_platform.h only.

namespace qn_platform
{

inline constexpr DWORD CRYPTPROTECTMEMORY_BLOCK_SIZE = 16;
inline constexpr DWORD CRYPTPROTECTMEMORY_SAME_PROCESS = 0;
inline constexpr DWORD CRYPTPROTECTMEMORY_CROSS_PROCESS = 1;
inline constexpr DWORD CRYPTPROTECTMEMORY_SAME_LOGON = 2;

/// Enciphers and deciphers `size` bytes in place, with a key of this process that its forked children share.
/// The same bytes always give the same image. FALSE, with the data as they were: 87 for null data or a size
/// that is no multiple of 16 (0 is one, and does nothing) or flags that there are not, 50 for the flags of
/// other processes and logons, 126 when the provider crypt32 is missing, 193 when that file is no module, 127
/// when it lacks the entry, 8 when there is no memory, 31 when the kernel gives no key or the cipher cannot
/// be had or fails (then alone the data may be half done). Nothing tells whether data to be deciphered were
/// ever enciphered. docs/protected-memory.md tells what this guards against.
LIB_API BOOL CryptProtectMemory(LPVOID data, DWORD size, DWORD flags);
LIB_API BOOL CryptUnprotectMemory(LPVOID data, DWORD size, DWORD flags);

// The forms of text: one of the first group, the flags of the second beside it.
inline constexpr DWORD CRYPT_STRING_BASE64HEADER = 0x0; ///< between the lines of a certificate
inline constexpr DWORD CRYPT_STRING_BASE64 = 0x1;
inline constexpr DWORD CRYPT_STRING_BINARY = 0x2;              ///< the bytes themselves, without a NUL
inline constexpr DWORD CRYPT_STRING_BASE64REQUESTHEADER = 0x3; ///< of a request for a certificate
inline constexpr DWORD CRYPT_STRING_HEX = 0x4;                 ///< pairs of digits, 16 a line
inline constexpr DWORD CRYPT_STRING_HEXASCII = 0x5;            ///< the same, and the characters behind them
inline constexpr DWORD CRYPT_STRING_BASE64_ANY = 0x6;          ///< to read only: with header or without
inline constexpr DWORD CRYPT_STRING_ANY = 0x7;                 ///< to read only: the same, else binary
inline constexpr DWORD CRYPT_STRING_HEX_ANY = 0x8;             ///< to read only: what fits of the hex forms
inline constexpr DWORD CRYPT_STRING_BASE64X509CRLHEADER = 0x9; ///< of a revocation list
inline constexpr DWORD CRYPT_STRING_HEXADDR = 0xA;             ///< as HEX, with the address before each line
inline constexpr DWORD CRYPT_STRING_HEXASCIIADDR = 0xB;
inline constexpr DWORD CRYPT_STRING_HEXRAW = 0xC; ///< nothing but digits

// STRICT changes nothing in writing, NOCRLF and NOCR nothing in reading.
inline constexpr DWORD CRYPT_STRING_STRICT = 0x20000000; ///< to read: without the freedoms that reading gives
inline constexpr DWORD CRYPT_STRING_NOCRLF = 0x40000000; ///< to write: all in one line, no line ends
inline constexpr DWORD CRYPT_STRING_NOCR = 0x80000000;   ///< to write: line ends are LF instead of CR LF

/// Writes bytes as text. With null `text` only counts: `*count` is the room needed, NUL included. Otherwise
/// `*count` tells the room, and then the length without the NUL. Base64 has lines of 64 characters. FALSE,
/// with nothing written: 87 for null bytes or count, a form or flag that there is not (the forms to read
/// only, too), or a text of 4 GiB and more; 234 when there is too little room, with `*count` set to what is
/// needed.
LIB_API BOOL CryptBinaryToStringA(const BYTE* bytes, DWORD size, DWORD flags, LPSTR text, DWORD* count);

/// Reads bytes from text of `length` characters, 0 for a text that a NUL ends. With null `bytes` only counts:
/// `*count` is the room needed; otherwise it tells the room, and then the number of bytes. `skipped` (may be
/// null) receives what stands before the header, `form` (may be null) the form that was found.
///
/// Base64 may have white space anywhere, may lack its padding, and ends where the padding ends; header lines
/// may have any label and anything around them. Strictly, it has line ends only, the padding, zeros in the
/// bits left over, nothing behind it, and one label in both header lines with white space around them at
/// most.
///
/// FALSE, with nothing written: 13 for malformed text, 87 for null text or count and for a form or flag that
/// there is not, 234 when there is too little room, with `*count` set to what is needed.
LIB_API BOOL CryptStringToBinaryA(LPCSTR text, DWORD length, DWORD flags, BYTE* bytes, DWORD* count,
                                  DWORD* skipped, DWORD* form);

} // namespace qn_platform

#endif
