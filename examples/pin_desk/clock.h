#ifndef PIN_DESK_CLOCK_H
#define PIN_DESK_CLOCK_H

#include <lib_datetime.h>
#include <lib_strings.h>

#include <optional>

/// How the desk writes and reads times: in which locale, and whether as local or system time. The values
/// themselves are system time.
class Clock
{
public:
    Clock(unsigned long nLocale, bool bLocal) : m_nLocale(nLocale), m_bLocal(bLocal) {}

    Lib_String Write(const Lib_DateTime& When) const { return When.Format(0, m_nLocale, m_bLocal); }

    /// The value of a Lib_DateTime. None for a text that is no date in the locale, a time alone among them,
    /// and for a local time that the platform cannot convert, such as one before 1601. 30 December 1899
    /// counts as a time alone.
    std::optional<double> Read(const Lib_String& strText) const
    {
        constexpr unsigned long DATE_ALONE = 2; // the platform's flag
        Lib_DateTime Date;
        Lib_DateTime Result;
        if (!Date.Parse_Date_Time(strText, DATE_ALONE, m_nLocale, false) || Date == Lib_DateTime() ||
            !Result.Parse_Date_Time(strText, 0, m_nLocale, false))
            return std::nullopt;
        const Lib_DateTime System = m_bLocal ? Result.Get_System() : Result;
        return System != Lib_DateTime() ? std::optional<double>(System) : std::nullopt;
    }

private:
    unsigned long m_nLocale;
    bool m_bLocal;
};

#endif
