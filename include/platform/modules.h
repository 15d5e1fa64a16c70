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

/// The handle of a loaded module, which gets no further reference by it; null stands for the process's
/// executable. A plain name means the first module of that name, without regard to ASCII case, "lib" in front
/// or what comes from ".so" on; ".dll" at its end counts as nothing. A name with a folder means the module
/// of that path. Null on failure: 126 when there is none, 8 when memory is short.
LIB_API HMODULE GetModuleHandleW(LPCWSTR name);

/// Loads a module, or takes one more reference to one that is loaded; each needs a FreeLibrary of its own.
/// How a name finds its file is told in docs/modules.md: "crypt32" and "CRYPT32.dll" are one name, which is
/// looked for in the folder qnLib beside this library, beside this library, beside the program, among the
/// loaded modules, and by the loader's own search, as "crypt32.so" and "libcrypt32.so". Backslashes count as
/// slashes. Null on failure: 126 when there is no such module or one that it needs is missing, 193 for a file
/// that is no module, 87 for a null name, 8 when memory is short.
LIB_API HMODULE LoadLibraryW(LPCWSTR name);

/// Gives one reference of LoadLibraryW back; the module goes with the last one. A module that came with the
/// program, or that another part of it loaded, stays: TRUE, and nothing happens. FALSE with 6 for null and
/// with 126 for a handle that is no module.
LIB_API BOOL FreeLibrary(HMODULE module);

/// The address of a function or variable that the module exports; null means the process's executable, which
/// exports what it was linked to export. Null on failure: 127 for a name that it does not export itself, for
/// a null name and for an ordinal (a name below 0x10000), which modules here do not have; 126 for a handle
/// that is no module.
LIB_API FARPROC GetProcAddress(HMODULE module, LPCSTR name);

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
