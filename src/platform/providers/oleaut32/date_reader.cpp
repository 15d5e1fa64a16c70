#include "platform/providers/oleaut32/date_reader.h"

#include "platform/providers/oleaut32/date_text.h"
#include "platform/providers/oleaut32/entry_points.h"
#include "platform/providers/oleaut32/locale_cache.h"
#include "platform/time/civil.h"

#include <new>
#include <string>

namespace qn_oleaut32
{

namespace
{

constexpr int BEFORE_NOON = 0;
constexpr int AFTER_NOON = 1;

bool is_Time(const Date_Number& hour, const Date_Number& minute, const Date_Number& second)
{
    return hour.m_nDigits <= 2 && minute.m_nDigits <= 2 && second.m_nDigits <= 2 && hour.m_nValue <= 23 &&
           minute.m_nValue <= 59 && second.m_nValue <= 59;
}

} // namespace

bool Date_Reader::Read()
{
    skip_Blanks();
    while (!at_End())
    {
        if (!read_Item() || !read_Separators())
            return false;
    }
    return finish();
}

void Date_Reader::skip_Blanks()
{
    while (peek() == u' ')
        ++m_nNext;
}

bool Date_Reader::read_Item()
{
    const Date_Word* word = m_Locale.m_Words.Find(m_Text.substr(m_nNext));
    if (word != nullptr)
        return read_Word(*word);
    return Is_Digit(peek()) && read_Digits();
}

bool Date_Reader::read_Word(const Date_Word& word)
{
    m_nNext += word.m_strText.size();
    if (word.m_Kind == Date_Word::Kind::marker)
        return read_Marker(word.m_nValue);
    const bool month = word.m_Kind == Date_Word::Kind::month;
    const Item item = month ? Item::date : Item::filler;
    if (!allows(m_cSeparator, m_Last, item) || (month && m_Date.m_nMonth != 0))
        return false;
    if (month)
        m_Date.m_nMonth = word.m_nValue;
    m_Last = item;
    return !m_bMarker_Pending;
}

/// A marker belongs to the time right before it, otherwise to the one right behind it.
bool Date_Reader::read_Marker(int half)
{
    const bool behind = m_Last == Item::time;
    if (m_nHalf >= 0 || (m_bTime && !behind) || !allows(m_cSeparator, m_Last, Item::marker))
        return false;
    m_nHalf = half;
    m_bMarker_Pending = !behind;
    m_Last = Item::marker;
    return true;
}

bool Date_Reader::read_Number(Date_Number& number)
{
    number = Date_Number{0, 0};
    for (; Is_Digit(peek()); ++m_nNext)
    {
        if (++number.m_nDigits > 9)
            return false;
        number.m_nValue = number.m_nValue * 10 + (peek() - u'0');
    }
    return number.m_nDigits != 0;
}

bool Date_Reader::read_Digits()
{
    const std::size_t start = m_nNext;
    Date_Number number{};
    if (!read_Number(number))
        return false;
    if (peek() == u':')
        return read_Time(number);
    if (peek() == u'.' && Is_Digit(peek(1)))
    {
        m_nNext = start;
        if (read_Dotted())
            return true;
        read_Number(number);
    }
    int half = 0;
    std::size_t end = 0;
    if (m_bMarker_Pending)
        return number.m_nDigits <= 2 && set_Time(number.m_nValue, 0, 0);
    if (!m_bTime && number.m_nDigits <= 2 && find_Marker_Behind(half, end))
    {
        m_nNext = end;
        m_nHalf = half;
        return set_Time(number.m_nValue, 0, 0);
    }
    return add_Number(number);
}

/// A marker that makes the number before it an hour. In a locale that writes markers first it belongs to the
/// time behind it, if there is one.
bool Date_Reader::find_Marker_Behind(int& half, std::size_t& end) const
{
    std::size_t next = m_Text.find_first_not_of(u' ', m_nNext);
    if (next == std::u16string_view::npos)
        return false;
    const Date_Word* word = m_Locale.m_Words.Find(m_Text.substr(next));
    if (word == nullptr || word->m_Kind != Date_Word::Kind::marker)
        return false;
    end = next + word->m_strText.size();
    half = word->m_nValue;
    next = m_Text.find_first_not_of(u' ', end);
    return !m_Locale.m_bMarker_First || next == std::u16string_view::npos || !Is_Digit(m_Text[next]);
}

/// `hour` was read, and a colon stands behind it.
bool Date_Reader::read_Time(const Date_Number& hour)
{
    Date_Number minute{};
    Date_Number second{0, 1};
    ++m_nNext;
    if (!read_Number(minute))
        return false;
    if (peek() == u':')
    {
        ++m_nNext;
        if (!read_Number(second))
            return false;
    }
    return is_Time(hour, minute, second) && set_Time(hour.m_nValue, minute.m_nValue, second.m_nValue);
}

/// Takes two or three numbers with full stops between them if they are a time; otherwise nothing is read.
bool Date_Reader::read_Dotted()
{
    const std::size_t start = m_nNext;
    Date_Parts group;
    bool more = true;
    while (more && group.m_nCount < 3 &&
           read_Number(group.m_Numbers[static_cast<std::size_t>(group.m_nCount)]))
    {
        ++group.m_nCount;
        more = peek() == u'.' && Is_Digit(peek(1));
        if (more)
            ++m_nNext;
    }
    const auto& [hour, minute, second] = group.m_Numbers;
    if (!more && is_Time(hour, minute, second) && is_Dotted_Time(group) &&
        set_Time(hour.m_nValue, minute.m_nValue, second.m_nValue))
    {
        return true;
    }
    m_nNext = start;
    return false;
}

/// Whether numbers that could be a time are one: in a locale whose dates have full stops only if its times
/// have them too, and if a date stands there already or the numbers are none.
bool Date_Reader::is_Dotted_Time(const Date_Parts& group) const
{
    const bool new_group = m_cSeparator == 0 || m_cSeparator == u',' || m_Last != Item::date;
    if (m_bTime || !new_group)
        return false;
    if (m_Locale.m_cDate_Separator != L'.')
        return true;
    if (m_Locale.m_cTime_Separator != L'.')
        return false;
    int day = 0;
    const bool date_stands = m_Date.m_nCount + (m_Date.m_nMonth != 0 ? 1 : 0) >= 2;
    return date_stands || m_bMarker_Pending || !Resolve_Date(group, m_Locale.m_Order, day);
}

bool Date_Reader::set_Time(int hour, int minute, int second)
{
    if (m_bTime || hour > 23 || !allows(m_cSeparator, m_Last, Item::time))
        return false;
    m_bTime = true;
    m_bMarker_Pending = false;
    m_Last = Item::time;
    m_nHour = hour;
    m_nSecond = minute * 60 + second;
    return true;
}

bool Date_Reader::add_Number(const Date_Number& number)
{
    if (m_Date.m_nCount == 3 || m_bMarker_Pending || !allows(m_cSeparator, m_Last, Item::date))
        return false;
    m_Date.m_Numbers[static_cast<std::size_t>(m_Date.m_nCount++)] = number;
    m_Last = Item::date;
    return true;
}

/// Between two items stand blanks, or a separator with blanks around it; a full stop may end what is
/// abbreviated or counted, with a comma behind it, and the text.
bool Date_Reader::read_Separators()
{
    m_cSeparator = 0;
    const bool word = !Is_Digit(m_Text[m_nNext - 1]);
    skip_Blanks();
    if (peek() == u'.')
    {
        ++m_nNext;
        skip_Blanks();
        m_cSeparator = u'.';
        if (at_End())
            return word || m_Locale.m_cDate_Separator == L'.';
    }
    if (peek() == u',' || ((m_cSeparator == 0 || word) && (peek() == u'/' || peek() == u'-')))
    {
        m_cSeparator = peek();
        ++m_nNext;
        skip_Blanks();
        return !at_End();
    }
    return true;
}

/// Slashes and hyphens stand between the parts of a date; a time has a comma at most before or behind it.
bool Date_Reader::allows(char16_t separator, Item before, Item behind) const
{
    if (separator == 0 || separator == u',' || before == Item::filler || before == Item::marker)
        return true;
    if (separator == u'.')
        return before == Item::date;
    return before == Item::date && behind == Item::date;
}

bool Date_Reader::finish()
{
    const bool has_date = m_Date.m_nCount != 0 || m_Date.m_nMonth != 0;
    if (m_bMarker_Pending || !(has_date || m_bTime))
        return false;
    // A marker says nothing about hours of the 24.
    if (m_nHalf == AFTER_NOON && m_nHour < 12)
        m_nHour += 12;
    else if (m_nHalf == BEFORE_NOON && m_nHour == 12)
        m_nHour = 0;
    m_nSecond += m_nHour * 3600;
    return !has_date || Resolve_Date(m_Date, m_Locale.m_Order, m_nDay);
}

} // namespace qn_oleaut32

