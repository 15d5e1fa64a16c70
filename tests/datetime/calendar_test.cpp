// The calendar of Lib_DateTime against one that counts day by day.

#include "lib_datetime.h"
#include "test_text.h"

#include <cmath>
#include <limits>

namespace
{

/// A day and the one after it, by nothing but the lengths of months.
struct Walking_Calendar
{
    int m_nYear = 100;
    int m_nMonth = 1;
    int m_nDay = 1;
    int m_nYear_Day = 1;
    int m_nWeek_Day = 6; ///< 1 January 100 was a Friday
    double m_dtValue = -657434.0;

    static bool Is_Leap(int nYear)
    {
        if (nYear % 400 == 0)
            return true;
        return nYear % 100 != 0 && nYear % 4 == 0;
    }

    int Month_Length() const
    {
        constexpr int Lengths[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
        return Lengths[m_nMonth - 1] + (m_nMonth == 2 && Is_Leap(m_nYear) ? 1 : 0);
    }

    void Step()
    {
        m_dtValue += 1.0;
        ++m_nYear_Day;
        m_nWeek_Day = m_nWeek_Day == 7 ? 1 : m_nWeek_Day + 1;
        if (++m_nDay <= Month_Length())
            return;
        m_nDay = 1;
        if (++m_nMonth <= 12)
            return;
        m_nMonth = 1;
        m_nYear_Day = 1;
        ++m_nYear;
    }
};

struct Clock
{
    int m_nHour;
    int m_nMinute;
    int m_nSecond;
};

double join(double dDay, const Clock& Time)
{
    const double dFraction = (Time.m_nHour * 3600 + Time.m_nMinute * 60 + Time.m_nSecond) / 86400.0;
    return dDay < 0 ? dDay - dFraction : dDay + dFraction;
}

/// Whether all that can be read agrees.
bool has_Fields(const Lib_DateTime& When, const Walking_Calendar& Day, const Clock& Time)
{
    std::tm Fields{};
    return When.To_tm(Fields) && Fields.tm_year == Day.m_nYear - 1900 && Fields.tm_mon == Day.m_nMonth - 1 &&
           Fields.tm_mday == Day.m_nDay && Fields.tm_wday == Day.m_nWeek_Day - 1 &&
           Fields.tm_yday == Day.m_nYear_Day - 1 && Fields.tm_hour == Time.m_nHour &&
           Fields.tm_min == Time.m_nMinute && Fields.tm_sec == Time.m_nSecond;
}

bool has_Getters(const Lib_DateTime& When, const Walking_Calendar& Day, const Clock& Time)
{
    return When.Get_Year() == Day.m_nYear && When.Get_Month() == Day.m_nMonth &&
           When.Get_Day() == Day.m_nDay && When.Get_Day_Of_Week() == Day.m_nWeek_Day &&
           When.Get_Day_Of_Year() == Day.m_nYear_Day && When.Get_Hour() == Time.m_nHour &&
           When.Get_Minute() == Time.m_nMinute && When.Get_Second() == Time.m_nSecond;
}

} // namespace

TEST(Calendar, Reads_And_Sets_Every_Day)
{
    const Clock Times[] = {{0, 0, 0}, {0, 0, 1}, {5, 59, 59}, {12, 0, 0}, {18, 3, 9}, {23, 59, 59}};
    for (Walking_Calendar Day; Day.m_nYear <= 9999; Day.Step())
    {
        for (const Clock& Time : Times)
        {
            const double dtExpected = join(Day.m_dtValue, Time);
            Lib_DateTime When;
            ASSERT_TRUE(When.Set_Date_Time(Day.m_nYear, Day.m_nMonth, Day.m_nDay, Time.m_nHour,
                                           Time.m_nMinute, Time.m_nSecond));
            ASSERT_EQ(dtExpected, static_cast<double>(When));
            const bool bReadable = dtExpected >= -657434.0 && dtExpected <= 2958465.0;
            ASSERT_EQ(bReadable, has_Fields(When, Day, Time)) << dtExpected;
        }
        ASSERT_TRUE(has_Getters(Lib_DateTime(Day.m_dtValue, false), Day, {0, 0, 0})) << Day.m_dtValue;
        const Lib_DateTime Missing(Day.m_nYear, Day.m_nMonth, Day.Month_Length() + 1, 0, 0, 0);
        ASSERT_EQ(0.0, static_cast<double>(Missing)) << "a day behind the month " << Day.m_nMonth;
    }
}

TEST(Calendar, Reads_Every_Second_Of_Days_On_Both_Sides_Of_Zero)
{
    for (const double dDay : {-657433.0, -1.0, 36526.0, 2958464.0})
        for (int nSecond = 0; nSecond < 86400; ++nSecond)
        {
            const Lib_DateTime When(join(dDay, {nSecond / 3600, nSecond / 60 % 60, nSecond % 60}), false);
            ASSERT_EQ(nSecond, When.Get_Total_Seconds()) << dDay << ", second " << nSecond;
        }
}

TEST(Calendar, Rounds_To_The_Second_Before_It_Takes_The_Day)
{
    EXPECT_EQ(43200, Lib_DateTime(0.5 + 0.4 / 86400, false).Get_Total_Seconds());
    EXPECT_EQ(43201, Lib_DateTime(-0.5 - 0.6 / 86400, false).Get_Total_Seconds());
    // Away from zero is backwards in time by the day, forwards by the time of it.
    for (const auto& [dtValue, nDay] : {std::pair(0.99999999, 31), std::pair(-1.99999999, 28)})
    {
        const Lib_DateTime Carried(dtValue, false);
        EXPECT_EQ(nDay, Carried.Get_Day());
        EXPECT_EQ(0, Carried.Get_Total_Seconds());
    }
}

TEST(Calendar, Gives_Zero_For_What_Cannot_Be_Read)
{
    const double dInfinite = std::numeric_limits<double>::infinity();
    for (const double dtValue : {2958465.5, -657434.25, 1e300, -1e300, dInfinite, -dInfinite,
                                 std::numeric_limits<double>::quiet_NaN(), std::nextafter(2958465.0, 1e9),
                                 std::nextafter(-657434.0, -1e9)})
    {
        SCOPED_TRACE(dtValue);
        const Lib_DateTime When(dtValue, false);
        EXPECT_TRUE(has_Getters(When, {0, 0, 0, 0, 0, 0}, {0, 0, 0}));
        EXPECT_EQ(0, When.Get_Total_Seconds());
        std::tm Fields{};
        Fields.tm_year = 77;
        EXPECT_FALSE(When.To_tm(Fields));
        EXPECT_EQ(77, Fields.tm_year);
    }
}
