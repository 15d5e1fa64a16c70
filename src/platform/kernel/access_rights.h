#ifndef QNLIB_SRC_PLATFORM_KERNEL_ACCESS_RIGHTS_H
#define QNLIB_SRC_PLATFORM_KERNEL_ACCESS_RIGHTS_H

#include "platform/kernel/object.h"

namespace qn_platform::kernel
{

/// All rights that a kind of object knows.
DWORD Get_All_Access(Kind kind);

/// The rights that are asked for by `access`: generic rights become the kind's own, MAXIMUM_ALLOWED all of
/// them, and what the kind doesn't know falls away.
DWORD Map_Access(Kind kind, DWORD access);

} // namespace qn_platform::kernel

#endif
