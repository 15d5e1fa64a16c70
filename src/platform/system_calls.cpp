#include "platform/system_calls.h"

#include <cstdlib>

#include <dlfcn.h>
#include <sys/mman.h>
#include <sys/random.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace qn_platform
{

namespace
{

/// The C library has no name for it.
int get_Capabilities(void* header, void* data)
{
    return static_cast<int>(::syscall(SYS_capget, header, data));
}

} // namespace

constinit System_Calls system_calls{
    ::readlink, ::realpath, ::access,           ::dlopen,         ::dlsym,          ::dlclose,
    ::mmap,     ::mprotect, std::aligned_alloc, get_Capabilities, ::pthread_create, ::getrandom};

} // namespace qn_platform
