#include "platform/modules.h"
#include "platform/modules/module_address.h"
#include "platform/system_calls.h"
#include "platform/text.h"

#include <algorithm>
#include <climits>
#include <cstdlib>
#include <memory>
#include <new>
#include <string>
#include <string_view>
#include <vector>

#include <sys/auxv.h>
#include <unistd.h>

namespace qn_platform
{

namespace
{

/// The path of the process's executable; empty if the system does not tell.
std::string executable_Path()
{
    std::string path(256, '\0');
    ssize_t length = system_calls.read_link("/proc/self/exe", path.data(), path.size());
    while (length >= 0 && static_cast<std::size_t>(length) == path.size())
    {
        path.resize(2 * path.size());
        length = system_calls.read_link("/proc/self/exe", path.data(), path.size());
    }
    path.resize(length < 0 ? 0 : static_cast<std::size_t>(length));

    // The kernel says so behind the name when the file was replaced or deleted, as an update does.
    constexpr std::string_view DELETED = " (deleted)";
    if (path.ends_with(DELETED) && system_calls.access_file(path.c_str(), F_OK) != 0)
    {
        path.resize(path.size() - DELETED.size());
    }
    return path;
}

/// The loader keeps the name by which a module was asked for, which may be relative. If the file is no longer
/// there that name has to do.
std::string module_Path(const char* loader_name)
{
    if (loader_name[0] == '/')
    {
        return loader_name;
    }
    const std::unique_ptr<char, void (*)(void*)> resolved(system_calls.real_path(loader_name, nullptr),
                                                          std::free);
    return resolved != nullptr ? resolved.get() : loader_name;
}

/// A path in the platform's form. A byte that is not UTF-8 becomes U+FFFD.
std::vector<wchar_t> platform_Form(const std::string& path)
{
    // Loaders and kernel limit paths, so the sizes fit.
    const int size = static_cast<int>(path.size()) + 1;
    std::vector<wchar_t> text(path.size() + 1);
    const int count = MultiByteToWideChar(CP_UTF8, 0, path.c_str(), size, text.data(), size);
    text.resize(static_cast<std::size_t>(count));
    std::replace(text.begin(), text.end(), L'/', L'\\');
    return text;
}

/// Copies a text with its NUL, cut to `size` units if it is longer.
DWORD hand_Out(const std::vector<wchar_t>& text, LPWSTR path, DWORD size)
{
    if (text.size() <= size)
    {
        std::copy(text.begin(), text.end(), path);
        return static_cast<DWORD>(text.size() - 1);
    }
    if (size != 0)
    {
        std::copy_n(text.begin(), size - 1, path);
        path[size - 1] = L'\0';
    }
    SetLastError(ERROR_INSUFFICIENT_BUFFER);
    return size;
}

std::string find_Path(HMODULE module)
{
    if (module == nullptr || module == GetModuleHandleW(nullptr))
    {
        return executable_Path();
    }
    const char* const name = Loader_Name(module);
    return name != nullptr ? module_Path(name) : std::string();
}

} // namespace

HMODULE GetModuleHandleW(LPCWSTR name)
{
    if (name != nullptr)
    {
        SetLastError(ERROR_CALL_NOT_IMPLEMENTED);
        return nullptr;
    }
    // The kernel tells where the executable's program headers are; they lie in its first page.
    // NOLINTNEXTLINE(performance-no-int-to-ptr)
    return Module_Of(reinterpret_cast<const void*>(getauxval(AT_PHDR)));
}

DWORD GetModuleFileNameW(HMODULE module, LPWSTR path, DWORD size)
{
    if (path == nullptr && size != 0)
    {
        SetLastError(ERROR_INVALID_PARAMETER);
        return 0;
    }
    try
    {
        const std::string found = find_Path(module);
        if (!found.empty())
        {
            return hand_Out(platform_Form(found), path, size);
        }
        SetLastError(ERROR_MOD_NOT_FOUND);
    }
    catch (const std::bad_alloc&)
    {
        SetLastError(ERROR_NOT_ENOUGH_MEMORY);
    }
    return 0;
}

BOOL DisableThreadLibraryCalls(HMODULE module)
{
    if (Loader_Name(module) == nullptr)
    {
        SetLastError(ERROR_MOD_NOT_FOUND);
        return FALSE;
    }
    return TRUE;
}

} // namespace qn_platform
