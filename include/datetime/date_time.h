#ifndef QNLIB_DATETIME_DATE_TIME_H
#define QNLIB_DATETIME_DATE_TIME_H

#include "lib_api.h"
#include "lib_platform.h"
#include "strings/lib_string.h"

#include <ctime>

/// A calendar date and time in one double, in the form that the platform's variant-time functions take. The
/// whole part counts days from 30 December 1899, with its sign; the fraction is the time of day in parts of
/// 86400 seconds and adds to the magnitude of the day:
///
///     0.25   30 December 1899, 06:00          1.0    31 December 1899
///    -1.25   29 December 1899, 06:00         -0.5    30 December 1899, 12:00, as 0.5
///
/// So the scale is not linear across zero, and sums and differences are those of the plain doubles.
///
/// By convention a value is system time (UTC): Get_Current gives that, a time_t is taken so, and local time
/// comes and goes by explicit conversion. Dates are those of the Gregorian calendar, from 1 January 100 to 31
/// December 9999; of both these days only midnight can be broken down.
///
/// Nothing here throws but std::bad_alloc where a text is made. An object is used by one thread at a time;
/// reading it from several is fine.
class LIB_API Lib_DateTime
{
public:
    /// 30 December 1899, midnight: 0.0.
    Lib_DateTime() = default;
    Lib_DateTime(const Lib_DateTime&) = default;

    /// As Set_Date_Time; 0.0 when that refuses the fields.
    Lib_DateTime(int nYear, int nMonth, int nDay, int nHour, int nMinute, int nSecond);

    /// The value as it is, or, if `bLocal`, the system time of a local time; 0.0 for a local time that the
    /// platform refuses, such as one before 1601.
    Lib_DateTime(double dtValue, bool bLocal);

    /// Seconds since 1970, UTC, from -43200 up to but not including 32536846800, which is in the year 3001;
    /// the other target's runtime may end with the year 3000, and refuse what is negative. 0.0 for others, in
    /// an assignment too. A plain number means this always, a double too, which loses its fraction: for a
    /// value in days write Lib_DateTime(value, false).
    Lib_DateTime(long long nTime);

    const Lib_DateTime& operator=(const Lib_DateTime& source)
    {
        m_dtValue = source.m_dtValue;
        return *this;
    }
    const Lib_DateTime& operator=(long long nTime);

    static Lib_DateTime time_t_To_Lib_DateTime(long long nTime) { return Lib_DateTime(nTime); }

    /// The system time now, in whole seconds.
    static Lib_DateTime Get_Current();

    /// The parts of the value, rounded to the second, which may carry it into the next day. All are 0 for a
    /// value below -657434.0, above 2958465.0 or not a number.
    virtual int Get_Year() const;        ///< 100 to 9999
    virtual int Get_Month() const;       ///< 1 to 12
    virtual int Get_Day() const;         ///< 1 to 31
    virtual int Get_Hour() const;        ///< 0 to 23
    virtual int Get_Minute() const;      ///< 0 to 59
    virtual int Get_Second() const;      ///< 0 to 59
    virtual int Get_Day_Of_Week() const; ///< 1 to 7, from Sunday
    virtual int Get_Day_Of_Year() const; ///< 1 to 366

    /// Seconds since midnight.
    int Get_Total_Seconds() const;

    virtual operator double() const;

    /// The value as a file time, in whole seconds, without a conversion of zones. Zero for a value that the
    /// platform refuses, such as one before 1601.
    virtual operator _FILETIME() const;

    /// Sets all fields. False, with the value unchanged, for a year above 9999, a day that the month of the
    /// year doesn't have, an hour above 23, a minute or a second above 59. There is no lower bound of the
    /// year, though years below 100 cannot be read back, nor of hour, minute and second: negative ones shift
    /// the time of day.
    virtual bool Set_Date_Time(int nYear, int nMonth, int nDay, int nHour, int nMinute, int nSecond);

    /// Midnight of a day; as Set_Date_Time.
    bool Set_Date(int nYear, int nMonth, int nDay);

