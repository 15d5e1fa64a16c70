#include "platform/modules.h"
#include "platform/modules/module_address.h"
#include "platform/modules/module_search.h"
#include "platform/text.h"

#include <algorithm>
#include <new>
#include <string>
#include <vector>

#include <sys/auxv.h>

namespace qn_platform
{

namespace
{

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

} // namespace

HMODULE GetModuleHandleW(LPCWSTR name)
{
    if (name == nullptr)
    {
        // The kernel tells where the executable's program headers are; they lie in its first page.
        // NOLINTNEXTLINE(performance-no-int-to-ptr)
        return Module_Of(reinterpret_cast<const void*>(getauxval(AT_PHDR)));
    }
    try
    {
        const HMODULE module = Find_Loaded_Module(Read_Module_Name(name));
        if (module == nullptr)
        {
            SetLastError(ERROR_MOD_NOT_FOUND);
        }
        return module;
    }
    catch (const std::bad_alloc&)
    {
        SetLastError(ERROR_NOT_ENOUGH_MEMORY);
        return nullptr;
    }
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
        const std::string found = Module_Path(module);
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
