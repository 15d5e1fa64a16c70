#ifndef PIN_DESK_DESK_H
#define PIN_DESK_DESK_H

#include "request.h"

#include <chrono>
#include <lib_kernel.h>
#include <map>
#include <set>
#include <utility>
#include <vector>

/// What the desk says to a request. The text tells no PIN.
struct Answer
{
    bool m_bDone = false;
    Lib_String m_strText;
};

/// By what rules a desk works.
struct Desk_Rules
{
    unsigned int m_nTries;        ///< wrong PINs in a row that block a card, at least 1
    std::chrono::seconds m_Lives; ///< how long a PIN is good for; 0 means for ever
    Clock m_Clock;
};

/// Keeps a table of cards and answers requests from it. A card is blocked after a number of wrong PINs in a
/// row; a right one in between gives it all its tries back. An expired one is refused, whatever the PIN, and
/// so is a PIN that has expired; who calls Expire_Pins in time has it wiped from memory, too. Either way the
/// card's name is free for a new card, and its place for any when there is no other.
///
/// Any thread may use the desk at any time. std::runtime_error leaves its operations when the platform gave
/// it no lock, std::bad_alloc when memory is short; then each card is as it was.
class Desk
{
public:
    explicit Desk(const Desk_Rules& Rules);

    /// Everything but Operation::leave, which is no matter of the table.
    Answer Serve(const Request& request);

    unsigned int Count_Cards() const;
    unsigned int Count_Blocked() const;

    /// The milliseconds until the next PIN expires; INFINITE when there is none that does.
    unsigned long Get_Time_To_Expiry() const;

    /// Wipes the PINs that have expired; the names of their cards.
    std::vector<Lib_String> Expire_Pins();

    /// Set, for one who waits, when there is a PIN to expire sooner than before.
    Lib_Event& Get_Alarm() { return m_Alarm; }

private:
    using Steady_Clock = std::chrono::steady_clock;

    struct Card
    {
        Lib_String m_strOwner;
        Lib_Protected_String m_Pin;
        Lib_Buffer m_Badge;
        std::optional<double> m_Until;  ///< none means for ever
        unsigned int m_nTries_Left = 0; ///< 0 means blocked
        std::optional<Steady_Clock::time_point> m_Pin_Expires;

        bool Has_Live_Pin() const { return !m_Pin_Expires || Steady_Clock::now() < *m_Pin_Expires; }
        bool Is_Over() const { return m_Until && *m_Until < Lib_DateTime::Get_Current(); }
        bool Has_Expired() const { return Is_Over() || !Has_Live_Pin(); }
    };
    using Cards = std::map<Lib_String, Card>;
    using Expiries = std::set<std::pair<Steady_Clock::time_point, Lib_String>>;

    Answer answer(const Request& request);

    Answer store(const Request& request);
    Answer issue(const Request& request);
    Answer check(const Request& request);
    Answer change(const Request& request);
    Answer unblock(const Request& request);
    Answer remove(const Request& request);
    Answer show(const Request& request) const;
    Lib_String describe(const Card& card) const;
    Answer list(const Request& request) const;

    bool make_Room();
    void enter(const Lib_String& strName, const Request& request);
    void enter(const Lib_String& strName, const Lib_String& strOwner, const Lib_Protected_String& Pin,
               const Lib_Buffer& Badge, const std::optional<double>& Until);
    Cards::iterator take_Out(Cards::iterator where);
    Lib_String next_Name(const Lib_String& strSeries);
    bool verify(const Request& request, Answer& Refusal);
    Lib_String describe_Tries(const Card& card) const;

    Desk_Rules m_Rules;
    mutable Lib_Mutex m_Lock; ///< of what follows
    Cards m_Cards;
    std::map<Lib_String, Lib_String> m_Last_Names; ///< the last name issued in each series
    Expiries m_Expiries;                           ///< of PINs that are still there
    Lib_Event m_Alarm;
};

#endif
