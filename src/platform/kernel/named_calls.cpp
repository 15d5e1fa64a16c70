#include "platform/kernel/named_calls.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace qn_platform::kernel
{

namespace
{

int open_File(const char* path, int flags, mode_t mode) { return ::open(path, flags, mode); }

int lock_File(int file, int operation, struct flock* lock) { return ::fcntl(file, operation, lock); }

long call_Futex(std::uint32_t* word, int operation, std::uint32_t value, const timespec* time,
                std::uint32_t* word2, std::uint32_t value3)
{
    return ::syscall(SYS_futex, word, operation, value, time, word2, value3);
}

long call_Futex_Waitv(struct futex_waitv* words, unsigned int count, const timespec* time)
{
    constexpr long CALL_NUMBER = 449; // the same on all architectures; older headers lack its name
    return ::syscall(CALL_NUMBER, words, count, 0U, time, CLOCK_MONOTONIC);
}

int call_Barrier(int command) { return static_cast<int>(::syscall(SYS_membarrier, command, 0U, 0)); }

} // namespace

constinit Named_Calls named_calls{
    open_File, ::close, ::fstat,  ::fchmod,  ::fallocate, ::ftruncate,      lock_File,    ::linkat,
    ::unlink,  ::mmap,  ::munmap, ::madvise, call_Futex,  call_Futex_Waitv, call_Barrier, true};

} // namespace qn_platform::kernel
