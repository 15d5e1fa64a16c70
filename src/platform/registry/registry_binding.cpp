#include "platform/modules.h"
#include "platform/modules/provider.h"
#include "platform/registry.h"

// The operations on the registry, whose work the provider `advapi32` does.

namespace qn_platform
{

namespace
{

/// Calls an entry point of the provider; the last error as the answer when it cannot be had.
template <class Function, class... Arguments>
LSTATUS call(Provider_Function<Function>& entry, Arguments... arguments)
{
    const auto function = entry.Get();
    return function != nullptr ? function(arguments...) : static_cast<LSTATUS>(GetLastError());
}

} // namespace

LSTATUS RegOpenKeyExW(HKEY key, LPCWSTR path, DWORD options, REGSAM access, PHKEY result)
{
    static constinit Provider_Function<decltype(RegOpenKeyExW)> entry(L"advapi32", "RegOpenKeyExW");
    if (result != nullptr)
    {
        *result = nullptr;
    }
    return call(entry, key, path, options, access, result);
}

LSTATUS RegCreateKeyExW(HKEY key, LPCWSTR path, DWORD reserved, LPWSTR class_name, DWORD options,
                        REGSAM access, LPSECURITY_ATTRIBUTES attributes, PHKEY result, LPDWORD disposition)
{
    static constinit Provider_Function<decltype(RegCreateKeyExW)> entry(L"advapi32", "RegCreateKeyExW");
    if (result != nullptr)
    {
        *result = nullptr;
    }
    return call(entry, key, path, reserved, class_name, options, access, attributes, result, disposition);
}

LSTATUS RegCloseKey(HKEY key)
{
    static constinit Provider_Function<decltype(RegCloseKey)> entry(L"advapi32", "RegCloseKey");
    return call(entry, key);
}

LSTATUS RegQueryValueExW(HKEY key, LPCWSTR name, LPDWORD reserved, LPDWORD type, LPBYTE data, LPDWORD size)
{
    static constinit Provider_Function<decltype(RegQueryValueExW)> entry(L"advapi32", "RegQueryValueExW");
    return call(entry, key, name, reserved, type, data, size);
}

LSTATUS RegEnumValueW(HKEY key, DWORD index, LPWSTR name, LPDWORD name_length, LPDWORD reserved, LPDWORD type,
                      LPBYTE data, LPDWORD size)
{
    static constinit Provider_Function<decltype(RegEnumValueW)> entry(L"advapi32", "RegEnumValueW");
    return call(entry, key, index, name, name_length, reserved, type, data, size);
}

LSTATUS RegSetValueExW(HKEY key, LPCWSTR name, DWORD reserved, DWORD type, const BYTE* data, DWORD size)
{
    static constinit Provider_Function<decltype(RegSetValueExW)> entry(L"advapi32", "RegSetValueExW");
    return call(entry, key, name, reserved, type, data, size);
}

LSTATUS RegDeleteKeyValueW(HKEY key, LPCWSTR path, LPCWSTR name)
{
    static constinit Provider_Function<decltype(RegDeleteKeyValueW)> entry(L"advapi32", "RegDeleteKeyValueW");
    return call(entry, key, path, name);
}

LSTATUS RegEnumKeyExW(HKEY key, DWORD index, LPWSTR name, LPDWORD name_length, LPDWORD reserved,
                      LPWSTR class_name, LPDWORD class_length, LPFILETIME written)
{
    static constinit Provider_Function<decltype(RegEnumKeyExW)> entry(L"advapi32", "RegEnumKeyExW");
    return call(entry, key, index, name, name_length, reserved, class_name, class_length, written);
}

LSTATUS RegDeleteKeyW(HKEY key, LPCWSTR path)
{
    static constinit Provider_Function<decltype(RegDeleteKeyW)> entry(L"advapi32", "RegDeleteKeyW");
    return call(entry, key, path);
}

} // namespace qn_platform
