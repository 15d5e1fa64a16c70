#include "platform/providers/oleaut32/date_words.h"

#include "platform/providers/oleaut32/icu_error.h"

#include <unicode/uchar.h>
#include <unicode/ustring.h>

#include <algorithm>

namespace qn_oleaut32
{

namespace
{

bool is_Ascii(std::u16string_view text)
{
    return std::all_of(text.begin(), text.end(), [](char16_t unit) { return unit < 0x80; });
}

bool is_Direction_Mark(char16_t unit) { return unit == 0x200E || unit == 0x200F || unit == 0x061C; }

std::u16string fold_Case(std::u16string_view text)
{
    // A unit becomes three at most.
    std::u16string folded(3 * text.size(), u'\0');
    UErrorCode error = U_ZERO_ERROR;
    const int length = u_strFoldCase(folded.data(), static_cast<int32_t>(folded.size()), text.data(),
                                     static_cast<int32_t>(text.size()), U_FOLD_CASE_DEFAULT, &error);
    folded.resize(Is_Good(error) ? static_cast<std::size_t>(length) : 0);
    return folded;
}

char16_t simplify(char16_t unit)
{
    constexpr char16_t ARABIC_COMMA = 0x060C;
    if (u_isUWhiteSpace(unit))
        return u' ';
    if (unit == ARABIC_COMMA)
        return u',';
    const int digit = unit < 0x80 ? -1 : u_charDigitValue(unit);
    return digit >= 0 ? static_cast<char16_t>(u'0' + digit) : unit;
}

bool continues_Word(char16_t last, char16_t next)
{
    return u_isalpha(last) && (u_isalpha(next) || U16_IS_SURROGATE(next));
}

} // namespace

std::u16string Fold_Text(std::u16string_view text)
{
    if (is_Ascii(text))
    {
        std::u16string folded(text);
        for (char16_t& unit : folded)
        {
            if (unit >= u'A' && unit <= u'Z')
                unit = static_cast<char16_t>(unit + 0x20);
            else if (unit >= 0x09 && unit <= 0x0D)
                unit = u' ';
        }
        return folded;
    }
    std::u16string folded = fold_Case(text);
    folded.erase(std::remove_if(folded.begin(), folded.end(), is_Direction_Mark), folded.end());
    std::transform(folded.begin(), folded.end(), folded.begin(), simplify);
    return folded;
}

void Date_Words::Add(const std::u16string& text, Date_Word::Kind kind, int value)
{
    std::u16string word = Fold_Text(text);
    const std::size_t begin = std::min(word.find_first_not_of(u" .,"), word.size());
    const std::size_t end = word.find_last_not_of(u" .,") + 1;
    word = begin < end ? word.substr(begin, end - begin) : std::u16string();
    const bool known = std::any_of(m_Words.begin(), m_Words.end(),
                                   [&](const Date_Word& other) { return other.m_strText == word; });
    if (!known && !std::all_of(word.begin(), word.end(), Is_Digit))
        m_Words.push_back({word, kind, value});
}

void Date_Words::Sort()
{
    std::sort(m_Words.begin(), m_Words.end(),
              [](const Date_Word& left, const Date_Word& right)
              {
                  if (left.m_strText[0] != right.m_strText[0])
                      return left.m_strText[0] < right.m_strText[0];
                  return left.m_strText.size() > right.m_strText.size();
              });
}

const Date_Word* Date_Words::Find(std::u16string_view text) const
{
    if (text.empty())
        return nullptr;
    auto word =
        std::lower_bound(m_Words.begin(), m_Words.end(), text[0],
                         [](const Date_Word& entry, char16_t unit) { return entry.m_strText[0] < unit; });
    for (; word != m_Words.end() && word->m_strText[0] == text[0]; ++word)
    {
        const std::size_t length = word->m_strText.size();
        if (text.substr(0, length) == word->m_strText &&
            (text.size() == length || !continues_Word(text[length - 1], text[length])))
        {
            return &*word;
        }
    }
    return nullptr;
}

} // namespace qn_oleaut32
