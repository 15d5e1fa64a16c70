#include "session.h"

#include "text_output.h"

#include <cstdio>
#include <exception>
#include <lib_platform.h>
#include <memory>

namespace
{

// The callbacks of the environment manager are told nothing of whose they are.
Sessions* the_Sessions = nullptr;

class Manager_Lock
{
public:
    explicit Manager_Lock(Lib_Environment_Manager& Manager) : m_Manager(Manager) { Manager.Lock(); }
    Manager_Lock(const Manager_Lock&) = delete;
    Manager_Lock& operator=(const Manager_Lock&) = delete;
    ~Manager_Lock() { m_Manager.Unlock(); }

private:
    Lib_Environment_Manager& m_Manager;
};

} // namespace

Session::Session(unsigned int nNumber, const Desk_Rules& Rules, Session_Witness& Witness)
    : m_nNumber(nNumber), m_Witness(Witness), m_bPins_Expire(Rules.m_Lives != std::chrono::seconds::zero()),
      m_Desk(Rules)
{
}

bool Session::Open(Lib_Result& result) { return !m_bPins_Expire || m_Watch.Begin(&watch, this, result); }

void Session::Close()
{
    Lib_Result result;
    m_Watch.Free(result);
}

/// One round of the worker.
bool Session::watch(void* pSession, Lib_Result& result)
{
    auto& session = *static_cast<Session*>(pSession);
    try
    {
        session.expire_Pins();
        if (session.m_Watch.Sleep(session.m_Desk.Get_Alarm(), session.m_Desk.Get_Time_To_Expiry()))
            return true;
    }
    catch (const std::exception&)
    {
        // Its last words come next.
    }
    result.Set_Result(ERROR_NOT_ENOUGH_MEMORY, 1);
    session.tell_Death();
    return false;
}

void Session::expire_Pins()
{
    for (const Lib_String& strCard : m_Desk.Expire_Pins())
        m_Witness.Pin_Expired(m_nNumber, strCard);
}

void Session::tell_Death()
{
    try
    {
        m_Witness.Watch_Died(m_nNumber);
    }
    catch (const std::exception&)
    {
        std::fputs("pin_desk: PINs of a session are no longer wiped when they expire\n", stderr);
    }
}

Sessions::Sessions(const Desk_Rules& Rules, Session_Witness& Witness)
    : m_Rules(Rules), m_Witness(Witness), m_Manager(&open, &close, &prepare_To_Close, &is_Closed)
{
    the_Sessions = this;
}

std::map<unsigned int, Session_Count> Sessions::Count_Cards()
{
    using Counts = std::map<unsigned int, Session_Count>;
    Counts Result;
    m_Manager.Enum_Environments(
        [](Lib_Environment* pEnvironment, long long nCounts)
        {
            auto& session = *static_cast<Session*>(pEnvironment->Get_User_Data());
            Desk& desk = session.Get_Desk();
            Session_Count& Count = (*reinterpret_cast<Counts*>(nCounts))[session.Get_Number()];
            Count.m_nCards += desk.Count_Cards();
            Count.m_nBlocked += desk.Count_Blocked();
            return true;
        },
        reinterpret_cast<long long>(&Result));
    return Result;
}

unsigned int Sessions::Get_Own_Number()
{
    unsigned int nSession = 0;
    Lib_Result result;
    return Acquire_Session_ID(nSession, result) ? nSession : Lib_Environment_Params::Session_Unknown;
}

/// For the first client of a session, on its thread.
void* Sessions::open(Lib_Environment* pEnvironment, Lib_Result& result)
{
    const unsigned int nNumber = pEnvironment->Get_Environment_Params()->Get_Session_ID();
    auto pSession = std::make_unique<Session>(nNumber, the_Sessions->m_Rules, the_Sessions->m_Witness);
    if (!pSession->Open(result))
        return nullptr;
    the_Sessions->m_Witness.Session_Opened(nNumber);
    return pSession.release();
}

bool Sessions::prepare_To_Close(void* pSession)
{
    static_cast<Session*>(pSession)->Close();
    return true;
}

bool Sessions::is_Closed(void* pSession) { return static_cast<Session*>(pSession)->Is_Closed(); }

bool Sessions::close(void* pSession, Lib_Result&)
{
    const std::unique_ptr<Session> pClosed(static_cast<Session*>(pSession));
    the_Sessions->m_Witness.Session_Closed(pClosed->Get_Number(), pClosed->Get_Desk().Count_Cards());
    return true;
}

Sessions::Visit::Visit(Sessions& All) : m_All(All)
{
    // The codes of looking for an environment stay in a result, so it says why only when it failed.
    if (All.m_Manager.Establish_Environment(m_Result))
        m_pEnvironment = All.m_Manager.Get_Environment(m_Result);
}

Sessions::Visit::~Visit()
{
    try
    {
        Lib_Result result;
        if (m_pEnvironment != nullptr)
            m_All.m_Manager.Release_Environment(m_pEnvironment, result);
    }
    catch (const std::exception&)
    {
        // The session is gone; only its witness could not take it in.
        std::fputs("pin_desk: the closing of a session could not be told\n", stderr);
    }
}

Answer Sessions::Visit::Serve(const Request& request)
{
    if (Is_Over())
        return {false, L"the desk is closed to this client: " + Get_Error_Text(m_Result.Get_Result_Code())};
    if (request.m_Operation == Operation::leave)
        return leave();
    // By the token of this thread, each time: whose cards these are is not for the client to say.
    auto* pSession = static_cast<Session*>(m_All.m_Manager.Get_User_Data(m_Result));
    if (pSession == nullptr)
        return {false, L"the client's session is not known: " + Get_Error_Text(m_Result.Get_Result_Code())};
    return pSession->Get_Desk().Serve(request);
}

/// What is let go is counted under the manager's lock, so that nobody comes in between.
Answer Sessions::Visit::leave()
{
    Lib_Environment_Manager& Manager = m_All.m_Manager;
    const Manager_Lock Lock(Manager);
    auto* pSession = static_cast<Session*>(m_pEnvironment->Get_User_Data());
    const unsigned int nCards = pSession->Get_Desk().Count_Cards();
    Lib_Environment* pLeft = std::exchange(m_pEnvironment, nullptr);
    Manager.Release_Environment(pLeft, m_Result);
    const bool bLast = !Manager.Is_Valid_Environment(pLeft);
    if (!bLast)
        return {true, L"left"};
    Lib_String strText;
    strText.Format(L"left as the last one, %u %s let go", nCards, nCards == 1 ? L"card" : L"cards");
    return {true, strText};
}
