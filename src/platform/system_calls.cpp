#include "platform/system_calls.h"

#include <cstdlib>

#include <dlfcn.h>
#include <sys/mman.h>
#include <sys/random.h>
#include <unistd.h>

namespace qn_platform
{

constinit System_Calls system_calls{::readlink, ::realpath, ::access,   ::dlopen,           ::dlsym,
                                    ::dlclose,  ::mmap,     ::mprotect, std::aligned_alloc, ::getrandom};

} // namespace qn_platform
