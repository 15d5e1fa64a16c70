#ifndef QNLIB_SRC_DATETIME_CALENDAR_H
#define QNLIB_SRC_DATETIME_CALENDAR_H

#include <cmath>

// The calendar behind Lib_DateTime: integer steps from a value to its fields and back. Days are counted from
// 1 January of the year 0 in the Gregorian calendar carried on backwards: 30 December 1899 is day 693959.

namespace qn_calendar
{

inline constexpr double LOWEST_VALUE = -657434.0;  ///< 1 January 100
inline constexpr double HIGHEST_VALUE = 2958465.0; ///< 31 December 9999
inline constexpr double HALF_SECOND = 1.0 / 172800.0;
inline constexpr double SECONDS_A_DAY = 86400.0;
inline constexpr int DAY_OF_ZERO = 693959;

/// Days before each month of a year without a leap day: month m has entries m - 1 and m.
inline constexpr int DAYS_BEFORE[] = {0, 31, 59, 90, 120, 151, 181, 212, 243, 273, 304, 334, 365};

/// A value in whole seconds.
struct Moment
{
    int m_nDay;
    int m_nSeconds;
};

/// A day by its year: `m_nDay` counts from 0.
struct Day_Of_Year
{
    int m_nYear;
    int m_nDay;
    bool m_bLeap_Year;
};

struct Day_Of_Month
{
    int m_nMonth;
    int m_nDay;
};

/// Rounds to the second before the day is taken. False for a value out of range, NaN included.
inline bool Split(double dtValue, Moment& Result)
{
    if (!(dtValue <= HIGHEST_VALUE && dtValue >= LOWEST_VALUE))
        return false;
    const double dRounded = dtValue > 0.0 ? dtValue + HALF_SECOND : dtValue - HALF_SECOND;
    const int nWhole = static_cast<int>(dRounded);
    Result.m_nDay = nWhole + DAY_OF_ZERO;
    Result.m_nSeconds = static_cast<int>(std::fabs(dRounded - nWhole) * SECONDS_A_DAY);
    return true;
}

/// 1 to 7, from Sunday.
inline int Get_Week_Day(int nDay) { return (nDay - 1) % 7 + 1; }

inline Day_Of_Year Find_Year(int nDay)
{
    const int nBlocks = nDay / 146097;
    nDay %= 146097;
    bool bLeap_Day = true; // in the block of four years
    int nFours = 0;
    const int nCentury = (nDay - 1) / 36524;
    if (nCentury != 0)
    {
        // The first four years of such a century have no leap day.
        nDay = (nDay - 1) % 36524;
        nFours = (nDay + 1) / 1461;
        if (nFours != 0)
            nDay = (nDay + 1) % 1461;
        else
            bLeap_Day = false;
    }
    else
    {
        nFours = nDay / 1461;
        nDay %= 1461;
    }
    const int nFirst = bLeap_Day ? 1 : 0; // the leap day lies in the first year
    const int nYear = (nDay - nFirst) / 365;
    if (nYear != 0)
        nDay = (nDay - nFirst) % 365;
    return {nBlocks * 400 + nCentury * 100 + nFours * 4 + nYear, nDay, nYear == 0 && bLeap_Day};
}

inline Day_Of_Month Find_Month(const Day_Of_Year& Place)
{
    int nDay = Place.m_nDay;
    if (Place.m_bLeap_Year)
    {
        if (nDay == 59)
            return {2, 29};
        if (nDay >= 60)
            --nDay;
    }
    ++nDay;
    int nMonth = nDay / 32 + 1;
    while (nDay > DAYS_BEFORE[nMonth])
        ++nMonth;
    return {nMonth, nDay - DAYS_BEFORE[nMonth - 1]};
}

constexpr bool Is_Leap_Year(int nYear) { return nYear % 4 == 0 && (nYear % 100 != 0 || nYear % 400 == 0); }

constexpr bool Has_Day(int nYear, int nMonth, int nDay)
{
    if (nYear > 9999 || nMonth < 1 || nMonth > 12 || nDay < 1)
        return false;
    const int nLength = DAYS_BEFORE[nMonth] - DAYS_BEFORE[nMonth - 1];
    return nDay <= nLength || (nDay == 29 && nMonth == 2 && Is_Leap_Year(nYear));
}

/// The value of a day that there is. Years may be negative without limit, hence the 64 bits.
constexpr long long Get_Day_Value(int nYear, int nMonth, int nDay)
{
    const long long nLong_Year = nYear;
    const long long nDays = nLong_Year * 365 + nLong_Year / 4 - nLong_Year / 100 + nLong_Year / 400 +
                            DAYS_BEFORE[nMonth - 1] + nDay;
    return nDays - (nMonth <= 2 && Is_Leap_Year(nYear) ? 1 : 0) - DAY_OF_ZERO;
}

} // namespace qn_calendar

#endif
