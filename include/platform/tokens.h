#ifndef QNLIB_PLATFORM_TOKENS_H
#define QNLIB_PLATFORM_TOKENS_H

#include "lib_api.h"
#include "platform/security.h"
#include "platform/types.h"

// Access tokens and their privileges. Included through lib_platform.h only.
//
// A token is a record of this process; handles stand for it as for any kernel object. The process has one
// token, whichever handle it is seen through, and a forked child starts with a copy of it. Any thread may
// call these at any time.
//
// A thread may bear a token of its own, which stands for the client that it works for: it impersonates him.
// The thread keeps the token alive, whichever handles are closed, until it puts it off or ends. New threads
// and forked children bear none. While a thread bears one, it can open the process's token only for access
// that its own token grants, so who may not know his client's session is not given the process's instead.
// Tokens that can be borne are made by the operations of platform/sessions.h.
//
// The process's token holds a privilege if the process (its first thread, where threads differ) may have the
// capability by which Linux allows what the privilege stands for, as it was when the token was first looked
// at:
//
//     CAP_CHOWN            SeTakeOwnership             CAP_SETUID         SeImpersonate,
//     CAP_DAC_OVERRIDE     SeRestore                                      SeAssignPrimaryToken
//     CAP_DAC_READ_SEARCH  SeBackup                    CAP_SYS_BOOT       SeShutdown
//     CAP_IPC_LOCK         SeLockMemory                CAP_SYS_MODULE     SeLoadDriver
//     CAP_AUDIT_CONTROL    SeSecurity                  CAP_SYS_NICE       SeIncreaseBasePriority
//     CAP_AUDIT_WRITE      SeAudit                     CAP_SYS_PTRACE     SeDebug
//     CAP_PERFMON          SeSystemProfile,            CAP_SYS_RESOURCE   SeIncreaseQuota
//                          SeProfileSingleProcess      CAP_SYS_TIME       SeSystemtime
//     CAP_SYS_ADMIN        SeTcb, SeManageVolume, SeCreatePagefile
//
// Every process's token holds SeChangeNotify and SeCreateGlobal, which are enabled at first, and
// SeCreateSymbolicLink, SeIncreaseWorkingSet and SeTimeZone; no token holds the others. Switching a privilege
// changes what the token tells of itself and never a capability: the kernel goes on allowing what it allowed.

