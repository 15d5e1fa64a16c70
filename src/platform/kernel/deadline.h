#ifndef QNLIB_SRC_PLATFORM_KERNEL_DEADLINE_H
#define QNLIB_SRC_PLATFORM_KERNEL_DEADLINE_H

#include "platform/types.h"

#include <ctime>

// The moment at which a wait gives up, on the monotonic clock, so that a wait that is woken for nothing goes
// on for what is left of its time.

namespace qn_platform::kernel
{

class Deadline
{
public:
    /// 0xFFFFFFFF is no deadline. The clock is first read when it is needed.
    explicit Deadline(DWORD milliseconds);

    bool Is_Now() const { return m_dwMilliseconds == 0; }

    /// The absolute time for the futex calls (CLOCK_MONOTONIC); null for an infinite wait.
    const timespec* Get_Time();

    bool Has_Passed();

private:
    DWORD m_dwMilliseconds;
    bool m_bFixed = false;
    timespec m_Time = {};
};

} // namespace qn_platform::kernel

#endif
