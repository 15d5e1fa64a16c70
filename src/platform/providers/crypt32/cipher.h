#ifndef QNLIB_SRC_PLATFORM_PROVIDERS_CRYPT32_CIPHER_H
#define QNLIB_SRC_PLATFORM_PROVIDERS_CRYPT32_CIPHER_H

#include "platform/types.h"

// The cipher of protected memory: AES-256 in the mode XTS, by OpenSSL. docs/protected-memory.md tells why.

namespace qn_crypt32
{

enum class Direction
{
    decipher,
    encipher
};

/// Turns `size` bytes, a multiple of 16, in place. The answer is an error code of the platform, 0 for
/// success. Any thread may call it.
qn_platform::DWORD Turn(Direction direction, const unsigned char* key, unsigned char* data,
                        qn_platform::DWORD size);

} // namespace qn_crypt32

#endif
