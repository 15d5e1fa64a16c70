#ifndef QNLIB_SRC_PLATFORM_KERNEL_FIND_OBJECT_H
#define QNLIB_SRC_PLATFORM_KERNEL_FIND_OBJECT_H

#include "platform/kernel/object_layout.h"

namespace qn_platform::kernel
{

/// An object with the access mask of the handle by which it was found.
struct Found
{
    Object_Reference object;
    DWORD access = 0;
};

/// The object behind a handle of any kind, the pseudo handles included. Empty, last error 6 (8 when memory is
/// short), if there is none.
Found Find_Any(HANDLE handle);

bool Is_Pseudo(HANDLE handle);

/// In a forked child: it is another process.
void Forget_Process();

} // namespace qn_platform::kernel

#endif
