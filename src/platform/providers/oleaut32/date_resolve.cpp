#include "platform/providers/oleaut32/date_reader.h"
#include "platform/time/civil.h"

#include <time.h>

namespace qn_oleaut32
{

namespace
{

using namespace qn_platform;

int get_Current_Year()
{
    const time_t now = ::time(nullptr);
    std::tm local{};
    ::tzset(); // the process may have changed its zone
    return ::localtime_r(&now, &local) != nullptr ? local.tm_year + 1900 : 1970;
}

/// Years of two digits mean those from 1950 to 2049. 0 for what is no year.
int to_Year(const Date_Number& number)
{
    if (number.m_nValue >= 100)
        return number.m_nValue <= 9999 ? number.m_nValue : 0;
    return number.m_nValue < 50 ? number.m_nValue + 2000 : number.m_nValue + 1900;
}

bool set_Day(int year, int month, int day, int& result)
{
    if (year == 0 || month < 1 || month > 12 || day < 1 || day > Days_Of_Month(year, month))
        return false;
    result = static_cast<int>(Count_Days(year, month, day) - DAY_OF_VARIANT);
    return true;
}

/// Tries numbers in one order; month and day have two digits at most.
bool try_Order(const Date_Number& year, const Date_Number& month, const Date_Number& day, int& result)
{
    return month.m_nDigits <= 2 && day.m_nDigits <= 2 &&
           set_Day(to_Year(year), month.m_nValue, day.m_nValue, result);
}

bool try_Order(int year, const Date_Number& month, const Date_Number& day, int& result)
{
    return try_Order(Date_Number{year, 4}, month, day, result);
}

/// The first day of a month.
bool try_Month(const Date_Number& year, const Date_Number& month, int& result)
{
    return month.m_nDigits <= 2 && set_Day(to_Year(year), month.m_nValue, 1, result);
}

bool resolve_Three(const Date_Parts& parts, Date_Order order, int& day)
{
    const auto& [first, second, third] = parts.m_Numbers;
    const bool own = order == Date_Order::month_day_year   ? try_Order(third, first, second, day)
                     : order == Date_Order::day_month_year ? try_Order(third, second, first, day)
                                                           : try_Order(first, second, third, day);
    const bool year_first = first.m_nDigits > 2 || first.m_nValue > 31;
    if (own)
        return true;
    if (order == Date_Order::year_month_day)
    {
        return try_Order(third, first, second, day) || try_Order(third, second, first, day) ||
               (year_first && try_Order(first, third, second, day));
    }
    return try_Order(first, second, third, day) || try_Order(third, first, second, day) ||
           try_Order(third, second, first, day) || (year_first && try_Order(first, third, second, day));
}

bool resolve_Two(const Date_Parts& parts, Date_Order order, int& day)
{
    const auto& first = parts.m_Numbers[0];
    const auto& second = parts.m_Numbers[1];
    const int year = get_Current_Year();
    const bool day_first = order == Date_Order::day_month_year;
    return try_Order(year, day_first ? second : first, day_first ? first : second, day) ||
           try_Order(year, day_first ? first : second, day_first ? second : first, day) ||
           try_Month(second, first, day) || try_Month(first, second, day);
}

/// One or two numbers beside the name of a month.
bool resolve_With_Name(const Date_Parts& parts, Date_Order order, int& day)
{
    const Date_Number month{parts.m_nMonth, 1};
    const auto& first = parts.m_Numbers[0];
    const auto& second = parts.m_Numbers[1];
    if (parts.m_nCount == 1)
        return try_Order(get_Current_Year(), month, first, day) || try_Month(first, month, day);
    const bool year_first = order == Date_Order::year_month_day;
    return try_Order(year_first ? first : second, month, year_first ? second : first, day) ||
           try_Order(year_first ? second : first, month, year_first ? first : second, day);
}

} // namespace

bool Resolve_Date(const Date_Parts& parts, Date_Order order, int& day)
{
    if (parts.m_nMonth != 0)
        return (parts.m_nCount == 1 || parts.m_nCount == 2) && resolve_With_Name(parts, order, day);
    if (parts.m_nCount == 2)
        return resolve_Two(parts, order, day);
    return parts.m_nCount == 3 && resolve_Three(parts, order, day);
}

} // namespace qn_oleaut32
