#ifndef PIN_DESK_DESK_H
#define PIN_DESK_DESK_H

#include "request.h"

#include <map>

/// What the desk says to a request. The text tells no PIN.
struct Answer
{
    bool m_bDone = false;
    Lib_String m_strText;
};

/// Keeps the table of cards and answers requests from it. A card is blocked after a number of wrong PINs in
/// a row; a right one in between gives it all its tries back. An expired one is refused, whatever the PIN.
/// One thread at a time uses the desk.
class Desk
{
public:
    /// nTries, at least 1, is the number of wrong PINs that blocks a card.
    Desk(unsigned int nTries, const Clock& clock) : m_nTries(nTries), m_Clock(clock) {}

    Answer Serve(const Request& request);

    unsigned int Count_Cards() const { return static_cast<unsigned int>(m_Cards.size()); }
    unsigned int Count_Blocked() const;

private:
    struct Card
    {
        Lib_String m_strOwner;
        Lib_Protected_String m_Pin;
        Lib_Buffer m_Badge;
        std::optional<double> m_Until;  ///< none means for ever
        unsigned int m_nTries_Left = 0; ///< 0 means blocked
    };

    Answer store(const Request& request);
    Answer issue(const Request& request);
    Answer check(const Request& request);
    Answer change(const Request& request);
    Answer unblock(const Request& request);
    Answer remove(const Request& request);
    Answer show(const Request& request) const;
    Answer list(const Request& request) const;

    void enter(const Lib_String& strName, const Request& request);
    Lib_String next_Name(const Lib_String& strSeries);
    bool verify(const Request& request, Answer& Refusal);
    Lib_String describe_Tries(const Card& card) const;

    unsigned int m_nTries;
    Clock m_Clock;
    std::map<Lib_String, Card> m_Cards;
    std::map<Lib_String, Lib_String> m_Last_Names; ///< the last name issued in each series
};

#endif
