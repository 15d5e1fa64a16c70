// The platform's forms of a time, as far as both targets agree.

#include "lib_platform.h"
#include "test_text.h"

#include <climits>
#include <limits>

using test_support::Windows_Target;

namespace
{

SYSTEMTIME make_Fields(int nYear, int nMonth, int nDay, int nHour = 0, int nMinute = 0, int nSecond = 0,
                       int nMilliseconds = 0)
{
    SYSTEMTIME Time{};
    Time.wYear = static_cast<WORD>(nYear);
    Time.wMonth = static_cast<WORD>(nMonth);
    Time.wDay = static_cast<WORD>(nDay);
    Time.wHour = static_cast<WORD>(nHour);
    Time.wMinute = static_cast<WORD>(nMinute);
    Time.wSecond = static_cast<WORD>(nSecond);
    Time.wMilliseconds = static_cast<WORD>(nMilliseconds);
    Time.wDayOfWeek = 99; // nothing looks at it
    return Time;
}

unsigned long long join(const FILETIME& Time)
{
    return static_cast<unsigned long long>(Time.dwHighDateTime) << 32 | Time.dwLowDateTime;
}

FILETIME split(unsigned long long nUnits)
{
    return {static_cast<DWORD>(nUnits), static_cast<DWORD>(nUnits >> 32)};
}

bool operator==(const SYSTEMTIME& Left, const SYSTEMTIME& Right)
{
    return Left.wYear == Right.wYear && Left.wMonth == Right.wMonth && Left.wDay == Right.wDay &&
           Left.wHour == Right.wHour && Left.wMinute == Right.wMinute && Left.wSecond == Right.wSecond &&
           Left.wMilliseconds == Right.wMilliseconds;
}

double to_Variant(SYSTEMTIME Time)
{
    double dtValue = -77.0;
    EXPECT_EQ(TRUE, SystemTimeToVariantTime(&Time, &dtValue));
    return dtValue;
}

} // namespace

TEST(Platform_Time, Turns_Fields_Into_File_Time_And_Back)
{
    const struct
    {
        SYSTEMTIME m_Fields;
        unsigned long long m_nUnits;
        int m_nWeek_Day;
    } Times[] = {{make_Fields(1601, 1, 1), 0, 1},
                 {make_Fields(2000, 2, 29, 23, 59, 59, 999), 125963423999990000ULL, 2},
                 {make_Fields(30827, 12, 31, 23, 59, 59, 999), 0x7FFF35F4F06C58F0ULL, 5}};
    for (const auto& Time : Times)
    {
        FILETIME Units{};
        ASSERT_TRUE(SystemTimeToFileTime(&Time.m_Fields, &Units)) << Time.m_nUnits;
        EXPECT_EQ(Time.m_nUnits, join(Units));
        SYSTEMTIME Back{};
        ASSERT_TRUE(FileTimeToSystemTime(&Units, &Back));
        EXPECT_TRUE(Time.m_Fields == Back) << Time.m_nUnits;
        EXPECT_EQ(Time.m_nWeek_Day, Back.wDayOfWeek);
    }
}

TEST(Platform_Time, Refuses_Fields_That_Are_No_Date_Or_Time)
{
    for (const SYSTEMTIME& Time :
         {make_Fields(1600, 12, 31), make_Fields(30829, 1, 1), make_Fields(2000, 0, 1),
          make_Fields(2000, 13, 1), make_Fields(2000, 1, 0), make_Fields(1900, 2, 29),
          make_Fields(2000, 1, 1, 24), make_Fields(2000, 1, 1, 0, 60), make_Fields(2000, 1, 1, 0, 0, 60),
          make_Fields(2000, 1, 1, 0, 0, 0, 1000)})
    {
        if (Windows_Target && (Time.wYear > 30827 || Time.wYear == 1900))
            continue; // Wine has no upper end, and gives 1900 a leap day
        FILETIME Units = split(7);
        SetLastError(0);
        EXPECT_FALSE(SystemTimeToFileTime(&Time, &Units))
            << Time.wYear << '-' << Time.wMonth << '-' << Time.wDay;
        EXPECT_EQ(87u, GetLastError());
        EXPECT_EQ(7u, join(Units));
    }
    const FILETIME High = split(0x8000000000000000ULL);
    SYSTEMTIME Fields{};
    SetLastError(0);
    EXPECT_FALSE(FileTimeToSystemTime(&High, &Fields));
    EXPECT_EQ(87u, GetLastError());
    const FILETIME Highest = split(0x7FFFFFFFFFFFFFFFULL);
    EXPECT_TRUE(FileTimeToSystemTime(&Highest, &Fields));
    EXPECT_EQ(30828, Fields.wYear);
}

