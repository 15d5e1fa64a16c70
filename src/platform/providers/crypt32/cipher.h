#ifndef QNLIB_SRC_PLATFORM_PROVIDERS_CRYPT32_CIPHER_H
#define QNLIB_SRC_PLATFORM_PROVIDERS_CRYPT32_CIPHER_H

#include "platform/types.h"

// The cipher of protected memory: AES-256 in the mode XTS, by OpenSSL. docs/protected-memory.md tells why.

struct evp_cipher_st;
struct evp_cipher_ctx_st;
struct ossl_lib_ctx_st;

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

/// The calls to OpenSSL that may fail, so that a test can put one that does in the place of any of them.
struct Cipher_Calls
{
    evp_cipher_st* (*fetch)(ossl_lib_ctx_st* library, const char* name, const char* properties);
    evp_cipher_ctx_st* (*make_context)();
    int (*update)(evp_cipher_ctx_st* context, unsigned char* target, int* done, const unsigned char* data,
                  int size);
};

} // namespace qn_crypt32

extern "C" __attribute__((visibility("default"))) qn_crypt32::Cipher_Calls qn_crypt32_cipher_calls;

#endif
