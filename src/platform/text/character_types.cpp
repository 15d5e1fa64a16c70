#include "platform/text/character_types.h"

#include "platform/modules.h"
#include "platform/text.h"
#include "platform/text/character_class_table.h"

namespace qn_platform
{

WORD Character_Classes(unsigned int unit)
{
    const unsigned int block = CLASS_INDEX[(unit & 0xFFFF) / CLASS_BLOCK_SIZE];
    return CLASS_KINDS[CLASS_BLOCKS[block * CLASS_BLOCK_SIZE + unit % CLASS_BLOCK_SIZE]];
}

BOOL GetStringTypeW(DWORD info_type, LPCWSTR source, int source_size, WORD* types)
{
    if (source == nullptr || types == nullptr || source_size == 0 || source_size < -1)
    {
        SetLastError(ERROR_INVALID_PARAMETER);
        return FALSE;
    }
    if (info_type != CT_CTYPE1)
    {
        const bool exists = info_type == CT_CTYPE2 || info_type == CT_CTYPE3;
        SetLastError(exists ? ERROR_NOT_SUPPORTED : ERROR_INVALID_FLAGS);
        return FALSE;
    }
    if (source_size == -1)
    {
        source_size = lstrlenW(source) + 1;
    }
    for (int i = 0; i < source_size; ++i)
    {
        types[i] = Character_Classes(source[i]);
    }
    return TRUE;
}

} // namespace qn_platform
