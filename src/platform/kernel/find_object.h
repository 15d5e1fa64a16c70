#ifndef QNLIB_SRC_PLATFORM_KERNEL_FIND_OBJECT_H
#define QNLIB_SRC_PLATFORM_KERNEL_FIND_OBJECT_H

#include "platform/kernel/object_layout.h"

#include <cstdint>

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

/// The pseudo handles.
inline constexpr std::uintptr_t THIS_PROCESS = ~std::uintptr_t{0};
inline constexpr std::uintptr_t THIS_THREAD = ~std::uintptr_t{1};

inline bool Is_Pseudo(HANDLE handle) { return reinterpret_cast<std::uintptr_t>(handle) >= THIS_THREAD; }

/// In a forked child: it is another process.
void Forget_Process();

} // namespace qn_platform::kernel

#endif
