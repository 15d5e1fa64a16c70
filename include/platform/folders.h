#ifndef QNLIB_PLATFORM_FOLDERS_H
#define QNLIB_PLATFORM_FOLDERS_H

#include "lib_api.h"
#include "platform/guid.h"
#include "platform/types.h"

// Folders of the user, and the two forms of a path. Included through lib_platform.h only.
//
// | folder                   | is                | by default     | for                          |
// |--------------------------|-------------------|----------------|------------------------------|
// | CSIDL_APPDATA            | `$XDG_DATA_HOME`  | ~/.local/share | data that move with the user |
// | FOLDERID_LocalAppDataLow | `$XDG_STATE_HOME` | ~/.local/state | data of this machine alone   |
//
// These are the places of the desktop's base-directory convention (XDG base directories, version 0.8).
// They are asked for anew at each call; a variable that holds no absolute path counts as none, and a program
// that runs with more rights than its caller has asks the user database alone. Nobody looks whether they
// exist.
//
// Paths are told in the platform's form, with backslashes. Lib_Get_Native_Path gives the form that Linux's
// own calls take. A folder of Linux with a backslash in its name has no platform's form. Any thread may call
// these at any time.

namespace qn_platform
{

using HWND = struct HWND__*;
using KNOWNFOLDERID = GUID;
using REFKNOWNFOLDERID = const KNOWNFOLDERID&;

inline constexpr int CSIDL_APPDATA = 26;
inline constexpr DWORD SHGFP_TYPE_CURRENT = 0;
inline constexpr DWORD MAX_PATH = 260;
inline constexpr KNOWNFOLDERID FOLDERID_LocalAppDataLow = {
    0xA520A1A4, 0x1780, 0x4FF6, {0xBD, 0x18, 0x16, 0x73, 0x43, 0xC5, 0xAF, 0x16}};

/// Writes the path of a folder into a buffer of MAX_PATH units. `owner` is not used. Answers S_OK, or, with
/// the buffer an empty text: E_INVALIDARG for a null `path` and another folder than CSIDL_APPDATA, and as
/// HRESULT 50 for a token or other flags than SHGFP_TYPE_CURRENT, 3 if the user has no home, 206 for a path
/// of more than 259 units, 123 and 1113 for one that has no platform's form, 8 when memory is short.
LIB_API HRESULT SHGetFolderPathW(HWND owner, int folder, HANDLE token, DWORD flags, LPWSTR path);

/// The same for a path of any length, in a block that the caller gives back with CoTaskMemFree; null on
/// failure. `flags` is 0. As HRESULT 2 for another folder than FOLDERID_LocalAppDataLow.
LIB_API HRESULT SHGetKnownFolderPath(REFKNOWNFOLDERID folder, DWORD flags, HANDLE token, LPWSTR* path);

/// Gives a block back that the platform has made. Null is accepted.
LIB_API void CoTaskMemFree(LPVOID block);

/// Makes a folder and those above it that are missing, each for the user alone (0700, less the process's
/// mask). `owner` is not used. Answers 0 or the reason, which is the last error then too: 183 if there is
/// such a folder, 267 if there is something else of that name, 161 for a path that does not begin with one
/// backslash, 3 for an empty one and if what is above is no folder, 123 for text that is none, and 5, 8, 19,
/// 112, 206 as the system says. What was made above stays.
LIB_API int SHCreateDirectory(HWND owner, LPCWSTR path);

/// The native form of a path, in UTF-8, with slashes for backslashes, for Linux's own calls. Answers the
/// bytes written, the NUL included, or those needed if `size` is 0. 0 with the last error 87 for a null path,
/// a negative size and a null `native` with a size, 122 if it has too little room (nothing is written), 1113
/// for half a surrogate pair, 8 when memory is short.
LIB_API int Lib_Get_Native_Path(LPCWSTR path, char* native, int size);

} // namespace qn_platform

#endif
