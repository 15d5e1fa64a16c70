#include "platform/kernel/futex.h"

#include <cerrno>

#include <linux/futex.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace qn_platform::kernel
{

// The program's errno stays what it was: operations that only wait or signal don't touch it.

bool Futex_Wait(const std::atomic<std::uint32_t>& word, std::uint32_t expected, const timespec* time)
{
    const int nSaved = errno;
    const long nResult =
        syscall(SYS_futex, &word, FUTEX_WAIT_BITSET_PRIVATE, expected, time, nullptr, FUTEX_BITSET_MATCH_ANY);
    const bool bTime_Passed = nResult == -1 && errno == ETIMEDOUT;
    errno = nSaved;
    return !bTime_Passed;
}

void Futex_Wake_One(const std::atomic<std::uint32_t>& word)
{
    const int nSaved = errno;
    syscall(SYS_futex, &word, FUTEX_WAKE_PRIVATE, 1, nullptr, nullptr, 0);
    errno = nSaved;
}

} // namespace qn_platform::kernel
