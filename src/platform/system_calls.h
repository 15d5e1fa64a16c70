#ifndef QNLIB_SRC_PLATFORM_SYSTEM_CALLS_H
#define QNLIB_SRC_PLATFORM_SYSTEM_CALLS_H

#include <pthread.h>
#include <sys/types.h>

#include <cstddef>

// Calls to the host system that may fail in ways that a test wants to see. The layer makes them through this
// record, so that a test can put one that fails in the place of any of them (while no other thread is in the
// layer).

namespace qn_platform
{

struct System_Calls
{
    ssize_t (*read_link)(const char* path, char* target, std::size_t size);
    char* (*real_path)(const char* path, char* resolved);
    int (*access_file)(const char* path, int mode); // for the effective user, unlike access()
    int (*open_file)(const char* path, int flags);
    void* (*open_module)(const char* path, int mode);
    void* (*find_symbol)(void* module, const char* name);
    int (*close_module)(void* module);
    void* (*map_memory)(void* address, std::size_t size, int protection, int flags, int file, off_t offset);
    int (*protect_memory)(void* address, std::size_t size, int protection);
    void* (*allocate_aligned)(std::size_t alignment, std::size_t size);
    int (*get_capabilities)(void* header, void* data);
    int (*create_thread)(pthread_t* thread, const pthread_attr_t* attributes, void* (*start)(void*),
                         void* argument);
    ssize_t (*get_random)(void* bytes, std::size_t size, unsigned int flags);
};

extern System_Calls system_calls;

} // namespace qn_platform

#endif
