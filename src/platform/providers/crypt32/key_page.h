#ifndef QNLIB_SRC_PLATFORM_PROVIDERS_CRYPT32_KEY_PAGE_H
#define QNLIB_SRC_PLATFORM_PROVIDERS_CRYPT32_KEY_PAGE_H

#include <sys/types.h>

#include <cstddef>

// The key of this process's protected memory.

namespace qn_crypt32
{

inline constexpr std::size_t KEY_SIZE = 64; ///< two keys of AES-256

/// The key, made at the first call from the kernel's generator; the process keeps it for good, and a forked
/// child has the same one. It lies alone on a page that can only be read, is left out of core dumps, and is
/// locked in memory as far as the process's limit allows. Null on failure, with the last error 8 or 31; the
/// next call tries again. Any thread may call it.
const unsigned char* Get_Key();

/// The calls to the system by which the key is made, so that a test can put one that fails in the place of
/// any of them before the key is there.
struct System_Calls
{
    void* (*map)(void* address, std::size_t size, int protection, int flags, int file, off_t offset);
    int (*unmap)(void* address, std::size_t size);
    int (*advise)(void* address, std::size_t size, int advice);
    int (*lock)(const void* address, std::size_t size);
    int (*protect)(void* address, std::size_t size, int protection);
    ssize_t (*get_random)(void* target, std::size_t size, unsigned int flags);
};

} // namespace qn_crypt32

extern "C" __attribute__((visibility("default"))) qn_crypt32::System_Calls qn_crypt32_system_calls;

#endif
