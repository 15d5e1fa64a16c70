#include "platform/providers/oleaut32/locale_record.h"

#include "platform/providers/oleaut32/icu_error.h"

#include <unicode/udat.h>
#include <unicode/uloc.h>
#include <unicode/unum.h>

#include <algorithm>
#include <string_view>

namespace qn_oleaut32
{

namespace
{

constexpr int LONGEST_TEXT = 256;

// Both kinds of handles are the same type to C++.
struct Close_Date_Format
{
    void operator()(UDateFormat* format) const { udat_close(format); }
};
struct Close_Number_Format
{
    void operator()(UNumberFormat* format) const { unum_close(format); }
};
using Date_Format = std::unique_ptr<UDateFormat, Close_Date_Format>;
using Number_Format = std::unique_ptr<UNumberFormat, Close_Number_Format>;

/// The locale with the Gregorian calendar and the digits of ASCII.
std::string plain_Id(const std::string& id)
{
    return id + (id.find('@') == std::string::npos ? "@" : ";") + "calendar=gregorian;numbers=latn";
}

std::string get_Language(const char* id)
{
    char language[ULOC_LANG_CAPACITY] = "";
    UErrorCode error = U_ZERO_ERROR;
    uloc_getLanguage(id, language, ULOC_LANG_CAPACITY, &error);
    return Is_Good(error) ? language : "";
}

/// ICU refused a call that it has no reason to refuse.
struct Refused_Call
{
};

Date_Format open_Format(const std::string& id, UDateFormatStyle time, UDateFormatStyle date)
{
    UErrorCode error = U_ZERO_ERROR;
    Date_Format format(udat_open(time, date, plain_Id(id).c_str(), u"GMT", -1, nullptr, 0, &error));
    return Is_Good(error) ? std::move(format) : throw Refused_Call();
}

/// A text that ICU writes by a call with a buffer, its capacity and an error.
template <class Get>
std::u16string get_Text(Get get)
{
    char16_t text[LONGEST_TEXT];
    UErrorCode error = U_ZERO_ERROR;
    const int32_t length = get(text, LONGEST_TEXT, &error);
    if (!Is_Good(error) || length < 0 || length > LONGEST_TEXT)
        throw Refused_Call();
    return std::u16string(text, static_cast<std::size_t>(length));
}

std::u16string get_Pattern(const std::string& id, UDateFormatStyle time, UDateFormatStyle date)
{
    const Date_Format format = open_Format(id, time, date);
    return get_Text([&](char16_t* text, int32_t capacity, UErrorCode* error)
                    { return udat_toPattern(format.get(), 0, text, capacity, error); });
}

std::u16string get_Symbol(const UDateFormat* format, UDateFormatSymbolType type, int index)
{
    return get_Text([=](char16_t* text, int32_t capacity, UErrorCode* error)
                    { return udat_getSymbols(format, type, index, text, capacity, error); });
}

bool is_Letter(char16_t unit) { return (unit >= u'a' && unit <= u'z') || (unit >= u'A' && unit <= u'Z'); }

/// The platform writes plain blanks and no marks of direction.
void append_Plain(char16_t unit, std::u16string& text)
{
    if (unit == 0x202F || unit == 0x00A0)
        text += u' ';
    else if (unit != 0x200E && unit != 0x200F && unit != 0x061C)
        text += unit;
}

std::u16string simplify_Text(const std::u16string& text)
{
    std::u16string result;
    for (const char16_t unit : text)
        append_Plain(unit, result);
    return result;
}

/// What Locale_Texts knows of a field of ICU's patterns; empty for those that are left out, such as the era.
std::u16string simplify_Field(char16_t letter, std::size_t count)
{
    switch (letter)
    {
    case u'y':
    case u'u':
        return u"y";
    case u'a':
    case u'b':
    case u'B':
        return u"a";
    case u'E':
    case u'c':
    case u'e':
        return count < 4 ? u"E" : u"EEEE";
    case u'K':
        return std::u16string(std::min<std::size_t>(count, 2), u'h');
    case u'k':
        return std::u16string(std::min<std::size_t>(count, 2), u'H');
    case u'd':
    case u'h':
    case u'H':
    case u'm':
    case u's':
        return std::u16string(std::min<std::size_t>(count, 2), letter);
    case u'M':
    case u'L':
        return std::u16string(std::min<std::size_t>(count, 4), letter);
    default:
        return std::u16string();
    }
}

/// Brings one of ICU's patterns into the form of Locale_Texts, with whole years.
std::u16string simplify_Pattern(const std::u16string& pattern)
{
    std::u16string result;
    bool quoted = false;
    for (std::size_t index = 0; index < pattern.size();)
    {
        const char16_t unit = pattern[index];
        quoted = quoted != (unit == u'\'');
        std::size_t count = 1;
        if (quoted || !is_Letter(unit))
        {
            append_Plain(unit, result);
        }
        else
        {
            count = std::min(pattern.find_first_not_of(unit, index), pattern.size()) - index;
            result += simplify_Field(unit, count);
        }
        index += count;
    }
    for (std::size_t twice; (twice = result.find(u"  ")) != std::u16string::npos;)
        result.erase(twice, 1);
    const std::size_t begin = std::min(result.find_first_not_of(u' '), result.size());
    return result.substr(begin, result.find_last_not_of(u' ') + 1 - begin);
}

/// The first unit behind the first run of `letters` that is neither a blank nor a part of a field or text.
char16_t find_Separator(const std::u16string& pattern, std::u16string_view letters, char16_t otherwise)
{
    std::size_t index = pattern.find_first_of(letters);
    while (index < pattern.size() && letters.find(pattern[index]) != std::u16string_view::npos)
        ++index;
    while (index < pattern.size() && pattern[index] == u' ')
        ++index;
    const bool good = index < pattern.size() && pattern[index] != u'\'' && !is_Letter(pattern[index]);
    return good ? pattern[index] : otherwise;
}

/// A time with words between its numbers becomes one with colons, as the platform has it.
std::u16string get_Time_Pattern(const std::string& id)
{
    const std::u16string pattern = simplify_Pattern(get_Pattern(id, UDAT_MEDIUM, UDAT_NONE));
    const std::size_t minute = pattern.find(u'm');
    const bool words = minute != std::u16string::npos && pattern.find(u'\'') < minute;
    return words || minute == std::u16string::npos ? u"HH:mm:ss" : pattern;
}

Date_Order get_Order(const std::u16string& pattern)
{
    const std::size_t year = pattern.find(u'y');
    const std::size_t month = pattern.find_first_of(u"ML");
    const std::size_t day = pattern.find(u'd');
    if (year < month && year < day)
        return Date_Order::year_month_day;
    return month < day ? Date_Order::month_day_year : Date_Order::day_month_year;
}

/// The words that stand in a pattern as they are: between apostrophes, or in letters that are not ASCII's.
void add_Fillers(const std::u16string& pattern, Date_Words& words)
{
    std::u16string text;
    bool quoted = false;
    for (const char16_t unit : pattern + u" ")
    {
        quoted = quoted != (unit == u'\'');
        if (unit != u'\'' && unit != u' ' && (quoted || unit > 0x7F))
        {
            text += unit;
            continue;
        }
        words.Add(text, Date_Word::Kind::filler, 0);
        text.clear();
    }
}

void add_English(Date_Words& words)
{
    const char16_t* const months[] = {u"january",   u"february", u"march",    u"april",
                                      u"may",       u"june",     u"july",     u"august",
                                      u"september", u"october",  u"november", u"december"};
    for (int month = 0; month < 12; ++month)
    {
        const std::u16string name = months[month];
        words.Add(name, Date_Word::Kind::month, month + 1);
        words.Add(name.substr(0, 3), Date_Word::Kind::month, month + 1);
    }
    words.Add(u"sept", Date_Word::Kind::month, 9);
    words.Add(u"am", Date_Word::Kind::marker, 0);
    words.Add(u"pm", Date_Word::Kind::marker, 1);
}

void take_Symbols(const UDateFormat* format, Locale_Record& record)
{
    Locale_Texts& texts = record.m_Texts;
    const auto take = [&](const wchar_t** target, UDateFormatSymbolType type, int first, int count)
    {
        for (int index = 0; index < count; ++index)
            target[index] = record.Keep(simplify_Text(get_Symbol(format, type, first + index)));
    };
    take(texts.m_Days, UDAT_WEEKDAYS, 1, 7);
    take(texts.m_Short_Days, UDAT_SHORT_WEEKDAYS, 1, 7);
    take(texts.m_Months, UDAT_STANDALONE_MONTHS, 0, 12);
    take(texts.m_Short_Months, UDAT_STANDALONE_SHORT_MONTHS, 0, 12);
    take(texts.m_Months_In_Date, UDAT_MONTHS, 0, 12);
    take(texts.m_Short_Months_In_Date, UDAT_SHORT_MONTHS, 0, 12);
    take(texts.m_Markers, UDAT_AM_PMS, 0, 2);
}

std::u16string to_U16(const wchar_t* text)
{
    std::u16string result;
    for (; *text != 0; ++text)
        result += static_cast<char16_t>(*text);
    return result;
}

void take_Words(const std::string& id, Locale_Record& record)
{
    const Locale_Texts& texts = record.m_Texts;
    Date_Words& words = record.m_Words;
    for (const auto* names :
         {texts.m_Months, texts.m_Months_In_Date, texts.m_Short_Months, texts.m_Short_Months_In_Date})
    {
        for (int month = 0; month < 12; ++month)
            words.Add(to_U16(names[month]), Date_Word::Kind::month, month + 1);
    }
    words.Add(to_U16(texts.m_Markers[0]), Date_Word::Kind::marker, 0);
    words.Add(to_U16(texts.m_Markers[1]), Date_Word::Kind::marker, 1);
    add_English(words);
    for (const UDateFormatStyle style : {UDAT_SHORT, UDAT_MEDIUM, UDAT_LONG})
        add_Fillers(get_Pattern(id, UDAT_NONE, style), words);
    add_Fillers(get_Pattern(id, UDAT_MEDIUM, UDAT_NONE), words);
    words.Sort();
}

void take_Patterns(const std::string& id, Locale_Record& record)
{
    const std::u16string date = simplify_Pattern(get_Pattern(id, UDAT_NONE, UDAT_SHORT));
    const std::u16string time = get_Time_Pattern(id);
    record.m_Texts.m_pShort_Date = record.Keep(date);
    record.m_Texts.m_pLong_Date = record.Keep(simplify_Pattern(get_Pattern(id, UDAT_NONE, UDAT_FULL)));
    record.m_Texts.m_pTime = record.Keep(time);
    record.m_Order = get_Order(date);
    record.m_cDate_Separator = static_cast<wchar_t>(find_Separator(date, u"dMLy", u'/'));
    record.m_cTime_Separator = static_cast<wchar_t>(find_Separator(time, u"hH", u':'));
    record.m_bMarker_First = time.find(u'a') < time.find(u'm');
}

std::u16string get_Decimal_Point(const std::string& id)
{
    UErrorCode error = U_ZERO_ERROR;
    const Number_Format format(unum_open(UNUM_DECIMAL, nullptr, 0, plain_Id(id).c_str(), nullptr, &error));
    if (!Is_Good(error))
        throw Refused_Call();
    const std::u16string point = get_Text(
        [&](char16_t* text, int32_t capacity, UErrorCode* failure)
        { return unum_getSymbol(format.get(), UNUM_DECIMAL_SEPARATOR_SYMBOL, text, capacity, failure); });
    return point.empty() ? std::u16string(u".") : point;
}

/// A host names no script: that is taken out, and so are keywords.
std::string get_Host_Name(const std::string& id)
{
    const std::string plain = id.substr(0, id.find('@'));
    const std::size_t first = plain.find('_');
    return first == std::string::npos ? plain : plain.substr(0, first) + plain.substr(plain.rfind('_'));
}

/// Whether a format writes in the language of `id`. ICU falls back to the user's when it cannot read its
/// data.
bool is_Own(const UDateFormat* format, const std::string& id)
{
    UErrorCode error = U_ZERO_ERROR;
    const char* valid = udat_getLocaleByType(format, ULOC_VALID_LOCALE, &error);
    return Is_Good(error) && get_Language(valid) == get_Language(id.c_str());
}

std::unique_ptr<Locale_Record> read_Record(const std::string& id)
{
    const Date_Format format = open_Format(id, UDAT_MEDIUM, UDAT_SHORT);
    if (!is_Own(format.get(), id))
        return nullptr;
    auto record = std::make_unique<Locale_Record>();
    record->m_strId = id;
    const Locale_Names names = Get_Names(id);
    record->m_pLanguage = record->Keep(names.m_strLanguage);
    record->m_pCountry = record->Keep(names.m_strCountry);
    record->m_pCode_Page = record->Keep(names.m_strCode_Page);
    record->m_Texts.m_pDecimal_Point = record->Keep(get_Decimal_Point(id));
    take_Symbols(format.get(), *record);
    take_Patterns(id, *record);
    take_Words(id, *record);
    record->m_strHost_Name = get_Host_Name(id);
    record->m_Texts.m_pHost_Name = record->m_strHost_Name.c_str();
    return record;
}

} // namespace

const wchar_t* Locale_Record::Keep(const std::u16string& text)
{
    auto kept = std::make_unique<wchar_t[]>(text.size() + 1);
    std::copy(text.begin(), text.end(), kept.get());
    m_Kept.push_back(std::move(kept));
    return m_Kept.back().get();
}

std::unique_ptr<Locale_Record> Make_Record(const std::string& id)
{
    try
    {
        return read_Record(id);
    }
    catch (const Refused_Call&)
    {
        return nullptr;
    }
}

std::unique_ptr<Locale_Record> Make_Invariant_Record()
{
    std::unique_ptr<Locale_Record> record = Make_Record("en_US");
    if (record != nullptr)
    {
        record->m_pLanguage = L"Invariant Language";
        record->m_pCountry = L"Invariant Country";
        record->m_Texts.m_pShort_Date = L"MM/dd/y";
        record->m_Texts.m_pLong_Date = L"EEEE, dd MMMM y";
        record->m_Texts.m_pTime = L"HH:mm:ss";
    }
    return record;
}

} // namespace qn_oleaut32
