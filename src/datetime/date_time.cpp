#include "datetime/date_time.h"

#include "datetime/calendar.h"

using namespace qn_calendar;

namespace
{

constexpr double TOLERANCE = 2.220446049250313e-16;

int get_Seconds(double dtValue)
{
    Moment When;
    return Split(dtValue, When) ? When.m_nSeconds : 0;
}

} // namespace

Lib_DateTime::Lib_DateTime(int nYear, int nMonth, int nDay, int nHour, int nMinute, int nSecond)
{
    Lib_DateTime::Set_Date_Time(nYear, nMonth, nDay, nHour, nMinute, nSecond);
}

Lib_DateTime::Lib_DateTime(double dtValue, bool bLocal) : m_dtValue(bLocal ? to_System(dtValue) : dtValue) {}

Lib_DateTime::Lib_DateTime(long long nTime) { *this = nTime; }

const Lib_DateTime& Lib_DateTime::operator=(long long nTime)
{
    m_dtValue = 0.0;
    std::tm Fields{};
    if (_gmtime64_s(&Fields, &nTime) == 0)
    {
        Set_Date_Time(Fields.tm_year + 1900, Fields.tm_mon + 1, Fields.tm_mday, Fields.tm_hour, Fields.tm_min,
                      Fields.tm_sec);
    }
    return *this;
}

Lib_DateTime Lib_DateTime::Get_Current()
{
    SYSTEMTIME Now{};
    GetSystemTime(&Now);
    double dtValue = 0.0;
    return Lib_DateTime(SystemTimeToVariantTime(&Now, &dtValue) ? dtValue : 0.0, false);
}

int Lib_DateTime::Get_Year() const
{
    Moment When;
    return Split(m_dtValue, When) ? Find_Year(When.m_nDay).m_nYear : 0;
}

int Lib_DateTime::Get_Month() const
{
    Moment When;
    return Split(m_dtValue, When) ? Find_Month(Find_Year(When.m_nDay)).m_nMonth : 0;
}

int Lib_DateTime::Get_Day() const
{
    Moment When;
    return Split(m_dtValue, When) ? Find_Month(Find_Year(When.m_nDay)).m_nDay : 0;
}

int Lib_DateTime::Get_Hour() const { return get_Seconds(m_dtValue) / 3600; }

int Lib_DateTime::Get_Minute() const { return get_Seconds(m_dtValue) / 60 % 60; }

int Lib_DateTime::Get_Second() const { return get_Seconds(m_dtValue) % 60; }

int Lib_DateTime::Get_Day_Of_Week() const
{
    Moment When;
    return Split(m_dtValue, When) ? Get_Week_Day(When.m_nDay) : 0;
}

int Lib_DateTime::Get_Day_Of_Year() const
{
    Moment When;
    return Split(m_dtValue, When) ? Find_Year(When.m_nDay).m_nDay + 1 : 0;
}

int Lib_DateTime::Get_Total_Seconds() const { return (Get_Hour() * 60 + Get_Minute()) * 60 + Get_Second(); }

Lib_DateTime::operator double() const { return m_dtValue; }

bool Lib_DateTime::Set_Date_Time(int nYear, int nMonth, int nDay, int nHour, int nMinute, int nSecond)
{
    if (!Has_Day(nYear, nMonth, nDay) || nHour > 23 || nMinute > 59 || nSecond > 59)
        return false;
    const long long nValue = Get_Day_Value(nYear, nMonth, nDay);
    const long long nSeconds = (nHour * 60LL + nMinute) * 60 + nSecond;
    const double dFraction = static_cast<double>(nSeconds) / SECONDS_A_DAY;
    m_dtValue = static_cast<double>(nValue) + (nValue < 0 ? -dFraction : dFraction);
    return true;
}

bool Lib_DateTime::Set_Date(int nYear, int nMonth, int nDay)
{
    return Set_Date_Time(nYear, nMonth, nDay, 0, 0, 0);
}

bool Lib_DateTime::Set_Time(int nHour, int nMinute, int nSecond)
{
    return Set_Date_Time(1899, 12, 30, nHour, nMinute, nSecond);
}

bool Lib_DateTime::To_tm(std::tm& Fields) const
{
    Moment When;
    if (!Split(m_dtValue, When))
        return false;
    const Day_Of_Year Place = Find_Year(When.m_nDay);
    const Day_Of_Month Day = Find_Month(Place);
    Fields.tm_sec = When.m_nSeconds % 60;
    Fields.tm_min = When.m_nSeconds / 60 % 60;
    Fields.tm_hour = When.m_nSeconds / 3600;
    Fields.tm_mday = Day.m_nDay;
    Fields.tm_mon = Day.m_nMonth - 1;
    Fields.tm_year = Place.m_nYear - 1900;
    Fields.tm_wday = Get_Week_Day(When.m_nDay) - 1;
    Fields.tm_yday = Place.m_nDay;
    return true;
}

bool Lib_DateTime::operator==(const Lib_DateTime& other) const
{
    return std::fabs(m_dtValue - other.m_dtValue) < TOLERANCE;
}
