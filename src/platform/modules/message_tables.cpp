#include "platform/modules/message_tables.h"

#include "platform/messages.h"
#include "platform/modules/module_address.h"

namespace qn_platform
{

namespace
{

constexpr WORD NEUTRAL = 0;
constexpr WORD USER_DEFAULT = 0x400;
constexpr WORD SYSTEM_DEFAULT = 0x800;
constexpr WORD US_ENGLISH = 0x409;

bool is_Any(WORD language)
{
    return language == NEUTRAL || language == USER_DEFAULT || language == SYSTEM_DEFAULT;
}

/// How well a text serves a caller who left the language open: less is better.
int rank_Of(DWORD language) { return language == NEUTRAL ? 0 : language == US_ENGLISH ? 1 : 2; }

/// The best text of a code in any language; of equal ones the first.
LPCWSTR find_In_Any(const Lib_Message_Table_Entry* entry, DWORD code)
{
    const Lib_Message_Table_Entry* best = nullptr;
    for (; entry->text != nullptr; ++entry)
    {
        if (entry->code == code && (best == nullptr || rank_Of(entry->language) < rank_Of(best->language)))
        {
            best = entry;
        }
    }
    return best != nullptr ? best->text : nullptr;
}

Message_Text find_In_Language(const Lib_Message_Table_Entry* entry, DWORD code, WORD language)
{
    DWORD error = ERROR_RESOURCE_LANG_NOT_FOUND;
    for (; entry->text != nullptr; ++entry)
    {
        if (entry->language != language)
        {
            continue;
        }
        if (entry->code == code)
        {
            return {entry->text, ERROR_SUCCESS};
        }
        error = ERROR_MR_MID_NOT_FOUND;
    }
    return {nullptr, error};
}

} // namespace

Message_Text Find_Module_Message(HMODULE module, DWORD code, DWORD language)
{
    const auto* const table =
        static_cast<const Lib_Message_Table_Entry*>(Own_Symbol(module, "qn_message_table"));
    if (table == nullptr)
    {
        return {nullptr, Own_Symbol(module, "qn_string_table") == nullptr ? ERROR_RESOURCE_DATA_NOT_FOUND
                                                                          : ERROR_RESOURCE_TYPE_NOT_FOUND};
    }
    const auto wanted = static_cast<WORD>(language);
    return is_Any(wanted) ? Message_Text{find_In_Any(table, code), ERROR_MR_MID_NOT_FOUND}
                          : find_In_Language(table, code, wanted);
}

Message_Text Find_System_Message(DWORD code, DWORD language)
{
    const auto wanted = static_cast<WORD>(language);
    if (!is_Any(wanted) && wanted != US_ENGLISH)
    {
        return {nullptr, ERROR_RESOURCE_LANG_NOT_FOUND};
    }
    return {System_Text(code), ERROR_MR_MID_NOT_FOUND};
}

} // namespace qn_platform
