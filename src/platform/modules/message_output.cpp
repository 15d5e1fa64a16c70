#include "platform/modules/message_output.h"

#include <algorithm>

namespace qn_platform
{

namespace
{

constexpr wchar_t LINE_BREAK[] = {L'\r', L'\n'};

} // namespace

void Message_Output::Put(wchar_t unit)
{
    if (unit != L' ')
    {
        Put_Fixed(unit);
        return;
    }
    if (m_nBlanks == NONE || m_nBehind != m_Text.size())
    {
        m_nBlanks = m_Text.size();
    }
    if (!is_Limited() || m_Text.size() - m_nLine < m_nWidth)
    {
        m_Text.push_back(unit);
    }
    m_nBehind = m_Text.size();
}

void Message_Output::Put_Fixed(wchar_t unit)
{
    m_Text.push_back(unit);
    if (is_Limited() && m_Text.size() - m_nLine > m_nWidth)
    {
        wrap_Line();
    }
}

/// The last unit is one too many: the line ends at its last blanks, or in front of that unit.
void Message_Output::wrap_Line()
{
    const bool in_word = m_nBlanks == NONE || m_nBlanks == m_nLine;
    const std::size_t end = in_word ? m_Text.size() - 1 : m_nBlanks;
    const std::size_t next = in_word ? end : m_nBehind;
    const auto begin = m_Text.begin();
    m_Text.erase(begin + static_cast<std::ptrdiff_t>(end), begin + static_cast<std::ptrdiff_t>(next));
    m_Text.insert(m_Text.begin() + static_cast<std::ptrdiff_t>(end), std::begin(LINE_BREAK),
                  std::end(LINE_BREAK));
    m_nLine = end + std::size(LINE_BREAK);
    m_nBlanks = NONE;
}

void Message_Output::Break_Line()
{
    m_Text.insert(m_Text.end(), std::begin(LINE_BREAK), std::end(LINE_BREAK));
    m_nLine = m_Text.size();
    m_nBlanks = NONE;
}

void Message_Output::Break_Source_Line()
{
    if (m_nWidth == 0)
    {
        Break_Line();
    }
    else
    {
        Put(L' ');
    }
}

} // namespace qn_platform
