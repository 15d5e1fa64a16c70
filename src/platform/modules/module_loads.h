#ifndef QNLIB_SRC_PLATFORM_MODULES_MODULE_LOADS_H
#define QNLIB_SRC_PLATFORM_MODULES_MODULE_LOADS_H

#include "platform/types.h"

// Which modules were loaded by LoadLibraryW, and how often. Every load holds one reference of the loader's.
// Any thread may call these; the loader is never asked while their lock is held, since it runs constructors
// of modules, which may load modules themselves, under a lock of its own.

namespace qn_platform
{

/// The last error as the layer lends it to a provider, which is not linked with the layer.
struct Provider_Last_Error
{
    DWORD (*get)();
    void (*set)(DWORD code);
};

/// Counts a load. `handle` is the loader's. At the first one `lent` is filled in if it is not null. False
/// when memory is short.
bool Count_Module_Load(HMODULE module, void* handle, Provider_Last_Error* lent);

/// Takes one load back, and gives the loader's handle, of which the caller then closes one reference; null if
/// no load of this module is counted.
void* Count_Module_Release(HMODULE module);

} // namespace qn_platform

#endif
