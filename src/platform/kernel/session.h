#ifndef QNLIB_SRC_PLATFORM_KERNEL_SESSION_H
#define QNLIB_SRC_PLATFORM_KERNEL_SESSION_H

#include "platform/types.h"

namespace qn_platform::kernel
{

/// The session of this process by the kernel's audit, as it was when it was first read. A process without one
/// counts as a service's, session 0. The answer is 0, or why it can't be read just now: 4 or 8.
DWORD Get_Own_Session(DWORD& session);

/// The session of any process, in the same way, as it is now. 5 when there is no such process, or it may not
/// be looked at.
DWORD Read_Session(int process, DWORD& session);

} // namespace qn_platform::kernel

#endif
