#ifndef PIN_DESK_SESSION_H
#define PIN_DESK_SESSION_H

#include "desk.h"
#include "pin_watch.h"

#include <lib_environment.h>

/// Is told what happens of itself in sessions, on the thread on which it happens.
class Session_Witness
{
public:
    virtual void Session_Opened(unsigned int nSession) = 0;
    virtual void Session_Closed(unsigned int nSession, unsigned int nCards) = 0;

    /// The PIN is wiped already. An exception from here ends the session's watch, as any does.
    virtual void Pin_Expired(unsigned int nSession, const Lib_String& strCard) = 0;

    /// Nobody wipes PINs that expire in this session any more; they are refused all the same. It is the
    /// worker that says so, with its last words.
    virtual void Watch_Died(unsigned int nSession) = 0;

protected:
    Session_Witness() = default;
    Session_Witness(const Session_Witness&) = default;
    Session_Witness& operator=(const Session_Witness&) = default;
    virtual ~Session_Witness() = default;
};

/// What the desk keeps for one session: its table of cards, and if PINs expire, the worker that sees to it,
/// which bears the token of the session's first client.
class Session
{
public:
    Session(unsigned int nNumber, const Desk_Rules& Rules, Session_Witness& Witness);

    /// Starts the worker; false when it does not come up.
    bool Open(Lib_Result& result);

    /// Stops the worker. It takes no lock but the table's and the witness's, so this may be called with any
    /// other one held.
    void Close();
    bool Is_Closed() const { return !m_Watch.Is_Active(); }

    unsigned int Get_Number() const { return m_nNumber; }
    Desk& Get_Desk() { return m_Desk; }

private:
    static bool watch(void* pSession, Lib_Result& result);
    void expire_Pins();
    void tell_Death();

    unsigned int m_nNumber;
    Session_Witness& m_Witness;
    bool m_bPins_Expire;
    Desk m_Desk;
    Pin_Watch m_Watch; ///< goes first, and its worker with it
};

struct Session_Count
{
    unsigned int m_nCards = 0;
    unsigned int m_nBlocked = 0;
};

/// The sessions whose clients are being served: each opens with its first client and closes with its last
/// one, and no client sees the cards of another session than that of the token which his thread bears. There
/// is one object of this class at a time. Any thread may use it; the witness outlives it, and is not told
/// anything after its end.
class Sessions
{
public:
    Sessions(const Desk_Rules& Rules, Session_Witness& Witness);
    Sessions(const Sessions&) = delete;
    Sessions& operator=(const Sessions&) = delete;

    /// The stay of a client in its session. A thread makes it, uses it and ends it under one and the same
    /// token.
    class Visit
    {
    public:
        explicit Visit(Sessions& All);
        Visit(const Visit&) = delete;
        Visit& operator=(const Visit&) = delete;
        ~Visit();

        /// Answers from the session's table; Operation::leave ends the stay, and then there are no answers
        /// any more.
        Answer Serve(const Request& request);
        bool Is_Over() const { return m_pEnvironment == nullptr; }

    private:
        Answer leave();

        Sessions& m_All;
        Lib_Environment* m_pEnvironment = nullptr;
        Lib_Result m_Result; ///< why there is no stay
    };

    std::map<unsigned int, Session_Count> Count_Cards();

    /// The session of the calling thread, as it is printed; 0xFFFFFFFF when it is not known.
    static unsigned int Get_Own_Number();

private:
    static void* open(Lib_Environment* pEnvironment, Lib_Result& result);
    static bool prepare_To_Close(void* pSession);
    static bool is_Closed(void* pSession);
    static bool close(void* pSession, Lib_Result& result);

    Desk_Rules m_Rules;
    Session_Witness& m_Witness;
    Lib_Environment_Manager m_Manager;
};

#endif
