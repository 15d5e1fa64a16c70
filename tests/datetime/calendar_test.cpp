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
        switch (m_nMonth)
        {
        case 2:
            return Is_Leap(m_nYear) ? 29 : 28;
        case 4:
        case 6:
        case 9:
        case 11:
            return 30;
        default:
            return 31;
        }
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

bool has_Date(const Lib_DateTime& When, const Walking_Calendar& Day)
{
    return When.Get_Year() == Day.m_nYear && When.Get_Month() == Day.m_nMonth &&
           When.Get_Day() == Day.m_nDay && When.Get_Day_Of_Week() == Day.m_nWeek_Day &&
           When.Get_Day_Of_Year() == Day.m_nYear_Day;
}

bool has_Time(const Lib_DateTime& When, const Clock& Time)
{
    return When.Get_Hour() == Time.m_nHour && When.Get_Minute() == Time.m_nMinute &&
           When.Get_Second() == Time.m_nSecond;
}

bool has_Fields(const Lib_DateTime& When, const Walking_Calendar& Day, const Clock& Time)
{
    std::tm Fields{};
    return When.To_tm(Fields) && Fields.tm_year == Day.m_nYear - 1900 && Fields.tm_mon == Day.m_nMonth - 1 &&
           Fields.tm_mday == Day.m_nDay && Fields.tm_wday == Day.m_nWeek_Day - 1 &&
           Fields.tm_yday == Day.m_nYear_Day - 1 && Fields.tm_hour == Time.m_nHour &&
           Fields.tm_min == Time.m_nMinute && Fields.tm_sec == Time.m_nSecond;
}

void expect_Zero(double dtValue)
{
    SCOPED_TRACE(dtValue);
    const Lib_DateTime When(dtValue, false);
    EXPECT_EQ(0, When.Get_Year());
    EXPECT_EQ(0, When.Get_Month());
    EXPECT_EQ(0, When.Get_Day());
    EXPECT_EQ(0, When.Get_Hour());
    EXPECT_EQ(0, When.Get_Minute());
    EXPECT_EQ(0, When.Get_Second());
    EXPECT_EQ(0, When.Get_Day_Of_Week());
    EXPECT_EQ(0, When.Get_Day_Of_Year());
    EXPECT_EQ(0, When.Get_Total_Seconds());
    std::tm Fields{};
    Fields.tm_year = 77;
    EXPECT_FALSE(When.To_tm(Fields));
    EXPECT_EQ(77, Fields.tm_year);
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
            ASSERT_EQ(bReadable, has_Fields(When, Day, Time))
                << Day.m_nYear << '-' << Day.m_nMonth << '-' << Day.m_nDay << ' ' << Time.m_nHour << ':'
                << Time.m_nMinute << ':' << Time.m_nSecond << ", value " << dtExpected;
        }
        const Lib_DateTime Midnight(Day.m_dtValue, false);
        ASSERT_TRUE(has_Date(Midnight, Day)) << Day.m_nYear << '-' << Day.m_nMonth << '-' << Day.m_nDay;
        const Lib_DateTime Missing(Day.m_nYear, Day.m_nMonth, Day.Month_Length() + 1, 0, 0, 0);
        ASSERT_EQ(0.0, static_cast<double>(Missing)) << "a day behind the month " << Day.m_nMonth;
    }
}

TEST(Calendar, Reads_Every_Second_Of_Days_On_Both_Sides_Of_Zero)
{
    for (const double dDay : {-657433.0, -1.0, 0.0, 36526.0, 2958464.0})
    {
        for (int nSecond = 0; nSecond < 86400; ++nSecond)
        {
            const Clock Time{nSecond / 3600, nSecond / 60 % 60, nSecond % 60};
            const Lib_DateTime When(join(dDay, Time), false);
            ASSERT_TRUE(has_Time(When, Time)) << dDay << ", second " << nSecond;
            ASSERT_EQ(nSecond, When.Get_Total_Seconds());
        }
    }
}

TEST(Calendar, Rounds_To_The_Second_Before_It_Takes_The_Day)
{
    const Lib_DateTime Late(0.99999999, false);
    EXPECT_EQ(31, Late.Get_Day());
    EXPECT_EQ(0, Late.Get_Total_Seconds());
    EXPECT_EQ(43200, Lib_DateTime(0.5 + 0.4 / 86400, false).Get_Total_Seconds());
    EXPECT_EQ(43201, Lib_DateTime(0.5 + 0.6 / 86400, false).Get_Total_Seconds());
    EXPECT_EQ(43201, Lib_DateTime(-0.5 - 0.6 / 86400, false).Get_Total_Seconds());
    // Away from zero is backwards in time by the day, forwards by the time of it.
    const Lib_DateTime Carried(-1.99999999, false);
    EXPECT_EQ(28, Carried.Get_Day());
    EXPECT_EQ(0, Carried.Get_Total_Seconds());
}

TEST(Calendar, Gives_Zero_For_What_Cannot_Be_Read)
{
    const double dInfinite = std::numeric_limits<double>::infinity();
    for (const double dtValue : {2958465.5, 2958466.0, -657434.25, -657435.0, 1e300, -1e300, dInfinite,
                                 -dInfinite, std::numeric_limits<double>::quiet_NaN(),
                                 std::nextafter(2958465.0, 1e9), std::nextafter(-657434.0, -1e9)})
        expect_Zero(dtValue);
}

TEST(Calendar, Knows_The_Days_Around_Its_Zero)
{
    const struct
    {
        double m_dtValue;
        int m_nYear, m_nMonth, m_nDay, m_nWeek_Day, m_nYear_Day;
    } Days[] = {
        {0.0, 1899, 12, 30, 7, 364},   {-0.5, 1899, 12, 30, 7, 364},      {1.0, 1899, 12, 31, 1, 365},
        {-1.25, 1899, 12, 29, 6, 363}, {2.0, 1900, 1, 1, 2, 1},           {60.0, 1900, 2, 28, 4, 59},
        {61.0, 1900, 3, 1, 5, 60},     {25569.0, 1970, 1, 1, 5, 1},       {36526.0, 2000, 1, 1, 7, 1},
        {36585.0, 2000, 2, 29, 3, 60}, {2958465.0, 9999, 12, 31, 6, 365}, {-657434.0, 100, 1, 1, 6, 1}};
    for (const auto& Day : Days)
    {
        const Lib_DateTime When(Day.m_dtValue, false);
        EXPECT_EQ(Day.m_nYear, When.Get_Year()) << Day.m_dtValue;
        EXPECT_EQ(Day.m_nMonth, When.Get_Month()) << Day.m_dtValue;
        EXPECT_EQ(Day.m_nDay, When.Get_Day()) << Day.m_dtValue;
        EXPECT_EQ(Day.m_nWeek_Day, When.Get_Day_Of_Week()) << Day.m_dtValue;
        EXPECT_EQ(Day.m_nYear_Day, When.Get_Day_Of_Year()) << Day.m_dtValue;
    }
}
