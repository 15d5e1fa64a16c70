#include "platform/runtime_time.h"

#include "platform/text/runtime_locale.h"
#include "platform/time/civil.h"
#include "platform/time/date_pattern.h"

#include <cstdlib>

#include <time.h>

namespace qn_runtime
{

namespace
{

using qn_platform::Date_Fields;
using qn_platform::Locale_Texts;

class Buffer_Output
{
public:
    Buffer_Output(wchar_t* buffer, std::size_t capacity) : m_pBuffer(buffer), m_nCapacity(capacity) {}

    void Put(wchar_t unit)
    {
        if (m_nLength < m_nCapacity)
            m_pBuffer[m_nLength] = unit;
        ++m_nLength;
    }

    /// Ends the text; its length, or 0 when it doesn't fit.
    std::size_t End()
    {
        if (m_nLength >= m_nCapacity)
            return 0;
        m_pBuffer[m_nLength] = 0;
        return m_nLength;
    }

private:
    wchar_t* m_pBuffer;
    std::size_t m_nCapacity;
    std::size_t m_nLength = 0;
};

/// Week of the year by ISO 8601, with the year it belongs to.
struct Iso_Week
{
    int m_nYear;
    int m_nWeek;
};

Iso_Week get_Iso_Week(const std::tm& time)
{
    const int year = time.tm_year + 1900;
    const int from_monday = (time.tm_wday + 6) % 7;
    const int thursday = time.tm_yday - from_monday + 3; // of the same week, as a day of this year
    if (thursday < 0)
        return {year - 1, (thursday + (qn_platform::Is_Leap_Year(year - 1) ? 366 : 365)) / 7 + 1};
    const int length = qn_platform::Is_Leap_Year(year) ? 366 : 365;
    if (thursday >= length)
        return {year + 1, 1};
    return {year, thursday / 7 + 1};
}

bool is_Within(int value, int least, int most) { return value >= least && value <= most; }

/// A time of the process's zone, now or in the next moment when it is summer time or is none; only its zone
/// counts. The C library's variables for that are no help: other threads' conversions rewrite them. A zone
/// without summer time gives what it would be.
std::tm find_Zone(bool summer)
{
    constexpr time_t WEEK = 7 * 86400;
    const time_t now = ::time(nullptr);
    std::tm local{};
    ::tzset();
    for (time_t week = 0; week <= 52; ++week)
    {
        const time_t moment = now + week * WEEK;
        if (::localtime_r(&moment, &local) != nullptr && (local.tm_isdst > 0) == summer)
            return local;
    }
    if (summer)
        local.tm_gmtoff += 3600;
    return local;
}

/// Writes one time by a format. Any conversion may fail, which ends the work.
class Time_Writer
{
public:
    Time_Writer(Buffer_Output& output, const std::tm& time) : m_Output(output), m_Time(time) {}

    bool Write(const wchar_t* format)
    {
        for (; *format != 0; ++format)
        {
            if (*format != L'%')
            {
                m_Output.Put(*format);
                continue;
            }
            ++format;
            m_bAlternate = *format == L'#';
            if (m_bAlternate)
                ++format;
            if (*format == 0 || !convert(*format))
                return false;
        }
        return true;
    }

private:
    bool convert(wchar_t conversion)
    {
        switch (conversion)
        {
        case L'a':
        case L'A':
        case L'b':
        case L'B':
        case L'h':
        case L'p':
            return write_Name(conversion);
        case L'c':
        case L'x':
        case L'X':
            return write_Pattern(conversion);
        case L'D':
            return write_All(L"%m/%d/%y");
        case L'F':
            return write_All(m_bAlternate ? L"%Y-%#m-%#d" : L"%Y-%m-%d");
        case L'R':
            return write_All(L"%H:%M");
        case L'T':
            return write_All(L"%H:%M:%S");
        case L'r':
            return write_All(L"%I:%M:%S %p");
        case L'n':
            return write_Unit(L'\n');
        case L't':
            return write_Unit(L'\t');
        case L'%':
            return write_Unit(L'%');
        case L'z':
        case L'Z':
            return write_Zone(conversion);
        default:
            return convert_Time(conversion) || convert_Date(conversion) || convert_Week(conversion);
        }
    }

