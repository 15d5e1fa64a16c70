#ifndef QNLIB_SRC_PLATFORM_KERNEL_NAMED_CALLS_H
#define QNLIB_SRC_PLATFORM_KERNEL_NAMED_CALLS_H

#include <cstddef>
#include <cstdint>
#include <ctime>

#include <linux/futex.h>
#include <sys/stat.h>
#include <sys/types.h>

struct flock;

// The calls to the host system that named objects stand on. They are made through this record, so that a test
// can put one that fails in the place of any of them, or force the ways of a poorer system (while no other
// thread is in the layer).

namespace qn_platform::kernel
{

struct Named_Calls
{
    int (*open_file)(const char* path, int flags, mode_t mode);
    int (*close_file)(int file);
    int (*stat_file)(int file, struct stat* status);
    int (*change_mode)(int file, mode_t mode);
    int (*allocate)(int file, int mode, off_t offset, off_t size);
    int (*truncate_file)(int file, off_t size);
    int (*lock_file)(int file, int operation, struct flock* lock);
    int (*link_file)(int old_folder, const char* old_path, int folder, const char* path, int flags);
    int (*unlink_file)(const char* path);
    void* (*map)(void* address, std::size_t size, int protection, int flags, int file, off_t offset);
    int (*unmap)(void* address, std::size_t size);
    int (*advise)(void* address, std::size_t size, int advice);
    long (*futex)(std::uint32_t* word, int operation, std::uint32_t value, const timespec* time,
                  std::uint32_t* word2, std::uint32_t value3);
    long (*futex_waitv)(futex_waitv* words, unsigned int count, const timespec* time);

    int (*barrier)(int command);

    bool use_gate; // false: waiters neither sleep at the gate nor leave word there
};

extern Named_Calls named_calls;

} // namespace qn_platform::kernel

#endif
