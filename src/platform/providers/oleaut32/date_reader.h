#ifndef QNLIB_SRC_PLATFORM_PROVIDERS_OLEAUT32_DATE_READER_H
#define QNLIB_SRC_PLATFORM_PROVIDERS_OLEAUT32_DATE_READER_H

#include "platform/providers/oleaut32/locale_record.h"

#include <array>
#include <string_view>

namespace qn_oleaut32
{

struct Date_Number
{
    int m_nValue;
    int m_nDigits;
};

/// The numbers of a date as they stand in the text, and the month that a word among them names.
struct Date_Parts
{
    std::array<Date_Number, 3> m_Numbers{};
    int m_nCount = 0;
    int m_nMonth = 0; ///< 0 for none
};

/// Takes the numbers in the locale's order, and where they don't fit so in another one. False when they fit
/// in none; `day` is that of the variant form.
bool Resolve_Date(const Date_Parts& parts, Date_Order order, int& day);

/// Reads a text, in the form of Fold_Text, from its beginning to its end; VarDateFromStr tells what it may
/// be.
class Date_Reader
{
public:
    Date_Reader(const Locale_Record& locale, std::u16string_view text) : m_Locale(locale), m_Text(text) {}

    /// False when the text is no date.
    bool Read();

    /// 0 for a time alone.
    int Get_Day() const { return m_nDay; }
    int Get_Second() const { return m_nSecond; }

private:
    enum class Item
    {
        none,
        date,
        time,
        marker,
        filler
    };

    bool read_Item();
    bool read_Word(const Date_Word& word);
    bool read_Marker(int half);
    bool read_Digits();
    bool read_Number(Date_Number& number);
    bool read_Time(const Date_Number& hour);
    bool read_Dotted();
    bool is_Dotted_Time(const Date_Parts& group) const;
    bool find_Marker_Behind(int& half, std::size_t& end) const;
    bool set_Time(int hour, int minute, int second);
    bool add_Number(const Date_Number& number);
    bool read_Separators();
    bool allows(char16_t separator, Item before, Item behind) const;
    bool finish();

    bool at_End() const { return m_nNext == m_Text.size(); }
    char16_t peek(std::size_t ahead = 0) const
    {
        return m_nNext + ahead < m_Text.size() ? m_Text[m_nNext + ahead] : u'\0';
    }
    void skip_Blanks();

    const Locale_Record& m_Locale;
    std::u16string_view m_Text;
    std::size_t m_nNext = 0;
    Date_Parts m_Date;
    Item m_Last = Item::none;
    char16_t m_cSeparator = 0; ///< before the item that is read now; 0 for blanks or nothing
    bool m_bTime = false;
    int m_nHour = 0;
    int m_nHalf = -1; ///< of the day, by a marker; -1 for none
    bool m_bMarker_Pending = false;
    int m_nSecond = 0;
    int m_nDay = 0;
};

} // namespace qn_oleaut32

#endif
