#ifndef QNLIB_PLATFORM_MODULES_H
#define QNLIB_PLATFORM_MODULES_H

#include "lib_api.h"
#include "platform/types.h"

// The process's modules and the last error. A module handle is the address at which the module is loaded,
// as on Windows. Included through lib_platform.h only.

namespace qn_platform
{

/// The calling thread's last error: what the last failed operation of the layer left there.
LIB_API DWORD GetLastError();
LIB_API void SetLastError(DWORD code);

/// The handle of the process's executable for a null name. Other names are refused with 120.
LIB_API HMODULE GetModuleHandleW(LPCWSTR name);

/// Writes the full path of a module's file with backslashes between its components; null means the
/// process's executable. `size` counts units. The answer is the length without the NUL; `size` when the path
/// was cut (it is ended all the same, last error 122); 0 on failure (126 for a handle that is no module).
LIB_API DWORD GetModuleFileNameW(HMODULE module, LPWSTR path, DWORD size);

/// Turns off the notifications of threads for a module. The Linux loader makes none, so a valid handle
/// succeeds and nothing needs doing; null fails with 126.
LIB_API BOOL DisableThreadLibraryCalls(HMODULE module);

/// Copies string `id` of the module's string table, cut to `size` - 1 units and ended; the answer is the
/// number of units copied, 0 when there is no such string (last error 1814).
LIB_API int LoadStringW(HINSTANCE module, UINT id, LPWSTR buffer, int size);

inline constexpr DWORD DLL_PROCESS_ATTACH = 1;

} // namespace qn_platform

#endif
