#include "platform/modules.h"
#include "platform/time.h"
#include "platform/time/civil.h"

#include <time.h>

namespace qn_platform
{

namespace
{

constexpr long long UNITS_A_SECOND = 10'000'000;
constexpr long long UNITS_A_MILLISECOND = 10'000;

/// Writes the fields of a time, by days since 1 March of the year 0 and the milliseconds of the day.
void fill_Fields(long long days, long long milliseconds, SYSTEMTIME& time)
{
    const Civil_Date date = To_Civil(days);
    const auto seconds = static_cast<int>(milliseconds / 1000);
    time.wYear = static_cast<WORD>(date.m_nYear);
    time.wMonth = static_cast<WORD>(date.m_nMonth);
    time.wDayOfWeek = static_cast<WORD>(To_Week_Day(days));
    time.wDay = static_cast<WORD>(date.m_nDay);
    time.wHour = static_cast<WORD>(seconds / 3600);
    time.wMinute = static_cast<WORD>(seconds / 60 % 60);
    time.wSecond = static_cast<WORD>(seconds % 60);
    time.wMilliseconds = static_cast<WORD>(milliseconds % 1000);
}

bool is_Date_And_Time(const SYSTEMTIME& time)
{
    return time.wYear >= 1601 && time.wYear <= 30827 && time.wMonth >= 1 && time.wMonth <= 12 &&
           time.wDay >= 1 && time.wDay <= Days_Of_Month(time.wYear, time.wMonth) && time.wHour <= 23 &&
           time.wMinute <= 59 && time.wSecond <= 59 && time.wMilliseconds <= 999;
}

unsigned long long join(const FILETIME& time)
{
    return static_cast<unsigned long long>(time.dwHighDateTime) << 32 | time.dwLowDateTime;
}

FILETIME split(unsigned long long units)
{
    return {static_cast<DWORD>(units), static_cast<DWORD>(units >> 32)};
}

BOOL refuse()
{
    SetLastError(ERROR_INVALID_PARAMETER);
    return FALSE;
}

/// Seconds by which the process's zone is ahead of UTC now.
long long current_Bias()
{
    const time_t now = ::time(nullptr);
    std::tm local{};
    ::tzset(); // localtime_r keeps to the zone that it saw first
    return ::localtime_r(&now, &local) != nullptr ? local.tm_gmtoff : 0;
}

BOOL move_Time(const FILETIME* from, FILETIME* to, int sign)
{
    if (from == nullptr || to == nullptr)
        return refuse();
    const unsigned long long units = join(*from);
    const long long bias = sign * current_Bias() * UNITS_A_SECOND;
    const unsigned long long moved = units + static_cast<unsigned long long>(bias);
    if (bias < 0 ? moved > units : moved < units)
        return refuse();
    *to = split(moved);
    return TRUE;
}

} // namespace

void GetSystemTime(LPSYSTEMTIME time)
{
    timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    const long long seconds = now.tv_sec;
    fill_Fields(DAY_OF_1970 + seconds / 86400, seconds % 86400 * 1000 + now.tv_nsec / 1'000'000, *time);
}

BOOL SystemTimeToFileTime(const SYSTEMTIME* time, LPFILETIME file_time)
{
    if (time == nullptr || file_time == nullptr || !is_Date_And_Time(*time))
        return refuse();
    const long long days = Count_Days(time->wYear, time->wMonth, time->wDay) - DAY_OF_1601;
    const long long seconds = days * 86400 + (time->wHour * 60 + time->wMinute) * 60 + time->wSecond;
    *file_time = split(static_cast<unsigned long long>(seconds * UNITS_A_SECOND +
                                                       time->wMilliseconds * UNITS_A_MILLISECOND));
    return TRUE;
}

BOOL FileTimeToSystemTime(const FILETIME* file_time, LPSYSTEMTIME time)
{
    if (file_time == nullptr || time == nullptr || (file_time->dwHighDateTime & 0x80000000) != 0)
        return refuse();
    const auto milliseconds = static_cast<long long>(join(*file_time)) / UNITS_A_MILLISECOND;
    fill_Fields(DAY_OF_1601 + milliseconds / 86'400'000, milliseconds % 86'400'000, *time);
    return TRUE;
}

BOOL FileTimeToLocalFileTime(const FILETIME* file_time, LPFILETIME local_time)
{
    return move_Time(file_time, local_time, 1);
}

BOOL LocalFileTimeToFileTime(const FILETIME* local_time, LPFILETIME file_time)
{
    return move_Time(local_time, file_time, -1);
}

} // namespace qn_platform
