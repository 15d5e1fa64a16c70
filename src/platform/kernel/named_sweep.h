#ifndef QNLIB_SRC_PLATFORM_KERNEL_NAMED_SWEEP_H
#define QNLIB_SRC_PLATFORM_KERNEL_NAMED_SWEEP_H

namespace qn_platform::kernel
{

/// Removes files of objects whose last user was killed, as far as they are this user's. Looks at some hundred
/// files at most. To be called now and then; a leftover troubles nobody, but takes a page of memory.
void Sweep_Leftovers();

} // namespace qn_platform::kernel

#endif
