#ifndef QNLIB_SRC_PLATFORM_CRYPT_CIPHER_CALLS_H
#define QNLIB_SRC_PLATFORM_CRYPT_CIPHER_CALLS_H

#include "platform/types.h"

// The two operations of the provider crypt32. The layer calls them through this record, so that a test can
// put one that fails in the place of either (while no other thread is in the layer).

namespace qn_platform
{

struct Cipher_Calls
{
    BOOL (*protect)(LPVOID data, DWORD size, DWORD flags);
    BOOL (*unprotect)(LPVOID data, DWORD size, DWORD flags);
};

extern Cipher_Calls cipher_calls;

} // namespace qn_platform

#endif
