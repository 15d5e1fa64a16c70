#ifndef QNLIB_SRC_PLATFORM_PROVIDERS_OLEAUT32_DATE_WORDS_H
#define QNLIB_SRC_PLATFORM_PROVIDERS_OLEAUT32_DATE_WORDS_H

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

// The words of a locale that the text of a date may hold.

namespace qn_oleaut32
{

constexpr bool Is_Digit(char16_t unit) { return unit >= u'0' && unit <= u'9'; }

struct Date_Word
{
    enum class Kind
    {
        month,  ///< 1 to 12
        marker, ///< 0 before noon, 1 after
        filler  ///< means nothing, such as the "de" between day and month
    };

    std::u16string m_strText; ///< in the form of Fold_Text
    Kind m_Kind;
    int m_nValue;
};

/// Brings a text into the form in which words are compared: letters without case, all white space as blanks,
/// all digits as those of ASCII; marks of direction fall out.
std::u16string Fold_Text(std::u16string_view text);

class Date_Words
{
public:
    /// The first of words that look the same counts. A full stop at the end and names that are mere numbers
    /// are left out.
    void Add(const std::u16string& text, Date_Word::Kind kind, int value);

    /// After the last word.
    void Sort();

    /// The longest word that stands at the beginning of `text`, in the form of Fold_Text, and ends there
    /// where a word ends; null when there is none.
    const Date_Word* Find(std::u16string_view text) const;

private:
    std::vector<Date_Word> m_Words; ///< by their first unit, longer ones first
};

} // namespace qn_oleaut32

#endif
