#ifndef QNLIB_SRC_PLATFORM_MODULES_MODULE_ADDRESS_H
#define QNLIB_SRC_PLATFORM_MODULES_MODULE_ADDRESS_H

#include "platform/types.h"

#include <string>

// Modules by the address at which they are loaded, which is what a module handle is.

namespace qn_platform
{

/// The name under which the loader knows the module whose base address the handle is, valid while the
/// module is loaded; null for every other value, null included.
const char* Loader_Name(HMODULE module);

/// The base address of the module that contains an address; null if none does.
HMODULE Module_Of(const void* address);

/// The base address of what the loader's handle stands for.
HMODULE Module_Of_Loader_Handle(void* handle);

/// The address of a symbol that the module itself exports (null stands for the process's executable); null
/// if it exports none of that name, or the handle is no module. The loader also looks in what the module was
/// linked with, but that does not count.
void* Own_Symbol(HMODULE module, const char* name);

/// The full path of the process's executable; empty if the system does not tell.
std::string Executable_Path();

/// The full path of a module's file, null meaning the process's executable; empty if the handle is no module.
std::string Module_Path(HMODULE module);

} // namespace qn_platform

#endif