    /// A time of day on 30 December 1899: the date is lost, the value a bare fraction. As Set_Date_Time.
    bool Set_Time(int nHour, int nMinute, int nSecond);

    /// Reads a text in the customs of a locale: date, time or both, in any of the forms that the platform
    /// knows. `nFlags` are those of the platform: 1 takes the time of day alone, 2 the date alone, 0x80000000
    /// leaves out what the user changed in the locale's customs. docs/dates.md tells the forms. False for a
    /// text that is no date, which makes the value 0.0; other failures, such as a locale or flags that the
    /// platform refuses, keep it. `bLocal` has no effect.
    virtual bool Parse_Date_Time(const wchar_t* pText, unsigned long nFlags, unsigned long nLocale,
                                 bool bLocal);

    /// The text of the value, or of its local time, as the locale writes dates: short date and time, of which
    /// the date is left out on 30 December 1899 and the time at midnight. `nFlags` as in Parse_Date_Time; the
    /// identifiers 0x400, 0x800 and 0 mean the user's locale. Empty for a value, a locale or flags that the
    /// platform refuses; there is no local time of dates before 1601. Throws std::bad_alloc when the platform
    /// is short of memory.
    virtual Lib_String Format(unsigned long nFlags, unsigned long nLocale, bool bTo_Local) const;

    /// The text of the value by string `nId` of a module's table, in the user's default locale; null means
    /// the process's executable. Empty when there is no such string.
    virtual Lib_String Format(unsigned int nId, HINSTANCE hModule) const;

    /// The text of the value by a format of the runtime's wcsftime. Empty for a text of more than 127 units,
    /// a bad format, or a value that cannot be broken down; the last leaves the runtime's locale alone.
    /// Otherwise the runtime's locale, which is the process's, is that of the identifier during the call (the
    /// user's default for an identifier that platform or runtime don't know, or are short of memory for: they
    /// don't tell which) and the user's default behind it, whatever it was before; "C" where that cannot be
    /// had. That default is the runtime's, which the platform's 0x400 need not be: on
    /// Linux LC_ALL, LC_TIME and LANG tell it, but LC_ALL, LC_MESSAGES and LANG the other one. Nothing guards
    /// that: calls of several threads may see one another's locale.
    virtual Lib_String Format(const wchar_t* pFormat, unsigned long nLocale) const;

    /// Writes all fields but tm_isdst. False, with nothing written, for a value that cannot be broken down.
    bool To_tm(std::tm& Fields) const;

    /// The value as local time, by the bias of the process's zone that is in force now; and the way back. 0.0
    /// for a value that the platform refuses, such as one before 1601.
    Lib_DateTime Get_Local() const { return Lib_DateTime(to_Local(m_dtValue), false); }
    Lib_DateTime Get_System() const { return Lib_DateTime(to_System(m_dtValue), false); }

    /// Equal when the values differ by less than 2.220446049250313e-16.
    bool operator==(const Lib_DateTime& other) const;
    bool operator!=(const Lib_DateTime& other) const { return !(*this == other); }

    /// Add to and subtract from this object, all four of them: the operators of two operands change the left
    /// one too. `date += Lib_DateTime(1.0, false)` goes on by a day; `date += 1` adds a time_t, and
    /// `date + 1` doesn't compile, since it might be a sum of plain numbers. A constant left operand takes no
    /// part: the sum is then one of plain doubles.
    const Lib_DateTime& operator+=(const Lib_DateTime& other)
    {
        m_dtValue += other.m_dtValue;
        return *this;
    }
    const Lib_DateTime& operator+(const Lib_DateTime& other) { return *this += other; }
    const Lib_DateTime& operator-=(const Lib_DateTime& other)
    {
        m_dtValue -= other.m_dtValue;
        return *this;
    }
    Lib_DateTime operator-(const Lib_DateTime& other) { return *this -= other; }

protected:
    static double to_Local(double dtValue);
    static double to_System(double dtValue);

    double m_dtValue = 0.0;
};

#endif
