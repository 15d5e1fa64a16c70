#include "platform/files/native_path.h"
#include "platform/kernel.h"
#include "platform/modules.h"
#include "platform/security.h"
#include "platform/system_calls.h"

#include <cerrno>
#include <new>
#include <string>

#include <unistd.h>

namespace qn_platform
{

namespace
{

constexpr SECURITY_INFORMATION KNOWN_INFORMATION =
    OWNER_SECURITY_INFORMATION | GROUP_SECURITY_INFORMATION | DACL_SECURITY_INFORMATION |
    SACL_SECURITY_INFORMATION | LABEL_SECURITY_INFORMATION | 0xF0000000; // lists that inherit or don't

/// 0 if there is a file of that name that the caller may see.
DWORD look_At(const std::string& path)
{
    if (system_calls.access_file(path.c_str(), F_OK) == 0)
    {
        return ERROR_SUCCESS;
    }
    switch (errno)
    {
    case ENOENT:
        return ERROR_FILE_NOT_FOUND;
    case ENOTDIR:
        return ERROR_PATH_NOT_FOUND;
    case ENAMETOOLONG:
        return ERROR_FILENAME_EXCED_RANGE;
    case ENOMEM:
        return ERROR_NOT_ENOUGH_MEMORY;
    default:
        return ERROR_ACCESS_DENIED;
    }
}

DWORD find_File(LPCWSTR name)
{
    const std::string path = Native_Path(name);
    const DWORD found = look_At(path);
    const std::size_t folder_end = path.rfind('/');
    if (found == ERROR_FILE_NOT_FOUND && folder_end != std::string::npos &&
        look_At(path.substr(0, folder_end + 1)) != ERROR_SUCCESS)
    {
        return ERROR_PATH_NOT_FOUND;
    }
    return found;
}

DWORD find_Kernel_Object(LPCWSTR name)
{
    const HANDLE opened = OpenMutexW(READ_CONTROL, FALSE, name);
    if (opened != nullptr)
    {
        CloseHandle(opened);
        return ERROR_SUCCESS;
    }
    const DWORD error = GetLastError();
    return error == ERROR_INVALID_HANDLE ? ERROR_SUCCESS : error; // an object of another kind
}

DWORD check_Information(SECURITY_INFORMATION information, PSID owner, PSID group, PACL dacl, PACL sacl)
{
    const auto bad_Sid = [&](SECURITY_INFORMATION bit, PSID sid)
    { return (information & bit) != 0 && !IsValidSid(sid); };
    const auto bad_Acl = [&](SECURITY_INFORMATION bits, PACL acl)
    { return (information & bits) != 0 && acl != nullptr && !IsValidAcl(acl); };

    if (information == 0 || (information & ~KNOWN_INFORMATION) != 0)
    {
        return ERROR_INVALID_PARAMETER;
    }
    if (bad_Sid(OWNER_SECURITY_INFORMATION, owner) || bad_Sid(GROUP_SECURITY_INFORMATION, group))
    {
        return ERROR_INVALID_SID;
    }
    const bool bad_list = bad_Acl(DACL_SECURITY_INFORMATION, dacl) ||
                          bad_Acl(SACL_SECURITY_INFORMATION | LABEL_SECURITY_INFORMATION, sacl);
    return bad_list ? ERROR_INVALID_ACL : ERROR_SUCCESS;
}

DWORD find_Object(LPCWSTR name, SE_OBJECT_TYPE type)
{
    switch (type)
    {
    case SE_FILE_OBJECT:
        return find_File(name);
    case SE_KERNEL_OBJECT:
        return find_Kernel_Object(name);
    default:
        return ERROR_SUCCESS; // whether there is one makes no difference
    }
}

/// Why it cannot be set.
DWORD find_Reason(LPCWSTR name, SE_OBJECT_TYPE type, DWORD information_fault)
{
    if (name == nullptr || *name == L'\0' || type <= SE_UNKNOWN_OBJECT_TYPE || type > SE_REGISTRY_WOW64_32KEY)
    {
        return ERROR_INVALID_PARAMETER;
    }
    if (information_fault != ERROR_SUCCESS)
    {
        return information_fault;
    }
    const DWORD found = find_Object(name, type);
    return found != ERROR_SUCCESS ? found : ERROR_NOT_SUPPORTED;
}

} // namespace

DWORD SetNamedSecurityInfoW(LPWSTR name, SE_OBJECT_TYPE type, SECURITY_INFORMATION information, PSID owner,
                            PSID group, PACL dacl, PACL sacl)
{
    const DWORD before = GetLastError();
    DWORD reason = ERROR_NOT_ENOUGH_MEMORY;
    try
    {
        reason = find_Reason(name, type, check_Information(information, owner, group, dacl, sacl));
    }
    catch (const std::bad_alloc&)
    {
    }
    SetLastError(before);
    return reason;
}

} // namespace qn_platform
