#include "platform/modules.h"
#include "platform/providers/oleaut32/entry_points.h"
#include "platform/providers/oleaut32/locale_cache.h"

#include <algorithm>
#include <new>

using namespace qn_platform;
using namespace qn_oleaut32;

namespace
{

int refuse(DWORD error)
{
    SetLastError(error);
    return 0;
}

/// Null for another type.
const wchar_t* get_Text(const Locale_Record& record, LCTYPE type)
{
    switch (type & ~LOCALE_NOUSEROVERRIDE)
    {
    case LOCALE_SENGLANGUAGE:
        return record.m_pLanguage;
    case LOCALE_SENGCOUNTRY:
        return record.m_pCountry;
    case LOCALE_IDEFAULTANSICODEPAGE:
        return record.m_pCode_Page;
    default:
        return nullptr;
    }
}

/// What `find` answers; null when memory is short.
template <class Find>
const Locale_Texts* find_Texts(Find find)
{
    try
    {
        const Locale_Record* record = find();
        return record != nullptr ? &record->m_Texts : nullptr;
    }
    catch (const std::bad_alloc&)
    {
        return nullptr;
    }
}

} // namespace

int GetLocaleInfoW(LCID locale, LCTYPE type, wchar_t* buffer, int size)
{
    try
    {
        if (size < 0 || (buffer == nullptr && size != 0))
            return refuse(ERROR_INVALID_PARAMETER);
        const Locale_Record* record = Find_Locale(locale);
        if (record == nullptr)
            return refuse(ERROR_INVALID_PARAMETER);
        const wchar_t* text = get_Text(*record, type);
        if (text == nullptr)
            return refuse(ERROR_INVALID_FLAGS);
        int length = 1;
        while (text[length - 1] != 0)
            ++length;
        if (size == 0)
            return length;
        if (size < length)
            return refuse(ERROR_INSUFFICIENT_BUFFER);
        std::copy_n(text, length, buffer);
        return length;
    }
    catch (const std::bad_alloc&)
    {
        return refuse(ERROR_NOT_ENOUGH_MEMORY);
    }
}

const Locale_Texts* qn_texts_by_platform_name(const wchar_t* name)
{
    return find_Texts([=] { return Find_Locale_By_Platform_Name(name); });
}

const Locale_Texts* qn_texts_by_host_name(const char* name)
{
    return find_Texts([=] { return Find_Locale_By_Host_Name(name); });
}
