#ifndef QNLIB_SRC_PLATFORM_KERNEL_SESSION_H
#define QNLIB_SRC_PLATFORM_KERNEL_SESSION_H

#include "platform/types.h"

namespace qn_platform::kernel
{

/// The session of this process by the kernel's audit, as it was at the first call. A process without one
/// counts as a service's, session 0.
DWORD Get_Own_Session();

/// The session of any process, in the same way. False when there is no such process, or it may not be looked
/// at.
bool Read_Session(int process, DWORD& session);

} // namespace qn_platform::kernel

#endif
