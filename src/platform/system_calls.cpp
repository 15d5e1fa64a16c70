#include "platform/system_calls.h"

#include <cstdlib>

#include <dlfcn.h>
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/random.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace qn_platform
{

namespace
{

int access_File(const char* path, int mode) { return ::faccessat(AT_FDCWD, path, mode, AT_EACCESS); }

int open_File(const char* path, int flags) { return ::open(path, flags); }

/// The C library has no name for it.
int get_Capabilities(void* header, void* data)
{
    return static_cast<int>(::syscall(SYS_capget, header, data));
}

} // namespace

constinit System_Calls system_calls{
    .read_link = ::readlink,
    .real_path = ::realpath,
    .access_file = access_File,
    .open_file = open_File,
    .open_module = ::dlopen,
    .find_symbol = ::dlsym,
    .close_module = ::dlclose,
    .map_memory = ::mmap,
    .protect_memory = ::mprotect,
    .allocate_aligned = std::aligned_alloc,
    .get_capabilities = get_Capabilities,
    .create_thread = ::pthread_create,
    .get_random = ::getrandom,
};

} // namespace qn_platform
