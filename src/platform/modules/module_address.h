#ifndef QNLIB_SRC_PLATFORM_MODULES_MODULE_ADDRESS_H
#define QNLIB_SRC_PLATFORM_MODULES_MODULE_ADDRESS_H

#include "platform/types.h"

// Modules by the address at which they are loaded, which is what a module handle is.

namespace qn_platform
{

/// The name under which the loader knows the module whose base address the handle is, valid while the
/// module is loaded; null for every other value, null included.
const char* Loader_Name(HMODULE module);

/// The base address of the module that contains an address; null if none does.
HMODULE Module_Of(const void* address);

} // namespace qn_platform

#endif
