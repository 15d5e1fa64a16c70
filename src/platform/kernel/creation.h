#ifndef QNLIB_SRC_PLATFORM_KERNEL_CREATION_H
#define QNLIB_SRC_PLATFORM_KERNEL_CREATION_H

#include "platform/kernel.h"
#include "platform/kernel/named_object.h"

namespace qn_platform::kernel
{

/// A handle to a new event or mutex, or to the one of that name: what the creating operations do. The
/// request's name may be null or empty; whom a named object is open to is told by the attributes.
HANDLE Create_Object(Named_Request request, const SECURITY_ATTRIBUTES* attributes);

HANDLE Open_Object(Kind kind, DWORD access, BOOL inherit, LPCWSTR name);

} // namespace qn_platform::kernel

#endif