    bool convert_Time(wchar_t conversion)
    {
        switch (conversion)
        {
        case L'H':
            return write_Number(m_Time.tm_hour, 0, 23, 2);
        case L'I':
            return is_Within(m_Time.tm_hour, 0, 23) && write_Number((m_Time.tm_hour + 11) % 12 + 1, 1, 12, 2);
        case L'M':
            return write_Number(m_Time.tm_min, 0, 59, 2);
        case L'S':
            return write_Number(m_Time.tm_sec, 0, 60, 2);
        default:
            return false;
        }
    }

    bool convert_Date(wchar_t conversion)
    {
        const int year = is_Within(m_Time.tm_year, -1900, 8099) ? m_Time.tm_year + 1900 : -1;
        switch (conversion)
        {
        case L'C':
            return write_Number(year < 0 ? year : year / 100, 0, 99, 2);
        case L'd':
            return write_Number(m_Time.tm_mday, 1, 31, 2);
        case L'e':
            return write_Number(m_Time.tm_mday, 1, 31, 2, L' ');
        case L'j':
            return is_Within(m_Time.tm_yday, 0, 365) && write_Number(m_Time.tm_yday + 1, 1, 366, 3);
        case L'm':
            return is_Within(m_Time.tm_mon, 0, 11) && write_Number(m_Time.tm_mon + 1, 1, 12, 2);
        case L'y':
            return write_Number(year < 0 ? year : year % 100, 0, 99, 2);
        case L'Y':
            return write_Number(year, 0, 9999, 4);
        default:
            return false;
        }
    }

    bool convert_Week(wchar_t conversion)
    {
        if (!is_Within(m_Time.tm_wday, 0, 6) || !is_Within(m_Time.tm_yday, 0, 365) ||
            !is_Within(m_Time.tm_year, -1900, 8099))
        {
            return false;
        }
        const Iso_Week week = get_Iso_Week(m_Time);
        switch (conversion)
        {
        case L'w':
            return write_Number(m_Time.tm_wday, 0, 6, 1);
        case L'u':
            return write_Number((m_Time.tm_wday + 6) % 7 + 1, 1, 7, 1);
        case L'U':
            return write_Number((m_Time.tm_yday + 7 - m_Time.tm_wday) / 7, 0, 53, 2);
        case L'W':
            return write_Number((m_Time.tm_yday + 7 - (m_Time.tm_wday + 6) % 7) / 7, 0, 53, 2);
        case L'V':
            return write_Number(week.m_nWeek, 1, 53, 2);
        case L'G':
            return write_Number(week.m_nYear, 0, 9999, 4);
        case L'g':
            return is_Within(week.m_nYear, 0, 9999) && write_Number(week.m_nYear % 100, 0, 99, 2);
        default:
            return false;
        }
    }

    bool write_Unit(wchar_t unit)
    {
        m_Output.Put(unit);
        return true;
    }

    bool write_All(const wchar_t* format) { return Time_Writer(m_Output, m_Time).Write(format); }

    void write_Text(const wchar_t* text)
    {
        for (; *text != 0; ++text)
            m_Output.Put(*text);
    }

    bool write_Number(int number, int least, int most, int width, wchar_t filler = L'0')
    {
        if (!is_Within(number, least, most))
            return false;
        int scale = 1000;
        for (int digits = 4; digits > 1 && number < scale; --digits, scale /= 10)
        {
            if (!m_bAlternate && digits <= width)
                m_Output.Put(filler);
        }
        for (; scale > 0; scale /= 10)
            m_Output.Put(static_cast<wchar_t>(L'0' + number / scale % 10));
        return true;
    }

