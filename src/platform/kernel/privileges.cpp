#include "platform/kernel/privileges.h"

#include "platform/system_calls.h"

#include <iterator>

#include <linux/capability.h>
#include <unistd.h>

namespace qn_platform::kernel
{

namespace
{

constexpr int NOBODY = -1;
constexpr int EVERYBODY = -2;

struct Privilege
{
    LPCWSTR name;
    int capability;
};

/// The first is that of FIRST_PRIVILEGE.
constexpr Privilege PRIVILEGES[] = {
    {L"SeCreateTokenPrivilege", NOBODY},
    {L"SeAssignPrimaryTokenPrivilege", CAP_SETUID},
    {L"SeLockMemoryPrivilege", CAP_IPC_LOCK},
    {L"SeIncreaseQuotaPrivilege", CAP_SYS_RESOURCE},
    {L"SeMachineAccountPrivilege", NOBODY},
    {L"SeTcbPrivilege", CAP_SYS_ADMIN},
    {L"SeSecurityPrivilege", CAP_AUDIT_CONTROL},
    {L"SeTakeOwnershipPrivilege", CAP_CHOWN},
    {L"SeLoadDriverPrivilege", CAP_SYS_MODULE},
    {L"SeSystemProfilePrivilege", CAP_PERFMON},
    {L"SeSystemtimePrivilege", CAP_SYS_TIME},
    {L"SeProfileSingleProcessPrivilege", CAP_PERFMON},
    {L"SeIncreaseBasePriorityPrivilege", CAP_SYS_NICE},
    {L"SeCreatePagefilePrivilege", CAP_SYS_ADMIN},
    {L"SeCreatePermanentPrivilege", NOBODY},
    {L"SeBackupPrivilege", CAP_DAC_READ_SEARCH},
    {L"SeRestorePrivilege", CAP_DAC_OVERRIDE},
    {L"SeShutdownPrivilege", CAP_SYS_BOOT},
    {L"SeDebugPrivilege", CAP_SYS_PTRACE},
    {L"SeAuditPrivilege", CAP_AUDIT_WRITE},
    {L"SeSystemEnvironmentPrivilege", NOBODY},
    {L"SeChangeNotifyPrivilege", EVERYBODY},
    {L"SeRemoteShutdownPrivilege", NOBODY},
    {L"SeUndockPrivilege", NOBODY},
    {L"SeSyncAgentPrivilege", NOBODY},
    {L"SeEnableDelegationPrivilege", NOBODY},
    {L"SeManageVolumePrivilege", CAP_SYS_ADMIN},
    {L"SeImpersonatePrivilege", CAP_SETUID},
    {L"SeCreateGlobalPrivilege", EVERYBODY},
    {L"SeTrustedCredManAccessPrivilege", NOBODY},
    {L"SeRelabelPrivilege", NOBODY},
    {L"SeIncreaseWorkingSetPrivilege", EVERYBODY},
    {L"SeTimeZonePrivilege", EVERYBODY},
    {L"SeCreateSymbolicLinkPrivilege", EVERYBODY},
    {L"SeDelegateSessionUserImpersonatePrivilege", NOBODY},
};

static_assert(std::size(PRIVILEGES) == LAST_PRIVILEGE - FIRST_PRIVILEGE + 1);

constexpr wchar_t lower_Case(wchar_t unit)
{
    return unit >= L'A' && unit <= L'Z' ? static_cast<wchar_t>(unit + (L'a' - L'A')) : unit;
}

constexpr bool is_Same_Name(LPCWSTR left, LPCWSTR right)
{
    while (*left != L'\0' && lower_Case(*left) == lower_Case(*right))
    {
        ++left;
        ++right;
    }
    return *left == *right;
}

constexpr DWORD CHANGE_NOTIFY = 23;
constexpr DWORD CREATE_GLOBAL = 30;

constexpr bool is_Named(DWORD privilege, LPCWSTR name)
{
    return is_Same_Name(PRIVILEGES[privilege - FIRST_PRIVILEGE].name, name);
}

static_assert(is_Named(CHANGE_NOTIFY, L"SeChangeNotifyPrivilege"));
static_assert(is_Named(CREATE_GLOBAL, L"SeCreateGlobalPrivilege"));

std::uint64_t read_Permitted_Capabilities()
{
    // By its number it is the process's first thread that is asked, by 0 it would be the calling one.
    __user_cap_header_struct header = {_LINUX_CAPABILITY_VERSION_3, ::getpid()};
    __user_cap_data_struct data[_LINUX_CAPABILITY_U32S_3] = {};
    if (system_calls.get_capabilities(&header, data) != 0)
    {
        return 0;
    }
    return data[0].permitted | static_cast<std::uint64_t>(data[1].permitted) << 32;
}

} // namespace

DWORD Find_Privilege(LPCWSTR name)
{
    for (DWORD i = 0; i < std::size(PRIVILEGES); ++i)
    {
        if (is_Same_Name(PRIVILEGES[i].name, name))
        {
            return FIRST_PRIVILEGE + i;
        }
    }
    return 0;
}

Privilege_Set Get_Default_Privileges() { return Privilege_Bit(CHANGE_NOTIFY) | Privilege_Bit(CREATE_GLOBAL); }

Privilege_Set Read_Held_Privileges()
{
    const std::uint64_t capabilities = read_Permitted_Capabilities();
    Privilege_Set held = 0;
    for (DWORD i = 0; i < std::size(PRIVILEGES); ++i)
    {
        const int capability = PRIVILEGES[i].capability;
        if (capability == EVERYBODY || (capability >= 0 && (capabilities >> capability & 1) != 0))
        {
            held |= Privilege_Bit(FIRST_PRIVILEGE + i);
        }
    }
    return held;
}

} // namespace qn_platform::kernel
