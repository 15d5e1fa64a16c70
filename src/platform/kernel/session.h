#ifndef QNLIB_SRC_PLATFORM_KERNEL_SESSION_H
#define QNLIB_SRC_PLATFORM_KERNEL_SESSION_H

#include "platform/types.h"

#include <atomic>
#include <cstdint>

namespace qn_platform::kernel
{

/// The session of this process by the kernel's audit, as it was when it was first read, here or in the
/// process that this one was forked from. A process without one, and any on a kernel that keeps none, counts
/// as a service's, session 0. The answer is 0, or why it can't be read just now: 4, 5 or 8.
DWORD Get_Own_Session(DWORD& session);

/// Where that is kept. No lock guards it: a fork at any moment leaves the child one that is known or not, and
/// all readers read the same.
class Session_Once
{
public:
    DWORD Get(DWORD& session);

private:
    std::atomic<std::uint64_t> m_nSession{0}; // with a bit above it when it is known
};

/// The session of any process, in the same way, as it is now. 5 when there is no such process, or it may not
/// be looked at.
DWORD Read_Session(int process, DWORD& session);

} // namespace qn_platform::kernel

#endif
