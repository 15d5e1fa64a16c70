// Local time in zones of every kind, each in a child process of its own, since a process has one zone.

#include "lib_datetime.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <string>

namespace
{

constexpr double JANUARY = 38001.5; // 15 January 2004, noon
constexpr double JULY = 38183.5;    // 15 July 2004, noon

/// A zone an hour ahead of UTC whose summer time, another hour, lasts for ten days around today or
/// never comes near it.
std::string make_Zone(bool bSummer_Now)
{
    const int nToday = Lib_DateTime::Get_Current().Get_Day_Of_Year();
    const int nMiddle = bSummer_Now ? nToday : (nToday + 182) % 365;
    const auto day = [nMiddle](int nShift) { return std::to_string((nMiddle + nShift + 365) % 365); };
    return "ONE-1TWO-2," + day(-5) + "," + day(5);
}

/// Ends the child: 0 when local times of both dates are ahead by so many hours and come back.
[[noreturn]] void check_Zone(const std::string& strZone, double dHours)
{
    setenv("TZ", strZone.c_str(), 1);
    for (const double dtValue : {JANUARY, JULY})
    {
        const Lib_DateTime When(dtValue, false);
        const double dtLocal = When.Get_Local();
        const double dtBack = Lib_DateTime(dtLocal, true);
        const double dtSystem = Lib_DateTime(dtLocal, false).Get_System();
        if (std::fabs(dtLocal - dtValue - dHours / 24) > 1e-9 || std::fabs(dtBack - dtValue) > 1e-9 ||
            std::fabs(dtSystem - dtValue) > 1e-9)
        {
            std::fprintf(stderr, "%s: %f is %f\n", strZone.c_str(), dtValue, dtLocal);
            std::_Exit(1);
        }
    }
    std::_Exit(0);
}

[[noreturn]] void check_Change()
{
    // A process that changes its zone sees the new one.
    setenv("TZ", "ONE-1", 1);
    const Lib_String strFirst = Lib_DateTime(JANUARY, false).Format(0, 0x41D, true);
    setenv("TZ", "TWO-2", 1);
    const Lib_String strSecond = Lib_DateTime(JANUARY, false).Format(0, 0x41D, true);
    std::_Exit(strFirst == L"2004-01-15 13:00:00" && strSecond == L"2004-01-15 14:00:00" ? 0 : 1);
}

/// Zones at the ends of the platform's range, where a conversion must fail and give 0.0.
[[noreturn]] void check_Ends()
{
    setenv("TZ", "WEST5", 1);
    const double dtFirst = Lib_DateTime(1601, 1, 1, 0, 0, 0);
    const bool bFirst = static_cast<double>(Lib_DateTime(dtFirst, false).Get_Local()) == 0.0;
    const bool bLast = static_cast<double>(Lib_DateTime(9999, 12, 31, 23, 0, 0).Get_System()) == 0.0;
    std::_Exit(bFirst && bLast ? 0 : 1);
}

class Zones : public testing::Test
{
protected:
    void SetUp() override { GTEST_FLAG_SET(death_test_style, "threadsafe"); }
};

using testing::ExitedWithCode;

} // namespace

TEST_F(Zones, Without_Summer_Time_Are_Ahead_By_One_Bias)
{
    EXPECT_EXIT(check_Zone("EAST-5:30", 5.5), ExitedWithCode(0), "");
    EXPECT_EXIT(check_Zone("WEST12", -12), ExitedWithCode(0), "");
}

TEST_F(Zones, With_Summer_Time_Are_Ahead_By_The_Bias_Of_Today)
{
    EXPECT_EXIT(check_Zone(make_Zone(true), 2), ExitedWithCode(0), "") << "for dates of winter too";
    EXPECT_EXIT(check_Zone(make_Zone(false), 1), ExitedWithCode(0), "") << "for dates of summer too";
}

TEST_F(Zones, Are_Those_Of_The_Moment)
{
    EXPECT_EXIT(check_Change(), ExitedWithCode(0), "");
    EXPECT_EXIT(check_Ends(), ExitedWithCode(0), "");
}