using namespace qn_platform;
using namespace qn_oleaut32;

namespace
{

HRESULT read(const Locale_Record& locale, const wchar_t* text, ULONG flags, DATE& value)
{
    std::u16string copy;
    for (; *text != 0; ++text)
        copy += static_cast<char16_t>(*text);
    const std::u16string folded = Fold_Text(copy);
    Date_Reader reader(locale, folded);
    if (!reader.Read())
        return TYPE_MISMATCH;
    const int day = (flags & VAR_TIMEVALUEONLY) != 0 ? 0 : reader.Get_Day();
    const int second = (flags & VAR_DATEVALUEONLY) != 0 ? 0 : reader.Get_Second();
    value = To_Variant(day, second);
    return 0;
}

} // namespace

HRESULT VarDateFromStr(const wchar_t* text, LCID locale, ULONG flags, DATE* value)
{
    try
    {
        if (value == nullptr || !Are_Known_Flags(flags))
            return INVALID_ARGUMENT;
        const Locale_Record* record = Find_Locale(locale);
        if (record == nullptr)
            return INVALID_ARGUMENT;
        return text != nullptr ? read(*record, text, flags, *value) : TYPE_MISMATCH;
    }
    catch (const std::bad_alloc&)
    {
        return OUT_OF_MEMORY;
    }
}