TEST(Platform_Time, Rounds_The_Variant_Form_To_Seconds)
{
    const struct
    {
        double m_dtValue;
        SYSTEMTIME m_Fields;
    } Times[] = {{0.0, make_Fields(1899, 12, 30)},
                 {-1.25, make_Fields(1899, 12, 29, 6)},
                 {0.5 + 0.4 / 86400, make_Fields(1899, 12, 30, 12)},
                 {0.5 + 0.5 / 86400, make_Fields(1899, 12, 30, 12, 0, 1)},
                 {0.99999999, make_Fields(1899, 12, 31)},
                 {-1.999999999, make_Fields(1899, 12, 30)},
                 {-657434.99999, make_Fields(100, 1, 1, 23, 59, 59)},
                 {2958465.99999, make_Fields(9999, 12, 31, 23, 59, 59)}};
    for (const auto& Time : Times)
    {
        SYSTEMTIME Fields{};
        ASSERT_TRUE(VariantTimeToSystemTime(Time.m_dtValue, &Fields));
        EXPECT_TRUE(Time.m_Fields == Fields) << Time.m_dtValue;
    }
    SYSTEMTIME Fields = make_Fields(7, 7, 7);
    for (const double dtValue : {-657435.0, 2958466.0, 1e300, -1e300})
        EXPECT_FALSE(VariantTimeToSystemTime(dtValue, &Fields)) << dtValue;
    EXPECT_EQ(7, Fields.wYear);
}

TEST(Platform_Time, Refuses_What_Is_Rounded_Out_Of_Range)
{
    if (Windows_Target)
        GTEST_SKIP() << "Wine looks before the rounding";
    SYSTEMTIME Fields{};
    EXPECT_FALSE(VariantTimeToSystemTime(2958465.999999, &Fields)) << "the year 10000";
    ASSERT_TRUE(VariantTimeToSystemTime(0.99999999, &Fields));
    EXPECT_EQ(0, Fields.wDayOfWeek) << "that of the rounded day";
}

TEST(Platform_Time, Refuses_What_Is_No_Number)
{
    if (Windows_Target)
        GTEST_SKIP() << "Wine compares with the ends of the range, which lets it through as the year 0";
    SYSTEMTIME Fields = make_Fields(7, 7, 7);
    EXPECT_FALSE(VariantTimeToSystemTime(std::numeric_limits<double>::quiet_NaN(), &Fields));
    EXPECT_EQ(7, Fields.wYear);
}

TEST(Platform_Time, Turns_Fields_Into_The_Variant_Form)
{
    EXPECT_DOUBLE_EQ(36526.0 + 86399 / 86400.0, to_Variant(make_Fields(2000, 1, 1, 23, 59, 59, 999)));
    EXPECT_EQ(-1.25, to_Variant(make_Fields(1899, 12, 29, 6)));
    EXPECT_EQ(to_Variant(make_Fields(2049, 1, 1)), to_Variant(make_Fields(49, 1, 1)));
    EXPECT_EQ(to_Variant(make_Fields(1950, 1, 1)), to_Variant(make_Fields(50, 1, 1)));
    EXPECT_EQ(to_Variant(make_Fields(1999, 12, 1)), to_Variant(make_Fields(2000, 0, 1)));
    EXPECT_EQ(to_Variant(make_Fields(2000, 3, 1)), to_Variant(make_Fields(2000, 2, 30)));
    double dtValue = 7.0;
    for (SYSTEMTIME Time : {make_Fields(10000, 1, 1), make_Fields(2000, 13, 1), make_Fields(2000, 1, 32)})
        EXPECT_FALSE(SystemTimeToVariantTime(&Time, &dtValue)) << Time.wYear << '-' << Time.wMonth;
    EXPECT_EQ(7.0, dtValue);
}

TEST(Platform_Time, Breaks_Down_No_Seconds_Out_Of_Range)
{
    for (const long long nRefused : {-43201LL, 32536846800LL, LLONG_MIN})
    {
        std::tm Fields{};
        EXPECT_EQ(22, _gmtime64_s(&Fields, &nRefused)) << nRefused;
        EXPECT_EQ(-1, Fields.tm_year);
        EXPECT_EQ(-1, Fields.tm_isdst);
    }
}
