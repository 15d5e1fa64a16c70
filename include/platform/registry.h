#ifndef QNLIB_PLATFORM_REGISTRY_H
#define QNLIB_PLATFORM_REGISTRY_H

#include "lib_api.h"
#include "platform/kernel.h"
#include "platform/time.h"
#include "platform/types.h"

// The registry: keys in a tree, each with named values of any bytes. Included through lib_platform.h only.
//
// Keys and values lie in two files, one of the user and one of the machine; docs/registry.md tells where, who
// may write them, and what survives what. Every change is one transaction: whole or not at all, seen by every
// process at once. Names match without regard to case and keep the case with which they were made; a
// component of a path has 255 units at most, the name of a value 16,383, a value 64 MiB. A path has no
// backslash in front; those at its end, and several in a row, count as none and as one. A null or empty
// name of a value is the key's default value, which is there only once it was set.
//
// Each operation returns 0 or the reason and leaves the last error alone, unless the provider is missing. Any
// thread may call any of these at any time, with any handle; handles stay good in a forked child.
//
// Common to all:
//
// | code | when |
// |------|------------------------------------------------------------------------------------------------|
// | 2    | there is no such key or value |
// | 3    | the user's store has no place: no data folder, no home; a dead link or a file on the way to a store |
// | 4    | the process has no file descriptor left, or a million keys open |
// | 5    | the handle was not opened for that; the store may not be opened, or not be written, by this user |
// | 6    | the handle is null, closed, or none of a key |
// | 8    | memory is short |
// | 19   | the store lies in a file system that is mounted for reading |
// | 87   | an argument that there is not; a name that is too long (2 for a value to be read or removed) |
// | 112  | the disk is full, or the user's share of it |
// | 126  | the provider advapi32, or SQLite, is missing |
// | 161  | a path that begins with a backslash |
// | 170  | another process holds the store for longer than a minute |
// | 206  | the way to the store is too long; a path with more than 512 keys that are to be made |
// | 1009 | the file is damaged, or no store at all; nothing is written to it |
// | 1016 | the system could not read or write the file |
// | 1017 | the file is a database of something else; nothing is written to it |
// | 1018 | the key was deleted while this handle was open, even if one of its name was made again |
// | 1306 | the file has the format of a newer version; nothing is written to it |