    /// Null when the texts of the locale in force cannot be had.
    const Locale_Texts* get_Texts()
    {
        if (m_pTexts == nullptr)
            m_pTexts = qn_platform::Get_Runtime_Locale().Get_Texts();
        return m_pTexts;
    }

    bool write_Name(wchar_t conversion)
    {
        const bool day = conversion == L'a' || conversion == L'A';
        const bool half = conversion == L'p';
        const int index = day ? m_Time.tm_wday : half ? m_Time.tm_hour : m_Time.tm_mon;
        const Locale_Texts* texts = get_Texts();
        if (texts == nullptr || !is_Within(index, 0, day ? 6 : half ? 23 : 11))
            return false;
        if (half)
            write_Text(texts->m_Markers[index / 12]);
        else if (day)
            write_Text((conversion == L'a' ? texts->m_Short_Days : texts->m_Days)[index]);
        else
            write_Text((conversion == L'B' ? texts->m_Months : texts->m_Short_Months)[index]);
        return true;
    }

    bool has_Whole_Date() const
    {
        return is_Within(m_Time.tm_year, -1900, 8099) && is_Within(m_Time.tm_mon, 0, 11) &&
               is_Within(m_Time.tm_mday, 1, 31) && is_Within(m_Time.tm_wday, 0, 6);
    }

    bool has_Whole_Time() const
    {
        return is_Within(m_Time.tm_hour, 0, 23) && is_Within(m_Time.tm_min, 0, 59) &&
               is_Within(m_Time.tm_sec, 0, 60);
    }

    /// The locale's date for x, its time for X, both for c.
    bool write_Pattern(wchar_t conversion)
    {
        const bool date = conversion != L'X';
        const bool time = conversion != L'x';
        const Locale_Texts* texts = get_Texts();
        if (texts == nullptr || (date && !has_Whole_Date()) || (time && !has_Whole_Time()))
            return false;
        const Date_Fields fields{m_Time.tm_year + 1900, m_Time.tm_mon + 1, m_Time.tm_mday, m_Time.tm_wday,
                                 m_Time.tm_hour,        m_Time.tm_min,     m_Time.tm_sec};
        qn_platform::Pattern_Writer<Buffer_Output> writer(m_Output, fields, *texts);
        if (date)
            writer.Write(m_bAlternate ? texts->m_pLong_Date : texts->m_pShort_Date);
        if (date && time)
            m_Output.Put(L' ');
        if (time)
            writer.Write(texts->m_pTime);
        return true;
    }

    /// The C library keeps the names of zones for good, and makes them under a lock that the thread sanitizer
    /// does not see.
    __attribute__((no_sanitize("thread"))) void put_Name(const char* name)
    {
        for (; name != nullptr && *name != 0; ++name)
            m_Output.Put(static_cast<unsigned char>(*name));
    }

    /// The process's zone, by its name or as hours and minutes; nothing when it isn't known whether it is
    /// summer time.
    bool write_Zone(wchar_t conversion)
    {
        if (m_Time.tm_isdst < 0)
            return true;
        const std::tm zone = find_Zone(m_Time.tm_isdst > 0);
        if (conversion == L'Z')
        {
            put_Name(zone.tm_zone);
            return true;
        }
        const long minutes = zone.tm_gmtoff / 60;
        const int absolute = static_cast<int>(std::labs(minutes));
        m_bAlternate = false;
        return write_Unit(minutes < 0 ? L'-' : L'+') && write_Number(absolute / 60, 0, 99, 2) &&
               write_Number(absolute % 60, 0, 59, 2);
    }

    Buffer_Output& m_Output;
    const std::tm& m_Time;
    const Locale_Texts* m_pTexts = nullptr;
    bool m_bAlternate = false;
};

} // namespace

std::size_t Format_Time(wchar_t* buffer, std::size_t capacity, const wchar_t* format, const std::tm& time)
{
    Buffer_Output output(buffer, capacity);
    return Time_Writer(output, time).Write(format) ? output.End() : 0;
}

} // namespace qn_runtime
