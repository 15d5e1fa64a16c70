#ifndef PIN_DESK_REPORT_H
#define PIN_DESK_REPORT_H

#include "desk.h"
#include "request.h"

#include <map>

/// Prints the desk's answers in UTF-8 to standard output, one on a line, counts them for the summary, and
/// draws an audit digest over all of them, printed or not, by which two reports of one session can be
/// compared.
class Report
{
public:
    /// The key is mixed into the numbers of receipts; bQuiet leaves out what was done; bStamps begins lines
    /// with the time by the clock.
    Report(const Lib_Buffer& Key, bool bQuiet, const Clock& clock, bool bStamps)
        : m_Key(Key), m_bQuiet(bQuiet), m_Clock(clock), m_bStamps(bStamps)
    {
    }

    void Add_Answer(unsigned int nLine, const Request& request, const Answer& answer);
    void Add_Malformed(unsigned int nLine, const Lib_String& strFault);
    void Print_Summary(const Desk& desk) const;

    /// Requests so far, malformed ones too.
    unsigned int Count_Requests() const { return m_Total.m_nDone + m_Total.m_nRefused + m_nMalformed; }

private:
    struct Counts
    {
        unsigned int m_nDone = 0;
        unsigned int m_nRefused = 0;

        void Add(bool bDone) { ++(bDone ? m_nDone : m_nRefused); }
        unsigned int Get_Sum() const { return m_nDone + m_nRefused; }
    };

    Lib_String make_Receipt() const;
    void add_To_Audit(const Lib_String& strLine);
    Lib_String describe_Audit() const;
    void print_Stamped(const Lib_String& strLine) const;

    Lib_Buffer m_Key;
    bool m_bQuiet;
    Clock m_Clock;
    bool m_bStamps;
    Counts m_Total;
    std::map<unsigned int, Counts> m_Sessions;
    unsigned int m_nMalformed = 0;
    unsigned long m_nAudit = 0; ///< checksum of each line together with that of the lines before
};

/// Prints a line in UTF-8.
void Print_Line(const Lib_String& strLine);

/// The platform's text for one of its codes, ready to stand in a line: without line end and full stop.
Lib_String Get_Error_Text(unsigned int nCode);

#endif
