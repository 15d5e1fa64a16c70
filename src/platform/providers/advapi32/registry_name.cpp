#include "platform/providers/advapi32/registry_name.h"

#include "platform/providers/advapi32/case_table.h"

#include <algorithm>
#include <cstring>

namespace qn_advapi32
{

using namespace qn_platform;

char16_t Fold(char16_t unit)
{
    if (unit < 0x80)
        return static_cast<char16_t>(unit - (unit >= u'a' && unit <= u'z' ? 0x20 : 0));
    const unsigned int block = CASE_INDEX[unit / CASE_BLOCK_SIZE];
    return static_cast<char16_t>(unit + CASE_BLOCKS[block * CASE_BLOCK_SIZE + unit % CASE_BLOCK_SIZE]);
}

int Compare_Stored(Text_View left, Text_View right)
{
    const std::size_t shorter = std::min(left.size(), right.size());
    const int order = std::memcmp(left.data(), right.data(), shorter * sizeof(char16_t));
    return order != 0 || left.size() == right.size() ? order : left.size() < right.size() ? -1 : 1;
}

DWORD Read_Name(LPCWSTR text, std::size_t most, Name& name)
{
    for (; text != nullptr && *text != 0; ++text)
    {
        if (name.plain.size() == most)
            return ERROR_INVALID_PARAMETER;
        name.plain += static_cast<char16_t>(*text);
        name.folded += Fold(static_cast<char16_t>(*text));
    }
    return ERROR_SUCCESS;
}

DWORD Read_Path(LPCWSTR text, Name& path)
{
    if (text != nullptr && *text == SEPARATOR)
        return ERROR_BAD_PATHNAME;
    std::size_t length = 0; // of the component
    for (; text != nullptr && *text != 0; ++text)
    {
        const auto unit = static_cast<char16_t>(*text);
        if (unit == SEPARATOR)
        {
            length = 0;
            continue;
        }
        if (length == 0 && !path.plain.empty())
        {
            path.plain += SEPARATOR;
            path.folded += SEPARATOR;
        }
        if (++length > MOST_COMPONENT)
            return ERROR_INVALID_PARAMETER;
        path.plain += unit;
        path.folded += Fold(unit);
    }
    return ERROR_SUCCESS;
}

bool Path_Walk::Next()
{
    if (m_nNext >= m_Path.folded.size())
        return false;
    m_nStart = m_nNext;
    m_nLength = std::min(m_Path.folded.find(SEPARATOR, m_nStart), m_Path.folded.size()) - m_nStart;
    m_nNext = m_nStart + m_nLength + 1;
    return true;
}

Name Path_Walk::Get_Rest() const
{
    const std::size_t start = std::min(m_nNext, m_Path.plain.size());
    return {m_Path.plain.substr(start), m_Path.folded.substr(start)};
}

} // namespace qn_advapi32
