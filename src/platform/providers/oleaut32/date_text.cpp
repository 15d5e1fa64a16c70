#include "platform/providers/oleaut32/date_text.h"

#include "platform/providers/oleaut32/entry_points.h"
#include "platform/providers/oleaut32/locale_cache.h"
#include "platform/time/bstr.h"
#include "platform/time/civil.h"
#include "platform/time/date_pattern.h"

#include <new>

using namespace qn_platform;
using namespace qn_oleaut32;

namespace
{

/// Longer than the patterns and names of any locale make a text.
class Text_Output
{
public:
    void Put(wchar_t unit)
    {
        if (m_nLength < CAPACITY)
            m_Text[m_nLength++] = unit;
    }

    BSTR Make() const { return Make_Bstr(m_Text, m_nLength); }

private:
    static constexpr std::size_t CAPACITY = 512;

    wchar_t m_Text[CAPACITY];
    std::size_t m_nLength = 0;
};

Date_Fields get_Fields(const Variant_Moment& moment)
{
    const long long days = moment.m_nDay + DAY_OF_VARIANT;
    const Civil_Date date = To_Civil(days);
    return {date.m_nYear,         date.m_nMonth,           date.m_nDay,
            To_Week_Day(days),    moment.m_nSecond / 3600, moment.m_nSecond / 60 % 60,
            moment.m_nSecond % 60};
}

void write(const Variant_Moment& moment, const Locale_Texts& texts, ULONG flags, Text_Output& output)
{
    const Date_Fields fields = get_Fields(moment);
    const bool has_date = moment.m_nDay != 0;
    const bool has_time = moment.m_nSecond != 0 || !has_date;
    const bool date = has_date && (flags & VAR_TIMEVALUEONLY) == 0;
    const bool time = has_time && (flags & VAR_DATEVALUEONLY) == 0;
    Pattern_Writer<Text_Output> writer(output, fields, texts);
    if (date)
        writer.Write(texts.m_pShort_Date);
    if (date && time)
        output.Put(L' ');
    if (time)
        writer.Write(texts.m_pTime);
}

} // namespace

HRESULT VarBstrFromDate(DATE value, LCID locale, ULONG flags, BSTR* text)
{
    try
    {
        Variant_Moment moment{};
        if (text == nullptr || !Are_Known_Flags(flags) || !Split_Variant(value, moment))
            return INVALID_ARGUMENT;
        const Locale_Record* record = Find_Locale(locale);
        if (record == nullptr)
            return INVALID_ARGUMENT;
        Text_Output output;
        write(moment, record->m_Texts, flags, output);
        BSTR const result = output.Make();
        if (result == nullptr)
            return OUT_OF_MEMORY;
        *text = result;
        return 0;
    }
    catch (const std::bad_alloc&)
    {
        return OUT_OF_MEMORY;
    }
}
