#ifndef QNLIB_FOUNDATION_ALLOC_H
#define QNLIB_FOUNDATION_ALLOC_H

#include "lib_api.h"

// The library's raw memory: what crosses the module's boundary as a plain block is made and released here,
// so that both always meet the same allocator. Any thread may call any of these.

/// A block of nSize bytes, aligned for every ordinary type; all bytes are 0 if bZero, undefined otherwise.
/// NULL for a size of 0, and NULL when memory is exhausted: nothing is thrown. The caller owns the block and
/// gives it back to Lib_Free, nowhere else.
LIB_API void* Lib_Alloc(bool bZero, unsigned long long nSize);

/// Releases a block of Lib_Alloc. NULL is accepted.
LIB_API void Lib_Free(void* pBlock);

/// Whether the system is a 64-bit one: always true, since the module exists in no other form.
LIB_API bool Lib_Is_x64_OS();

#endif
