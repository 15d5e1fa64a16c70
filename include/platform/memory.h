#ifndef QNLIB_PLATFORM_MEMORY_H
#define QNLIB_PLATFORM_MEMORY_H

#include "lib_api.h"
#include "platform/types.h"

// Blocks that the platform and its callers hand to one another. Included through lib_platform.h only.

namespace qn_platform
{

inline constexpr UINT LMEM_FIXED = 0;
inline constexpr UINT LMEM_ZEROINIT = 0x40;
inline constexpr UINT LPTR = LMEM_FIXED | LMEM_ZEROINIT;

/// A block of `size` bytes, filled with 0 if `flags` is LPTR; its content is undefined if `flags` is
/// LMEM_FIXED. A size of 0 gives a block too. Null on failure: 8 when memory is short, 87 for other flags:
/// blocks that move are not offered. Ends with LocalFree.
LIB_API HLOCAL LocalAlloc(UINT flags, SIZE_T size);

/// Gives a block of LocalAlloc back, and answers null. Null is accepted.
LIB_API HLOCAL LocalFree(HLOCAL block);

} // namespace qn_platform

#endif
