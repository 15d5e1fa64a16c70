#include "platform/time.h"
#include "platform/time/civil.h"

#include <cerrno>

namespace qn_platform
{

namespace
{

/// Years of two digits mean those from 1950 to 2049.
int to_Full_Year(int year)
{
    if (year >= 100)
        return year;
    return year < 50 ? year + 2000 : year + 1900;
}

bool is_Near_Date_And_Time(const SYSTEMTIME& time)
{
    return time.wYear <= 9999 && time.wMonth <= 12 && time.wDay <= 31 && time.wHour <= 23 &&
           time.wMinute <= 59 && time.wSecond <= 59;
}

} // namespace

INT VariantTimeToSystemTime(DATE value, LPSYSTEMTIME time)
{
    Variant_Moment moment{};
    if (time == nullptr || !Split_Variant(value, moment))
        return FALSE;
    const Civil_Date date = To_Civil(moment.m_nDay + DAY_OF_VARIANT);
    time->wYear = static_cast<WORD>(date.m_nYear);
    time->wMonth = static_cast<WORD>(date.m_nMonth);
    time->wDayOfWeek = static_cast<WORD>(To_Week_Day(moment.m_nDay + DAY_OF_VARIANT));
    time->wDay = static_cast<WORD>(date.m_nDay);
    time->wHour = static_cast<WORD>(moment.m_nSecond / 3600);
    time->wMinute = static_cast<WORD>(moment.m_nSecond / 60 % 60);
    time->wSecond = static_cast<WORD>(moment.m_nSecond % 60);
    time->wMilliseconds = 0;
    return TRUE;
}

INT SystemTimeToVariantTime(LPSYSTEMTIME time, DATE* value)
{
    if (time == nullptr || value == nullptr || !is_Near_Date_And_Time(*time))
        return FALSE;
    int year = to_Full_Year(time->wYear);
    int month = time->wMonth;
    if (month == 0)
    {
        month = 12;
        --year;
    }
    const long long day = Count_Days(year, month, time->wDay) - DAY_OF_VARIANT;
    if (day < FIRST_VARIANT_DAY || day > LAST_VARIANT_DAY)
        return FALSE;
    *value = To_Variant(day, (time->wHour * 60 + time->wMinute) * 60 + time->wSecond);
    return TRUE;
}

errno_t _gmtime64_s(std::tm* fields, const long long* time)
{
    constexpr long long FIRST = -43200;
    constexpr long long LAST = 32536846799;
    if (fields == nullptr)
        return EINVAL;
    *fields = std::tm{};
    if (time == nullptr || *time < FIRST || *time > LAST)
    {
        fields->tm_sec = fields->tm_min = fields->tm_hour = fields->tm_mday = fields->tm_mon = -1;
        fields->tm_year = fields->tm_wday = fields->tm_yday = fields->tm_isdst = -1;
        return EINVAL;
    }
    const long long seconds = *time + DAY_OF_1970 * 86400;
    const Civil_Date date = To_Civil(seconds / 86400);
    const auto second = static_cast<int>(seconds % 86400);
    fields->tm_sec = second % 60;
    fields->tm_min = second / 60 % 60;
    fields->tm_hour = second / 3600;
    fields->tm_mday = date.m_nDay;
    fields->tm_mon = date.m_nMonth - 1;
    fields->tm_year = date.m_nYear - 1900;
    fields->tm_wday = To_Week_Day(seconds / 86400);
    fields->tm_yday = static_cast<int>(seconds / 86400 - Count_Days(date.m_nYear, 1, 1));
    return 0;
}

} // namespace qn_platform
