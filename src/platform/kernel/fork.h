#ifndef QNLIB_SRC_PLATFORM_KERNEL_FORK_H
#define QNLIB_SRC_PLATFORM_KERNEL_FORK_H

namespace qn_platform::kernel
{

/// Sees to it that a forked child starts without its parent's handles, objects and threads. To be called
/// before there are any. False when memory is short.
bool Watch_Forks();

} // namespace qn_platform::kernel

#endif
