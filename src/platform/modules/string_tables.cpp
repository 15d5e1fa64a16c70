#include "platform/modules.h"
#include "platform/modules/module_address.h"
#include "platform/system_calls.h"
#include "platform/text.h"

#include <algorithm>
#include <cstring>

#include <dlfcn.h>

namespace qn_platform
{

namespace
{

/// The module's own string table; null if it has none. The loader also looks in what the module was linked
/// with, so what it finds counts only if it lies in the module.
const Lib_String_Table_Entry* find_Table(HMODULE module)
{
    const HMODULE executable = GetModuleHandleW(nullptr);
    const HMODULE owner = module != nullptr ? module : executable;
    const char* const name = Loader_Name(owner);
    if (name == nullptr)
    {
        return nullptr;
    }
    void* const handle =
        system_calls.open_module(owner == executable ? nullptr : name, RTLD_LAZY | RTLD_NOLOAD);
    if (handle == nullptr)
    {
        return nullptr;
    }
    const void* const table = system_calls.find_symbol(handle, "qn_string_table");
    // The module stays loaded: its user holds a reference of his own.
    system_calls.close_module(handle);
    return table != nullptr && Module_Of(table) == owner ? static_cast<const Lib_String_Table_Entry*>(table)
                                                         : nullptr;
}

LPCWSTR find_Text(const Lib_String_Table_Entry* table, UINT id)
{
    while (table->text != nullptr && table->id != id)
    {
        ++table;
    }
    return table->text;
}

int fail(DWORD error)
{
    SetLastError(error);
    return 0;
}

} // namespace

int LoadStringW(HINSTANCE module, UINT id, LPWSTR buffer, int size)
{
    if (buffer == nullptr || size < 0)
    {
        return fail(ERROR_INVALID_PARAMETER);
    }
    const Lib_String_Table_Entry* const table = find_Table(module);
    if (table == nullptr)
    {
        return fail(ERROR_RESOURCE_DATA_NOT_FOUND);
    }
    const LPCWSTR text = find_Text(table, id);
    const int length = lstrlenW(text);
    if (length == 0)
    {
        return fail(ERROR_RESOURCE_NAME_NOT_FOUND);
    }
    if (size == 0)
    {
        std::memcpy(buffer, &text, sizeof text);
        return length;
    }
    const int count = std::min(length, size - 1);
    *std::copy_n(text, count, buffer) = L'\0';
    return count;
}

} // namespace qn_platform
