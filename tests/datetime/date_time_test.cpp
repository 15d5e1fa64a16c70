// Setting, converting and reckoning with Lib_DateTime.

#include "lib_datetime.h"
#include "test_text.h"

#include <climits>
#include <tuple>

namespace
{

double value(const Lib_DateTime& When) { return When; }

/// Tells which of its virtual operations the others go through.
class Derived_Date : public Lib_DateTime
{
public:
    using Lib_DateTime::Format;
    using Lib_DateTime::Lib_DateTime;

    int Get_Hour() const override { return 1; }
    int Get_Minute() const override { return 2; }
    int Get_Second() const override { return 3; }
    bool Set_Date_Time(int nYear, int nMonth, int nDay, int nHour, int nMinute, int nSecond) override
    {
        m_Fields = {nYear, nMonth, nDay, nHour, nMinute, nSecond};
        return false;
    }
    Lib_String Format(const wchar_t* pFormat, unsigned long nLocale) const override
    {
        EXPECT_EQ(0x400u, nLocale);
        return pFormat;
    }

    static double Get_Local_Value(double dtValue) { return to_Local(dtValue); }
    static double Get_System_Value(double dtValue) { return to_System(dtValue); }

    std::tuple<int, int, int, int, int, int> m_Fields;
};

long long join(const std::tm& Fields)
{
    const double dtValue = Lib_DateTime(Fields.tm_year + 1900, Fields.tm_mon + 1, Fields.tm_mday, 0, 0, 0);
    return static_cast<long long>(dtValue) * 86400 + Fields.tm_hour * 3600 + Fields.tm_min * 60 +
           Fields.tm_sec;
}

} // namespace

TEST(Date_Time, Keeps_Its_Value_When_Fields_Are_Refused)
{
    Lib_DateTime When(1.25, false);
    for (const auto& [nYear, nMonth, nDay] :
         {std::tuple(10000, 1, 1), std::tuple(INT_MAX, 1, 1), std::tuple(2000, 0, 1), std::tuple(2000, 13, 1),
          std::tuple(2000, INT_MIN, 1), std::tuple(2000, 1, 0), std::tuple(1900, 2, 29)})
    {
        EXPECT_FALSE(When.Set_Date(nYear, nMonth, nDay)) << nYear << '-' << nMonth << '-' << nDay;
        EXPECT_EQ(0.0, value(Lib_DateTime(nYear, nMonth, nDay, 0, 0, 0)));
    }
    EXPECT_FALSE(When.Set_Time(24, 0, 0));
    EXPECT_FALSE(When.Set_Time(0, 60, 0));
    EXPECT_FALSE(When.Set_Time(0, 0, 60));
    EXPECT_EQ(1.25, value(When));
    EXPECT_TRUE(When.Set_Time(1, 2, 3));
    EXPECT_EQ(3723 / 86400.0, value(When)) << "without the date";
}

TEST(Date_Time, Takes_Negative_Times_And_Early_Years_As_They_Are)
{
    Lib_DateTime When;
    EXPECT_TRUE(When.Set_Date_Time(2000, 1, 1, -1, 0, 0));
    EXPECT_EQ(36526.0 - 1 / 24.0, value(When));
    EXPECT_EQ(31, When.Get_Day());
    EXPECT_EQ(23, When.Get_Hour());
    EXPECT_TRUE(When.Set_Date_Time(1899, 12, 29, -6, 0, 0));
    EXPECT_EQ(-0.75, value(When)) << "the sign of the fraction follows the day";
    EXPECT_TRUE(When.Set_Date_Time(2000, 1, 1, INT_MIN, INT_MIN, INT_MIN));
    EXPECT_EQ(36526.0 + 3661.0 * INT_MIN / 86400.0, value(When));

    EXPECT_TRUE(When.Set_Date(99, 12, 31));
    EXPECT_EQ(-657435.0, value(When));
    EXPECT_EQ(0, When.Get_Year());
    EXPECT_TRUE(When.Set_Date(0, 1, 1));
    EXPECT_EQ(-693959.0, value(When));
    EXPECT_TRUE(When.Set_Date(-1, 3, 1));
    EXPECT_EQ(-365.0 + 59 + 1 - 693959, value(When)) << "divisions truncate towards zero";
    EXPECT_TRUE(When.Set_Date(INT_MIN, 1, 1));
    EXPECT_LT(value(When), -7e11);
}