namespace qn_platform
{

inline constexpr DWORD TOKEN_ASSIGN_PRIMARY = 0x0001;
inline constexpr DWORD TOKEN_DUPLICATE = 0x0002;
inline constexpr DWORD TOKEN_IMPERSONATE = 0x0004;
inline constexpr DWORD TOKEN_QUERY = 0x0008;
inline constexpr DWORD TOKEN_QUERY_SOURCE = 0x0010;
inline constexpr DWORD TOKEN_ADJUST_PRIVILEGES = 0x0020;
inline constexpr DWORD TOKEN_ADJUST_GROUPS = 0x0040;
inline constexpr DWORD TOKEN_ADJUST_DEFAULT = 0x0080;
inline constexpr DWORD TOKEN_ADJUST_SESSIONID = 0x0100;
inline constexpr DWORD TOKEN_ALL_ACCESS = 0x000F01FF;

inline constexpr DWORD SE_PRIVILEGE_ENABLED_BY_DEFAULT = 0x00000001;
inline constexpr DWORD SE_PRIVILEGE_ENABLED = 0x00000002;
inline constexpr DWORD SE_PRIVILEGE_REMOVED = 0x00000004;

/// Identifies a privilege on this machine.
struct LUID
{
    DWORD LowPart;
    LONG HighPart;
};
using PLUID = LUID*;

struct LUID_AND_ATTRIBUTES
{
    LUID Luid;
    DWORD Attributes; // SE_PRIVILEGE values
};

struct TOKEN_PRIVILEGES
{
    DWORD PrivilegeCount;
    LUID_AND_ATTRIBUTES Privileges[1]; // as many as PrivilegeCount says
};
using PTOKEN_PRIVILEGES = TOKEN_PRIVILEGES*;

struct SID_AND_ATTRIBUTES
{
    PSID Sid;
    DWORD Attributes;
};

struct TOKEN_USER
{
    SID_AND_ATTRIBUTES User;
};
using PTOKEN_USER = TOKEN_USER*;

enum TOKEN_INFORMATION_CLASS : int
{
    TokenUser = 1,
    TokenPrivileges = 3,
    TokenSessionId = 12,
    MaxTokenInfoClass = 51
};

/// Opens the token of this process. 6 for what is no handle to a process, 5 for an access that nobody gets
/// (beyond TOKEN_ALL_ACCESS, generic rights, MAXIMUM_ALLOWED, and SYNCHRONIZE, which is granted although
/// tokens can't be waited on) or that the token which the thread bears does not grant, 87 for a null `token`,
/// 8 or 4 when there is no room.
LIB_API BOOL OpenProcessToken(HANDLE process, DWORD access, PHANDLE token);

/// Opens the token that a thread bears. 1008 when it bears none, 5 for access that the token does not grant
/// and for a handle without THREAD_QUERY_INFORMATION, 6 for what is no handle to a thread, 87 for a null
/// `token`, 8 or 4 when there is no room. If `as_self` is 0, the calling thread is given no more than the
/// token that it bears itself grants.
LIB_API BOOL OpenThreadToken(HANDLE thread, DWORD access, BOOL as_self, PHANDLE token);

/// Has a thread bear a token from now on, in the place of the one before, or none for a null `token`. The
/// thread is the calling one if `thread` is null, else the one behind `*thread`, whose handle needs
/// THREAD_SET_THREAD_TOKEN; one that was created suspended bears the token from its first instruction on. The
/// token's handle needs TOKEN_IMPERSONATE and may be closed afterwards. 6 for what is no handle of that kind,
/// 5 for a handle that lacks the right and for a thread that has ended, 1349 for the token of the process,
/// which is not one to be borne, 8 when memory is short.
LIB_API BOOL SetThreadToken(PHANDLE thread, HANDLE token);

/// Has the calling thread put off its token, if it bears one. Never fails.
LIB_API BOOL RevertToSelf();

/// The identifier of a privilege by its name ("SeDebugPrivilege"), without regard to case. 1313 when there is
/// none of that name, or it is null; 1722 for another system than this one, which is null or empty; 87 for a
/// null `luid`.
LIB_API BOOL LookupPrivilegeValueW(LPCWSTR system, LPCWSTR name, PLUID luid);

/// Switches privileges of a token as `wanted` says, or disables all of them if `disable_all` is not 0: to
/// SE_PRIVILEGE_ENABLED, to nothing, or out of the token for good by SE_PRIVILEGE_REMOVED; other attributes
/// are ignored. On success the last error is 0, or 1300 if the token doesn't hold one of the privileges; the
/// others are switched then.
///
/// `previous` receives what was changed, with its old attributes, and `needed` the size of that; if it is
/// larger than `size`, nothing is changed and the last error is 122. Both may be null together; with a null
/// `previous`, `size` is ignored.
///
/// Needs TOKEN_ADJUST_PRIVILEGES, and TOKEN_QUERY too for `previous`: otherwise 5. 6 for what is no token, 87
/// for a null `wanted` that is needed and a null `needed` beside a `previous`.
LIB_API BOOL AdjustTokenPrivileges(HANDLE token, BOOL disable_all, PTOKEN_PRIVILEGES wanted, DWORD size,
                                   PTOKEN_PRIVILEGES previous, PDWORD needed);

/// Tells what a token says of itself. Needs TOKEN_QUERY.
///
/// | class           | what is told                                                                   |
/// |-----------------|--------------------------------------------------------------------------------|
/// | TokenUser       | TOKEN_USER and behind it the SID, S-1-22-1 and the user's number; attributes 0 |
/// | TokenPrivileges | TOKEN_PRIVILEGES                                                               |
/// | TokenSessionId  | a DWORD: the session                                                           |
///
/// `needed` receives the size of that. If `size` is less, nothing is told and the last error is 122, for
/// TokenSessionId 24. The process's token tells the effective user that the process has now, and the session
/// as it was when it was first asked for (4, 5 or 8 if it can't be read just then), here or in the process
/// that this one was forked from; the others tell those that they were made for. 6 for what is no token, 5
/// for a handle without TOKEN_QUERY. Other classes are refused with 50, numbers that are no class with 87,
/// and a null `needed` too.
LIB_API BOOL GetTokenInformation(HANDLE token, TOKEN_INFORMATION_CLASS information_class, LPVOID information,
                                 DWORD size, PDWORD needed);

} // namespace qn_platform

#endif
