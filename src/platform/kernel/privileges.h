#ifndef QNLIB_SRC_PLATFORM_KERNEL_PRIVILEGES_H
#define QNLIB_SRC_PLATFORM_KERNEL_PRIVILEGES_H

#include "platform/types.h"

#include <cstdint>

// The privileges that the platform knows, and which capabilities of Linux stand for them.

namespace qn_platform::kernel
{

inline constexpr DWORD FIRST_PRIVILEGE = 2;
inline constexpr DWORD LAST_PRIVILEGE = 36;

/// One bit for each privilege, at its number.
using Privilege_Set = std::uint64_t;

constexpr Privilege_Set Privilege_Bit(DWORD privilege) { return Privilege_Set{1} << privilege; }

/// The number of a privilege by its name, without regard to the case of ASCII letters; 0 if there is none.
DWORD Find_Privilege(LPCWSTR name);

/// Those that every token has enabled at first.
Privilege_Set Get_Default_Privileges();

/// Those that this process holds, by its permitted capabilities. A kernel that doesn't tell them allows none.
Privilege_Set Read_Held_Privileges();

} // namespace qn_platform::kernel

#endif