TEST(Date_Time, Takes_Seconds_Since_1970)
{
    EXPECT_EQ(25569.0, value(Lib_DateTime(0LL)));
    EXPECT_EQ(36526.0 + 1 / 86400.0, value(Lib_DateTime::time_t_To_Lib_DateTime(946684801)));
    Lib_DateTime When;
    When = 32535215999LL;
    EXPECT_EQ(3000, When.Get_Year());
    EXPECT_EQ(86399, When.Get_Total_Seconds());
    for (const long long nRefused : {-43201LL, 32536846800LL, LLONG_MAX, LLONG_MIN})
    {
        When = 1LL;
        When = nRefused;
        EXPECT_EQ(0.0, value(When)) << nRefused;
        EXPECT_EQ(0.0, value(Lib_DateTime(nRefused)));
    }
    if (test_support::Windows_Target)
        GTEST_SKIP() << "Wine's runtime refuses negative times and ends with the year 3000";
    EXPECT_EQ(25568.5, value(Lib_DateTime(-43200LL)));
    const Lib_DateTime Last(32536846799LL);
    EXPECT_EQ(3001, Last.Get_Year());
    EXPECT_EQ(20 * 3600 + 59 * 60 + 59, Last.Get_Total_Seconds());
}

TEST(Date_Time, Tells_The_Current_Time_In_Whole_Seconds)
{
    const long long nBefore = std::time(nullptr);
    const Lib_DateTime Now = Lib_DateTime::Get_Current();
    const long long nAfter = std::time(nullptr);
    EXPECT_GE(value(Now), value(Lib_DateTime(nBefore - 1)));
    EXPECT_LE(value(Now), value(Lib_DateTime(nAfter + 1)));
}

TEST(Date_Time, Changes_Its_Left_Side_When_It_Reckons)
{
    Lib_DateTime When(10.5, false);
    const Lib_DateTime Span(0.25, false);
    EXPECT_EQ(&When, &(When + Span));
    When += Span;
    EXPECT_EQ(11.0, value(When));
    EXPECT_EQ(10.75, value(When - Span));
    EXPECT_EQ(10.75, value(When));
    EXPECT_EQ(&When, &(When -= Span));
    EXPECT_EQ(10.5, value(When));
}

TEST(Date_Time, Is_Equal_Within_A_Tolerance)
{
    const double dTolerance = 2.220446049250313e-16;
    EXPECT_TRUE(Lib_DateTime(0.0, false) == Lib_DateTime(dTolerance / 2, false));
    EXPECT_FALSE(Lib_DateTime(0.0, false) == Lib_DateTime(dTolerance, false));
    EXPECT_TRUE(Lib_DateTime(0.0, false) != Lib_DateTime(-dTolerance, false));
}

TEST(Date_Time, Is_Ahead_In_Local_Time_As_The_Runtime_Tells)
{
    const std::time_t nNow = std::time(nullptr);
    const double dAhead = static_cast<double>(join(*std::localtime(&nNow)) - join(*std::gmtime(&nNow)));
    for (const double dtValue : {38001.5, 38183.5, value(Lib_DateTime(nNow))})
    {
        const Lib_DateTime Local = Lib_DateTime(dtValue, false).Get_Local();
        EXPECT_NEAR(dAhead / 86400, value(Local) - dtValue, 1e-9);
        EXPECT_NEAR(dtValue, value(Local.Get_System()), 1e-9);
        EXPECT_EQ(value(Local), Derived_Date::Get_Local_Value(dtValue));
        EXPECT_EQ(value(Local.Get_System()), Derived_Date::Get_System_Value(Local));
        EXPECT_EQ(value(Local.Get_System()), value(Lib_DateTime(value(Local), true)));
    }
}

TEST(Date_Time, Goes_Through_What_A_Derived_Class_Overrides)
{
    Derived_Date When(1.5, false);
    EXPECT_FALSE(When.Set_Date(2004, 2, 29));
    EXPECT_EQ(std::tuple(2004, 2, 29, 0, 0, 0), When.m_Fields);
    EXPECT_FALSE(When.Set_Time(7, 8, 9));
    EXPECT_EQ(std::tuple(1899, 12, 30, 7, 8, 9), When.m_Fields);
    EXPECT_EQ(1.5, value(When));
    EXPECT_EQ(3723, When.Get_Total_Seconds());
    EXPECT_TEXT_EQ(L"%Y-%m-%d at %H:%M", When.Format(3u, nullptr));
}

TEST(Date_Time, Leaves_The_Mark_Of_Summer_Time_To_The_Caller)
{
    std::tm Fields{};
    Fields.tm_isdst = 7;
    EXPECT_TRUE(Lib_DateTime(1.5, false).To_tm(Fields));
    EXPECT_EQ(7, Fields.tm_isdst);
    EXPECT_EQ(12, Fields.tm_hour);
}

TEST(Date_Time, Casts_To_A_File_Time)
{
    const auto join = [](const FILETIME& Time)
    { return static_cast<unsigned long long>(Time.dwHighDateTime) << 32 | Time.dwLowDateTime; };
    EXPECT_EQ(10000000ULL, join(Lib_DateTime(1601, 1, 1, 0, 0, 1)));
    EXPECT_EQ(0ULL, join(Lib_DateTime(1600, 12, 31, 0, 0, 0))) << "before the form's first day";
    EXPECT_EQ(0ULL, join(Lib_DateTime(1e9, false)));
}
