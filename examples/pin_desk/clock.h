#ifndef PIN_DESK_CLOCK_H
#define PIN_DESK_CLOCK_H

#include <lib_datetime.h>
#include <lib_strings.h>

/// How the desk writes and reads times: in which locale, and whether as local or system time. The values
/// themselves are system time.
class Clock
{
public:
    Clock(unsigned long nLocale, bool bLocal) : m_nLocale(nLocale), m_bLocal(bLocal) {}

    Lib_String Write(const Lib_DateTime& When) const { return When.Format(0, m_nLocale, m_bLocal); }

    /// False for a text that is no date in the locale.
    bool Read(const Lib_String& strText, Lib_DateTime& Result) const
    {
        if (!Result.Parse_Date_Time(strText, 0, m_nLocale, m_bLocal))
            return false;
        if (m_bLocal)
            Result = Result.Get_System();
        return true;
    }

private:
    unsigned long m_nLocale;
    bool m_bLocal;
};

#endif
