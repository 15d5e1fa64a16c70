#ifndef QNLIB_SRC_PLATFORM_PROVIDERS_OLEAUT32_LOCALE_RECORD_H
#define QNLIB_SRC_PLATFORM_PROVIDERS_OLEAUT32_LOCALE_RECORD_H

#include "platform/providers/oleaut32/date_words.h"
#include "platform/text/locale_texts.h"
#include "platform/time.h"

#include <memory>
#include <string>
#include <vector>

namespace qn_oleaut32
{

using qn_platform::LCID;
using qn_platform::Locale_Texts;

enum class Date_Order
{
    month_day_year,
    day_month_year,
    year_month_day
};

/// All that the provider knows of a locale, taken from ICU once. It never changes and lives as long as the
/// process.
struct Locale_Record
{
    Locale_Record() = default;
    Locale_Record(const Locale_Record&) = delete;
    Locale_Record& operator=(const Locale_Record&) = delete;

    /// Keeps a text for the life of the record.
    const wchar_t* Keep(const std::u16string& text);

    std::string m_strId; ///< ICU's
    std::string m_strHost_Name;
    const wchar_t* m_pLanguage = L""; ///< in English
    const wchar_t* m_pCountry = L"";  ///< in English
    const wchar_t* m_pCode_Page = L"0";
    Locale_Texts m_Texts{};
    Date_Order m_Order = Date_Order::month_day_year;
    wchar_t m_cDate_Separator = L'/';
    wchar_t m_cTime_Separator = L':';
    bool m_bMarker_First = false; ///< the marker of the half of the day stands before the time
    Date_Words m_Words;

private:
    std::vector<std::unique_ptr<wchar_t[]>> m_Kept;
};

/// Texts about a locale by which the platform names it.
struct Locale_Names
{
    std::u16string m_strLanguage;
    std::u16string m_strCountry;
    std::u16string m_strCode_Page;
};

/// `id` is ICU's, with a country. Throws std::bad_alloc.
Locale_Names Get_Names(const std::string& id);

/// Whether ICU lists data of the locale's language in its script. For others it answers by the user's default
/// locale. Throws std::bad_alloc.
bool Has_Data(const std::string& id);

/// Null when ICU refuses the locale or cannot read its data. Throws std::bad_alloc.
std::unique_ptr<Locale_Record> Make_Record(const std::string& id);

/// The locale of no country.
std::unique_ptr<Locale_Record> Make_Invariant_Record();

} // namespace qn_oleaut32

#endif
