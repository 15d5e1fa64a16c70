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
/// was cut (it is ended all the same, last error 122); 0 on failure: 126 for a handle that is no module, 87
/// for a null buffer, 8 when memory is short. A byte of the name that is not UTF-8 becomes U+FFFD.
LIB_API DWORD GetModuleFileNameW(HMODULE module, LPWSTR path, DWORD size);

/// Turns off the notifications of threads for a module. The Linux loader makes none, so a valid handle
/// succeeds and nothing needs doing; null fails with 126.
LIB_API BOOL DisableThreadLibraryCalls(HMODULE module);

/// One string of a module's string table.
struct Lib_String_Table_Entry
{
    UINT id;
    LPCWSTR text;
};

/// Gives the module in whose sources it stands, once and outside of every namespace, its string table:
///     QN_STRING_TABLE({1, L"Ready"}, {2, L"Done"});
/// An executable must be linked with its symbols exported (-rdynamic) for its table to be found.
#define QN_STRING_TABLE(...)                                                                                 \
    extern "C"                                                                                               \
    {                                                                                                        \
        __attribute__((                                                                                      \
            visibility("default"))) extern const ::qn_platform::Lib_String_Table_Entry qn_string_table[];    \
        const ::qn_platform::Lib_String_Table_Entry qn_string_table[] = {__VA_ARGS__, {0, nullptr}};         \
    }                                                                                                        \
    static_assert(true)

/// Copies string `id` of the module's string table, cut to `size` - 1 units and ended; null means the
/// process's executable. The answer is the number of units copied. With a size of 0, `buffer` receives a
/// pointer to the string itself, valid while the module is loaded, and the answer is its length. 0 is a
/// failure, which leaves the buffer alone: last error 1814 when there is no such string or it is empty, 1812
/// when the module has no table or the handle is no module, 87 for a null buffer or a negative size. (A
/// `size` of 1 copies nothing but the NUL, and answers 0 too.)
LIB_API int LoadStringW(HINSTANCE module, UINT id, LPWSTR buffer, int size);

inline constexpr DWORD DLL_PROCESS_ATTACH = 1;

} // namespace qn_platform

#endif
