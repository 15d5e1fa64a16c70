#ifndef PIN_DESK_REPORT_H
#define PIN_DESK_REPORT_H

#include "journal.h"
#include "session.h"

#include <optional>

/// Who asks: a client of a session. Number 0 is one that didn't tell clients apart.
struct Client_Name
{
    unsigned int m_nSession = 0;
    unsigned int m_nClient = 0;

    bool operator<(const Client_Name& Other) const
    {
        return std::pair(m_nSession, m_nClient) < std::pair(Other.m_nSession, Other.m_nClient);
    }
};

/// Prints the desk's answers in UTF-8 to standard output, one on a line, counts them for the summary, and
/// draws an audit digest over all of them, printed or not, by which two reports of one day can be compared.
/// Any thread may add to it at any time.
class Report final : public Session_Witness
{
public:
    struct Style
    {
        Lib_Buffer m_Key; ///< mixed into the numbers of receipts
        bool m_bQuiet;    ///< leaves out what was done
        bool m_bStamps;   ///< begins lines with the time by the clock
        bool m_bLive;     ///< shows each line at once, and sessions when they open and close
        bool m_bJournal;  ///< appends answers, printed or not, and what befalls PINs to the journal
    };

    /// Throws std::runtime_error if there is to be a journal and there is none to be had.
    Report(const Style& style, const Clock& clock);
    ~Report() override = default;

    void Add_Answer(unsigned int nLine, const Client_Name& client, const Request& request,
                    const Answer& answer);
    /// The client is null where nobody can tell whose line it is.
    void Add_Malformed(unsigned int nLine, const Client_Name* pClient, const Lib_String& strFault);

    /// A line of its own about anything else.
    void Add_Note(const Lib_String& strText);

    /// The cards are those of the sessions that are open; null leaves cards out.
    void Print_Summary(const std::map<unsigned int, Session_Count>* pCards);

    /// How many sessions there have been.
    void Print_Sessions();

    void Session_Opened(unsigned int nSession) override;
    void Session_Closed(unsigned int nSession, unsigned int nCards) override;
    void Pin_Expired(unsigned int nSession, const Lib_String& strCard) override;
    void Watch_Died(unsigned int nSession) override;

private:
    struct Counts
    {
        unsigned int m_nDone = 0;
        unsigned int m_nRefused = 0;

        void Add(bool bDone) { ++(bDone ? m_nDone : m_nRefused); }
        unsigned int Get_Sum() const { return m_nDone + m_nRefused; }
    };

    unsigned int count_Requests() const { return m_Total.m_nDone + m_Total.m_nRefused + m_nMalformed; }
    void add_Event(unsigned int nSession, const Lib_String& strText);
    void add_Note(const Lib_String& strText) const;
    Lib_String make_Receipt() const;
    void add_To_Audit(const Lib_String& strLine);
    void add_To_Journal(const Lib_String& strLine);
    Lib_String describe_Audit() const;
    void print_Stamped(const Lib_String& strLine) const;

    Style m_Style;
    Clock m_Clock;
    std::optional<Journal> m_Journal;
    Lib_Mutex m_Lock; ///< of the output and of what follows
    Counts m_Total;
    std::map<unsigned int, Counts> m_Sessions;
    unsigned int m_nMalformed = 0;
    unsigned int m_nOpened = 0;
    unsigned int m_nClosed = 0;
    unsigned long m_nAudit = 0; ///< checksum of each line together with that of the lines before
};

#endif
