#ifndef QNLIB_SRC_PLATFORM_KERNEL_HANDLE_TABLE_H
#define QNLIB_SRC_PLATFORM_KERNEL_HANDLE_TABLE_H

#include "platform/kernel/object_layout.h"
#include "platform/kernel/ranked_lock.h"

// The handles of the process. A value is generation << 22 | slot << 2. A freed slot is used again only after
// all slots freed before it and while enough others wait too, so that half a million handles are closed
// before a value comes again.

namespace qn_platform::kernel
{

extern Ranked_Lock g_Table_Lock;

/// A new handle, which takes over the reference. Null, last error 8 or 4, when there is no room.
HANDLE Open_Handle(Object_Reference object, DWORD access, bool inherit);

/// Closes a handle of the table. False with the last error 6, also for one that is protected.
bool Close_Handle(HANDLE handle);

/// In a forked child: no handle is open any more, and values of the parent's stay invalid for long.
void Forget_Handles();

} // namespace qn_platform::kernel

#endif
