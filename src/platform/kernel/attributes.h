#ifndef QNLIB_SRC_PLATFORM_KERNEL_ATTRIBUTES_H
#define QNLIB_SRC_PLATFORM_KERNEL_ATTRIBUTES_H

#include "platform/kernel.h"

namespace qn_platform::kernel
{

/// What SECURITY_ATTRIBUTES (null is allowed) ask for. `open_to_all`: their descriptor has a DACL that is
/// present and null. The answer is 0; 50 for a descriptor that cannot be expressed, 1305 for one of an
/// unknown revision.
DWORD Read_Attributes(const SECURITY_ATTRIBUTES* attributes, bool& open_to_all, bool& inherit);

} // namespace qn_platform::kernel

#endif
