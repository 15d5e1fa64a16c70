#include "platform/folders.h"

#include "platform/fail.h"
#include "platform/files/native_path.h"
#include "platform/files/user_folder.h"
#include "platform/text.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <new>

#include <sys/stat.h>

namespace qn_platform
{

namespace
{

constexpr HRESULT to_Result(DWORD code) { return static_cast<HRESULT>(code | 0x80070000); }

// ---- Finding ---------------------------------------------------------------------------------------------

/// 0, or the error for which there is no such path. The text's size includes its NUL.
DWORD measure(const std::string& folder, int& size)
{
    if (folder.empty() || folder.find('\\') != std::string::npos)
    {
        return folder.empty() ? ERROR_PATH_NOT_FOUND : ERROR_INVALID_NAME;
    }
    size = MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, folder.c_str(), -1, nullptr, 0);
    return size != 0 ? ERROR_SUCCESS : ERROR_NO_UNICODE_TRANSLATION;
}

void write_Path(const std::string& folder, LPWSTR path, int size)
{
    MultiByteToWideChar(CP_UTF8, 0, folder.c_str(), -1, path, size);
    std::replace(path, path + size, L'/', L'\\');
}

DWORD get_App_Data(LPWSTR path)
{
    const std::string folder = Get_User_Folder("XDG_DATA_HOME", "/.local/share");
    int size = 0;
    DWORD error = measure(folder, size);
    if (error == ERROR_SUCCESS && size > static_cast<int>(MAX_PATH))
    {
        error = ERROR_FILENAME_EXCED_RANGE;
    }
    if (error == ERROR_SUCCESS)
    {
        write_Path(folder, path, size);
    }
    return error;
}

DWORD get_Local_Data(LPWSTR& path)
{
    const std::string folder = Get_User_Folder("XDG_STATE_HOME", "/.local/state");
    int size = 0;
    const DWORD error = measure(folder, size);
    if (error != ERROR_SUCCESS)
    {
        return error;
    }
    path = static_cast<LPWSTR>(std::malloc(static_cast<std::size_t>(size) * sizeof(wchar_t)));
    if (path == nullptr)
    {
        return ERROR_NOT_ENOUGH_MEMORY;
    }
    write_Path(folder, path, size);
    return ERROR_SUCCESS;
}

/// What the call answers, or that memory is short.
template <class Call>
DWORD with_Memory(const Call& call)
{
    try
    {
        return call();
    }
    catch (const std::bad_alloc&)
    {
        return ERROR_NOT_ENOUGH_MEMORY;
    }
}

// ---- Making ----------------------------------------------------------------------------------------------

DWORD tell_Error(int error)
{
    switch (error)
    {
    case ENOENT:
    case ENOTDIR:
        return ERROR_PATH_NOT_FOUND;
    case EROFS:
        return ERROR_WRITE_PROTECT;
    case ENOSPC:
    case EDQUOT:
    case EMLINK:
        return ERROR_DISK_FULL;
    case ENOMEM:
        return ERROR_NOT_ENOUGH_MEMORY;
    case ENAMETOOLONG:
        return ERROR_FILENAME_EXCED_RANGE;
    default:
        return ERROR_ACCESS_DENIED;
    }
}

bool is_Folder(const char* path)
{
    struct stat status = {};
    return ::stat(path, &status) == 0 && S_ISDIR(status.st_mode);
}

/// The path is without a slash at its end.
DWORD make_Folder(const std::string& path)
{
    constexpr mode_t FOR_THE_USER = 0700;
    if (::mkdir(path.c_str(), FOR_THE_USER) == 0)
    {
        return ERROR_SUCCESS;
    }
    const std::size_t end = path.rfind('/');
    if (errno == ENOENT && end != 0 && end != std::string::npos)
    {
        const DWORD above = make_Folder(path.substr(0, end));
        if (above != ERROR_SUCCESS && above != ERROR_ALREADY_EXISTS)
        {
            return above == ERROR_DIRECTORY ? ERROR_PATH_NOT_FOUND : above;
        }
        if (::mkdir(path.c_str(), FOR_THE_USER) == 0)
        {
            return ERROR_SUCCESS;
        }
    }
    if (errno == EEXIST)
    {
        return is_Folder(path.c_str()) ? ERROR_ALREADY_EXISTS : ERROR_DIRECTORY;
    }
    return tell_Error(errno);
}

DWORD create(LPCWSTR path)
{
    if (path == nullptr || *path == 0)
    {
        return ERROR_PATH_NOT_FOUND;
    }
    if ((path[0] != '\\' && path[0] != '/') || path[1] == '\\' || path[1] == '/')
    {
        return ERROR_BAD_PATHNAME;
    }
    std::string native = Native_Path(path);
    if (native.empty())
    {
        return ERROR_INVALID_NAME;
    }
    while (native.size() > 1 && native.back() == '/')
    {
        native.pop_back();
    }
    return make_Folder(native);
}

} // namespace

HRESULT SHGetFolderPathW(HWND, int folder, HANDLE token, DWORD flags, LPWSTR path)
{
    if (path == nullptr)
    {
        return E_INVALIDARG;
    }
    *path = 0;
    if (folder != CSIDL_APPDATA)
    {
        return E_INVALIDARG;
    }
    if (token != nullptr || flags != SHGFP_TYPE_CURRENT)
    {
        return to_Result(ERROR_NOT_SUPPORTED);
    }
    const DWORD error = with_Memory([&] { return get_App_Data(path); });
    return error == ERROR_SUCCESS ? S_OK : to_Result(error);
}

HRESULT SHGetKnownFolderPath(REFKNOWNFOLDERID folder, DWORD flags, HANDLE token, LPWSTR* path)
{
    if (path == nullptr)
    {
        return E_INVALIDARG;
    }
    *path = nullptr;
    if (std::memcmp(&folder, &FOLDERID_LocalAppDataLow, sizeof folder) != 0)
    {
        return to_Result(ERROR_FILE_NOT_FOUND);
    }
    if (token != nullptr || flags != 0)
    {
        return to_Result(ERROR_NOT_SUPPORTED);
    }
    const DWORD error = with_Memory([&] { return get_Local_Data(*path); });
    return error == ERROR_SUCCESS ? S_OK : to_Result(error);
}

void CoTaskMemFree(LPVOID block) { std::free(block); }

int SHCreateDirectory(HWND, LPCWSTR path)
{
    const DWORD error = with_Memory([&] { return create(path); });
    if (error != ERROR_SUCCESS)
    {
        SetLastError(error);
    }
    return static_cast<int>(error);
}

int Lib_Get_Native_Path(LPCWSTR path, char* native, int size)
{
    if (path == nullptr || size < 0 || (native == nullptr && size != 0))
    {
        return Fail(ERROR_INVALID_PARAMETER);
    }
    std::string found;
    const DWORD error = with_Memory(
        [&]
        {
            found = Native_Path(path);
            return found.empty() && *path != 0 ? ERROR_NO_UNICODE_TRANSLATION : ERROR_SUCCESS;
        });
    if (error != ERROR_SUCCESS)
    {
        return Fail(error);
    }
    const int needed = static_cast<int>(found.size()) + 1;
    if (size != 0 && size < needed)
    {
        return Fail(ERROR_INSUFFICIENT_BUFFER);
    }
    std::copy_n(found.c_str(), size != 0 ? needed : 0, native);
    return needed;
}

} // namespace qn_platform