namespace qn_platform
{

using LSTATUS = LONG;
using REGSAM = DWORD;
using HKEY = struct HKEY__*;
using PHKEY = HKEY*;

// The predefined keys, which are always open and need no closing. Classes root shows the user's keys
// below Software\Classes before the machine's; users has the current user's SID as its one key; current
// config is the machine's key System\CurrentControlSet\Hardware Profiles\Current.
#define HKEY_CLASSES_ROOT (reinterpret_cast<::qn_platform::HKEY>(0xFFFFFFFF80000000ull))
#define HKEY_CURRENT_USER (reinterpret_cast<::qn_platform::HKEY>(0xFFFFFFFF80000001ull))
#define HKEY_LOCAL_MACHINE (reinterpret_cast<::qn_platform::HKEY>(0xFFFFFFFF80000002ull))
#define HKEY_USERS (reinterpret_cast<::qn_platform::HKEY>(0xFFFFFFFF80000003ull))
#define HKEY_CURRENT_CONFIG (reinterpret_cast<::qn_platform::HKEY>(0xFFFFFFFF80000005ull))

// What a handle is opened for. Generic rights and MAXIMUM_ALLOWED are known too.
inline constexpr REGSAM KEY_QUERY_VALUE = 0x0001;
inline constexpr REGSAM KEY_SET_VALUE = 0x0002;
inline constexpr REGSAM KEY_CREATE_SUB_KEY = 0x0004;
inline constexpr REGSAM KEY_ENUMERATE_SUB_KEYS = 0x0008;
inline constexpr REGSAM KEY_NOTIFY = 0x0010;
inline constexpr REGSAM KEY_CREATE_LINK = 0x0020;
inline constexpr REGSAM KEY_WOW64_64KEY = 0x0100; ///< there is one view only: these two change nothing
inline constexpr REGSAM KEY_WOW64_32KEY = 0x0200;
inline constexpr REGSAM KEY_READ = 0x20019;
inline constexpr REGSAM KEY_EXECUTE = 0x20019;
inline constexpr REGSAM KEY_WRITE = 0x20006;
inline constexpr REGSAM KEY_ALL_ACCESS = 0xF003F;

// Types of values. The store keeps any number and looks at none.
inline constexpr DWORD REG_NONE = 0;
inline constexpr DWORD REG_SZ = 1;
inline constexpr DWORD REG_EXPAND_SZ = 2;
inline constexpr DWORD REG_BINARY = 3;
inline constexpr DWORD REG_DWORD = 4;
inline constexpr DWORD REG_DWORD_LITTLE_ENDIAN = 4;
inline constexpr DWORD REG_DWORD_BIG_ENDIAN = 5;
inline constexpr DWORD REG_LINK = 6;
inline constexpr DWORD REG_MULTI_SZ = 7;
inline constexpr DWORD REG_QWORD = 11;
inline constexpr DWORD REG_QWORD_LITTLE_ENDIAN = 11;

inline constexpr DWORD REG_OPTION_NON_VOLATILE = 0;
inline constexpr DWORD REG_OPTION_VOLATILE = 1;
inline constexpr DWORD REG_OPTION_CREATE_LINK = 2;
inline constexpr DWORD REG_OPTION_BACKUP_RESTORE = 4;
inline constexpr DWORD REG_OPTION_OPEN_LINK = 8;
inline constexpr DWORD REG_CREATED_NEW_KEY = 1;
inline constexpr DWORD REG_OPENED_EXISTING_KEY = 2;

/// Opens a key below another one; a null or empty path is that key itself. On failure `*result` is null.
/// `options` is 0 or REG_OPTION_OPEN_LINK (there are no links). 5 when the access has a right to write and
/// this user may not write the store; 87 for a null `result` and for rights that there are not.
LIB_API LSTATUS RegOpenKeyExW(HKEY key, LPCWSTR path, DWORD options, REGSAM access, PHKEY result);

/// Opens a key, and makes it and those above it that are missing, in one change. Whether keys may be made
/// depends on the store, not on the rights of `key`. `class_name` (null, or up to 255 units) is kept with a
/// key that is made. `disposition` (may be null) tells whether it was. On failure `*result` is null.
///
/// 87 for a `reserved` that is not 0, a null `result` and unknown options or rights; 50 for a volatile key, a
/// link, an opening for backup, and for a security descriptor: the file's owner and mode say who may do what.
/// 161 for a path that is empty but for backslashes, 206 for one with more than 512 keys.
LIB_API LSTATUS RegCreateKeyExW(HKEY key, LPCWSTR path, DWORD reserved, LPWSTR class_name, DWORD options,
                                REGSAM access, LPSECURITY_ATTRIBUTES attributes, PHKEY result,
                                LPDWORD disposition);

/// Closes a handle. 6 for what is none; predefined keys are accepted and stay open.
LIB_API LSTATUS RegCloseKey(HKEY key);

/// Reads a value. Needs KEY_QUERY_VALUE. `type` may be null; so may `data`, to ask for the size alone, and
/// `size` with it. `*size` tells the room in bytes, and then the size of the value, also with 234, when the
/// room is too little and `data` is left alone. On other failures nothing is written. 87 for `data` without
/// `size` and for a `reserved` that is not null.
LIB_API LSTATUS RegQueryValueExW(HKEY key, LPCWSTR name, LPDWORD reserved, LPDWORD type, LPBYTE data,
                                 LPDWORD size);

/// Reads the value at a place in the order of the bytes of the names in capitals; 259 beyond the last one.
/// Needs KEY_QUERY_VALUE. `*name_length` tells the room in units, the NUL included, and then the length
/// without it. With 234 either the name has no room (only `type` and `size` are written then), or the data:
/// then `*size` tells what is needed. `type`, `data` and `size` as in RegQueryValueExW; 87 for a null `name`
/// or `name_length`.
LIB_API LSTATUS RegEnumValueW(HKEY key, DWORD index, LPWSTR name, LPDWORD name_length, LPDWORD reserved,
                              LPDWORD type, LPBYTE data, LPDWORD size);

/// Sets a value, or makes it; an existing one keeps the case of its name. Needs KEY_SET_VALUE. `data` may be
/// null with a size of 0. The bytes are kept as they are given: no terminator is added to text. 1450 for more
/// than 64 MiB; 87 for a `reserved` that is not 0; 998 for null data with a size.
LIB_API LSTATUS RegSetValueExW(HKEY key, LPCWSTR name, DWORD reserved, DWORD type, const BYTE* data,
                               DWORD size);

/// Removes a value of a key, or of the one at a path below it, which is opened for that. Needs KEY_SET_VALUE,
/// for a path in the store.
LIB_API LSTATUS RegDeleteKeyValueW(HKEY key, LPCWSTR path, LPCWSTR name);

/// Tells the key below `key` at a place in the order of the bytes of the names in capitals; 259 beyond the
/// last one. Needs KEY_ENUMERATE_SUB_KEYS. `*name_length` and `*class_length` tell the room in units, the NUL
/// included, and then the length without it; 234, with nothing written, when either is too little.
/// `class_name` and `class_length` may be null together. `written` (may be null) is when the key or one of
/// its values was last changed. 87 for a null `name_length`, a null `name` with room, a `class_name` without
/// a length, and for a `reserved` that is not null.
LIB_API LSTATUS RegEnumKeyExW(HKEY key, DWORD index, LPWSTR name, LPDWORD name_length, LPDWORD reserved,
                              LPWSTR class_name, LPDWORD class_length, LPFILETIME written);

/// Removes a key below `key` with its values; the empty path is `key` itself. 5 for one that has keys below
/// it and for a predefined key, 87 for a null path. Whether it may be depends on the store, not on the rights
/// of `key`. Handles to the key stay open and answer 1018.
LIB_API LSTATUS RegDeleteKeyW(HKEY key, LPCWSTR path);

} // namespace qn_platform

#endif
