#ifndef QNLIB_PROTECTED_BASE64_H
#define QNLIB_PROTECTED_BASE64_H

#include "foundation/buffer.h"

#include <string>

// Bytes as printable text and back, by the platform's CryptBinaryToStringA and CryptStringToBinaryA. nFlags
// is the platform's word for the form of the text: CRYPT_STRING_BASE64 and its kin, together with
// CRYPT_STRING_NOCRLF and the others of lib_platform.h. Text has 8 bits.
//
// False is a failure, of which GetLastError tells the reason. If the text or the bytes cannot be had, the
// form does not exist, the input has 4 GiB or more (87), or there is no memory for the output (8), the output
// is as it was; if the platform fails only after it has counted, the output has the counted size, with zeros
// or a part in it. Flags count with their low 32 bits. Null goes with a size of 0. An empty input is the
// platform's to judge; it refuses a buffer without a block. The output may be the input. Nothing is thrown.
// Threads need outputs of their own.

/// The output becomes the text and the NUL that the platform ends it with (none in CRYPT_STRING_BINARY): its
/// size is one more than the text's length.
LIB_API bool base64_encode(const Lib_Buffer& Input, Lib_Buffer& Output, unsigned long nFlags);
LIB_API bool base64_encode(const unsigned char* pData, unsigned long long nSize, Lib_Buffer& Output,
                           unsigned long nFlags);

/// The output becomes exactly the bytes. A NUL is no part of a text: the one that base64_encode puts at the
/// end must be left out (`text.Set_Size(text.Get_Size() - 1)`), or the platform refuses the text with 13
/// unless padding ended it before.
LIB_API bool base64_decode(const Lib_Buffer& Input, Lib_Buffer& Output, unsigned long nFlags);
LIB_API bool base64_decode(const std::string& strInput, Lib_Buffer& Output, unsigned long nFlags);

#endif
