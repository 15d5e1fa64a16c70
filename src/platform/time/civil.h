#ifndef QNLIB_SRC_PLATFORM_TIME_CIVIL_H
#define QNLIB_SRC_PLATFORM_TIME_CIVIL_H

#include "platform/time.h"

// The Gregorian calendar for the layer and its providers.

namespace qn_platform
{

struct Civil_Date
{
    int m_nYear;
    int m_nMonth;
    int m_nDay;
};

/// The day numbers of the variant form at the ends of its range.
inline constexpr int FIRST_VARIANT_DAY = -657434;
inline constexpr int LAST_VARIANT_DAY = 2958465;

/// Days of the forms' epochs in the day count of 1 March of the year 0.
inline constexpr long long DAY_OF_1601 = 584694;
inline constexpr long long DAY_OF_VARIANT = 693899;
inline constexpr long long DAY_OF_1970 = 719468;

constexpr bool Is_Leap_Year(int year) { return year % 4 == 0 && (year % 100 != 0 || year % 400 == 0); }

constexpr int Days_Of_Month(int year, int month)
{
    constexpr int LENGTHS[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    return LENGTHS[month - 1] + (month == 2 && Is_Leap_Year(year) ? 1 : 0);
}

/// Days since 1 March of the year 0. The day may lie outside of its month, the year is above 0.
constexpr long long Count_Days(int year, int month, int day)
{
    const int from_march = month > 2 ? year : year - 1;
    const int months = month > 2 ? month - 3 : month + 9;
    return from_march * 365 + from_march / 4 - from_march / 100 + from_march / 400 + (153 * months + 2) / 5 +
           day - 1;
}

/// The way back, for days that aren't negative and have 31 bits.
constexpr Civil_Date To_Civil(long long days)
{
    const auto narrow = static_cast<unsigned int>(days);
    const unsigned int of_era = narrow % 146097;
    const unsigned int year = (of_era - of_era / 1460 + of_era / 36524 - of_era / 146096) / 365;
    const unsigned int of_year = of_era - (365 * year + year / 4 - year / 100);
    const unsigned int months = (5 * of_year + 2) / 153;
    const unsigned int month = months < 10 ? months + 3 : months - 9;
    return {static_cast<int>(narrow / 146097 * 400 + year + (month <= 2 ? 1 : 0)), static_cast<int>(month),
            static_cast<int>(of_year - (153 * months + 2) / 5 + 1)};
}

/// 0 to 6, from Sunday: 1 March of the year 0 was a Wednesday.
constexpr int To_Week_Day(long long days) { return static_cast<int>((days + 3) % 7); }

static_assert(Count_Days(1601, 1, 1) == DAY_OF_1601 && Count_Days(1899, 12, 30) == DAY_OF_VARIANT &&
              Count_Days(1970, 1, 1) == DAY_OF_1970 && To_Week_Day(DAY_OF_1970) == 4);

/// A value of the variant form in whole seconds, rounded; the day is that of the variant form. False for a
/// value out of the range.
struct Variant_Moment
{
    int m_nDay;
    int m_nSecond;
};

inline bool Split_Variant(DATE value, Variant_Moment& moment)
{
    if (!(value > FIRST_VARIANT_DAY - 1.0 && value < LAST_VARIANT_DAY + 1.0))
        return false;
    const int day = static_cast<int>(value);
    const double fraction = value < 0.0 ? day - value : value - day;
    const int second = static_cast<int>(fraction * 86400.0 + 0.5);
    moment.m_nDay = day + second / 86400;
    moment.m_nSecond = second % 86400;
    return moment.m_nDay <= LAST_VARIANT_DAY;
}

constexpr DATE To_Variant(long long day, int second)
{
    const double fraction = second / 86400.0;
    return day < 0 ? static_cast<double>(day) - fraction : static_cast<double>(day) + fraction;
}

} // namespace qn_platform

#endif
