#include "platform/modules.h"
#include "platform/modules/module_address.h"
#include "platform/text.h"

#include <algorithm>
#include <cstring>

namespace qn_platform
{

namespace
{

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
    const auto* const table =
        static_cast<const Lib_String_Table_Entry*>(Own_Symbol(module, "qn_string_table"));
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
