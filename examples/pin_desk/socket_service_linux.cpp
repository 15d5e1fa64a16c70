#include "socket_service.h"

#include "client_thread.h"
#include "line_reader.h"
#include "local_socket_linux.h"
#include "stack_wipe.h"
#include "stop_signals.h"
#include "text_output.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <exception>
#include <list>
#include <stdexcept>

#include <poll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <unistd.h>

namespace
{

using Steady_Clock = std::chrono::steady_clock;

constexpr std::size_t MOST_CLIENTS = 128;
constexpr std::ptrdiff_t MOST_OF_A_SESSION = 64; // which leaves places to the others
constexpr std::chrono::seconds LAST_WORDS(2);    // for what is under way when the desk closes

/// In the milliseconds of a wait.
long long get_Left(Steady_Clock::time_point End)
{
    return std::max(std::chrono::ceil<std::chrono::milliseconds>(End - Steady_Clock::now()).count(), 0L);
}

bool send_All(int nSocket, const Lib_String& strLine, int nFlags)
{
    Lib_Buffer Line = To_Utf8(strLine);
    Line.Append("\n", 1);
    const auto* pNext = static_cast<const char*>(Line.Get_Ptr());
    auto nLeft = static_cast<std::size_t>(Line.Get_Size());
    while (nLeft != 0)
    {
        const ssize_t nSent = send(nSocket, pNext, nLeft, MSG_NOSIGNAL | nFlags);
        if (nSent < 0 && errno == EINTR)
            continue;
        if (nSent <= 0)
            return false;
        pNext += nSent;
        nLeft -= static_cast<std::size_t>(nSent);
    }
    return true;
}

class Socket_Source final : public Byte_Source
{
public:
    explicit Socket_Source(int nSocket) : m_nSocket(nSocket) {}
    ~Socket_Source() override = default;

    /// What is read from now on must come in that time, in however many parts.
    void Set_Limit(std::chrono::seconds Time) { m_End = Steady_Clock::now() + Time; }

    std::size_t Read(char* pBytes, std::size_t nRoom) override
    {
        ssize_t nRead = -1;
        do
            nRead = wait_For_Bytes() ? recv(m_nSocket, pBytes, nRoom, MSG_DONTWAIT) : -1;
        while (nRead < 0 && (errno == EINTR || errno == EAGAIN));
        m_nError = nRead < 0 ? errno : 0;
        return nRead > 0 ? static_cast<std::size_t>(nRead) : 0;
    }
    bool Has_Failed() const override { return m_nError != 0; }
    bool Was_Late() const { return m_nError == ETIMEDOUT; }

private:
    /// False with the reason in errno.
    bool wait_For_Bytes() const
    {
        pollfd File{m_nSocket, POLLIN, 0};
        const int nLeft = static_cast<int>(get_Left(m_End));
        const int nReady = nLeft > 0 ? poll(&File, 1, nLeft) : 0;
        if (nReady == 0)
            errno = ETIMEDOUT;
        return nReady > 0;
    }

    int m_nSocket;
    int m_nError = 0;
    Steady_Clock::time_point m_End;
};

/// What the clients have in common.
struct Service
{
    Sessions& m_All;
    Report& m_Report;
    Clock m_Clock;
    std::chrono::seconds m_Patience;                            ///< with a line, and with an answer
    Descriptor m_Ended{eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)}; ///< rung by clients when they have ended
};

/// A client on a connection, served on a thread of his own under the token that the kernel's answer about his
/// process makes.
class Connection
{
public:
    Connection(Service& service, Descriptor Socket, unsigned int nNumber)
        : m_Service(service), m_Socket(std::move(Socket)), m_nNumber(nNumber)
    {
    }
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    /// Ends the thread, whatever the client does.
    ~Connection();

    /// Learns whose client this is. False when there is no serving him, who is told so.
    bool Identify();
    unsigned int Get_Session() const { return m_nSession; }

    /// The same.
    bool Start();

    void Refuse(const Lib_String& strReason) const;

    bool Has_Ended() const { return m_bEnded; }

    /// The request that is being answered is the last one.
    void Ask_To_End();
    void Wait_For_End(unsigned long nMilliseconds) { m_Thread.Wait(nMilliseconds); }

private:
    static unsigned int run(void* pConnection);
    bool limit_Sending() const;
    void serve_All();
    void serve_Lines(Sessions::Visit& Visit);
    bool serve_Line(unsigned int nLine, Lib_String& strLine, Sessions::Visit& Visit); ///< empties the line
    bool answer(unsigned int nLine, const Request& request, Sessions::Visit& Visit);
    bool tell_Malformed(unsigned int nLine, const Lib_String& strFault);
    bool say(const Lib_String& strLine) const { return send_All(m_Socket.Get(), strLine, 0); }

    Service& m_Service;
    Descriptor m_Socket;
    unsigned int m_nNumber;
    Lib_Handle m_Token;
    unsigned int m_nSession = 0;
    std::atomic<bool> m_bTo_End{false};
    std::atomic<bool> m_bEnded{false};
    Lib_Synchro m_Thread;
};

Connection::~Connection()
{
    if (m_Thread == nullptr)
        return;
    m_bTo_End = true;
    shutdown(m_Socket.Get(), SHUT_RDWR);
    m_Thread.Wait(INFINITE);
}

bool Connection::Identify()
{
    DWORD nSession = 0;
    DWORD nSize = 0;
    m_Token.Attach(Lib_Create_Client_Token(m_Socket.Get()));
    if (m_Token == nullptr ||
        !GetTokenInformation(m_Token, TokenSessionId, &nSession, sizeof(nSession), &nSize))
    {
        Refuse(Get_Error_Text(GetLastError()));
        return false;
    }
    m_nSession = nSession;
    return true;
}

bool Connection::Start()
{
    Lib_Result result;
    if (!limit_Sending())
        result.Set_Result(ERROR_NOT_SUPPORTED, 1);
    else if (Start_Client_Thread(m_Token, &run, this, m_Thread, result))
        return true;
    Refuse(Get_Error_Text(result.Get_Result_Code()));
    return false;
}

void Connection::Refuse(const Lib_String& strReason) const
{
    send_All(m_Socket.Get(), L"refused: no serving this client: " + strReason, MSG_DONTWAIT);
    m_Service.m_Report.Add_Note(L"client " + Lib_Int_To_String(static_cast<int>(m_nNumber)) +
                                L" is not served: " + strReason);
}

/// A client who takes nothing of an answer keeps his thread for no longer than this.
bool Connection::limit_Sending() const
{
    const timeval Time{static_cast<time_t>(m_Service.m_Patience.count()), 0};
    return setsockopt(m_Socket.Get(), SOL_SOCKET, SO_SNDTIMEO, &Time, sizeof(Time)) == 0;
}

void Connection::Ask_To_End()
{
    m_bTo_End = true;
    shutdown(m_Socket.Get(), SHUT_RD);
}

unsigned int Connection::run(void* pConnection)
{
    auto& connection = *static_cast<Connection*>(pConnection);
    try
    {
        connection.serve_All();
    }
    catch (const std::exception& Error)
    {
        std::fprintf(stderr, "pin_desk: client %u: %s\n", connection.m_nNumber, Error.what());
    }
    Wipe_Stack();
    shutdown(connection.m_Socket.Get(), SHUT_RDWR);
    connection.m_bEnded = true;
    const std::uint64_t nOne = 1;
    return write(connection.m_Service.m_Ended.Get(), &nOne, sizeof(nOne)) == sizeof(nOne) ? 0 : 1;
}

void Connection::serve_All()
{
    Sessions::Visit Visit(m_Service.m_All);
    serve_Lines(Visit);
    if (m_bTo_End)
        say(L"# the desk closes");
}

/// A line whose end has not come is no request: who knows what it was to be.
void Connection::serve_Lines(Sessions::Visit& Visit)
{
    Socket_Source Source(m_Socket.Get());
    Line_Reader Reader(Source);
    bool bGo_On = true;
    while (bGo_On && !m_bTo_End)
    {
        Lib_String strLine; // not kept while the next one is waited for
        Source.Set_Limit(m_Service.m_Patience);
        const Line_Reader::State state = Reader.Read_Line(strLine);
        if (Source.Was_Late())
            say(L"# the desk has waited long enough");
        if (state == Line_Reader::State::end || state == Line_Reader::State::failed || !Reader.Is_Whole())
            return;
        bGo_On = state == Line_Reader::State::malformed
                     ? tell_Malformed(Reader.Get_Line_Number(), strLine)
                     : serve_Line(Reader.Get_Line_Number(), strLine, Visit);
        Wipe_Stack();
    }
}

bool Connection::serve_Line(unsigned int nLine, Lib_String& strLine, Sessions::Visit& Visit)
{
    if (strLine.Is_Empty() || strLine.Get_At(0) == L'#')
        return true;
    Request request;
    Lib_String strFault;
    const bool bRead = Read_Request(strLine, m_Service.m_Clock, request, strFault);
    strLine.Empty(); // serving and answering may take long
    Wipe_Stack();
    if (!bRead)
        return tell_Malformed(nLine, strFault);
    if (request.m_nClient != 0 || request.m_Session.value_or(m_nSession) != m_nSession)
        return tell_Malformed(nLine, L"who asks is known from the socket");
    return answer(nLine, request, Visit);
}

bool Connection::answer(unsigned int nLine, const Request& request, Sessions::Visit& Visit)
{
    const Answer Result = Visit.Serve(request);
    m_Service.m_Report.Add_Answer(nLine, {m_nSession, m_nNumber}, request, Result);
    return say((Result.m_bDone ? L"done: " : L"refused: ") + Result.m_strText) && !Visit.Is_Over();
}

bool Connection::tell_Malformed(unsigned int nLine, const Lib_String& strFault)
{
    const Client_Name client{m_nSession, m_nNumber};
    m_Service.m_Report.Add_Malformed(nLine, &client, strFault);
    return say(L"malformed: " + strFault);
}

/// Takes connections in, and ended ones away.
class Reception
{
public:
    Reception(Service& service, Listener& listener) : m_Service(service), m_Listener(listener) {}

    /// Until a stop signal comes.
    void Work();

    /// No new clients; what the present ones are being answered is still said.
    void Close();

private:
    void accept_One();
    bool admit(Connection& connection) const;
    void take_Away_Ended();

    Service& m_Service;
    Listener& m_Listener;
    bool m_bRoom = true; ///< false after the system had no room for another connection
    unsigned int m_nNumber = 0;
    std::list<Connection> m_Connections;
};

void Reception::Work()
{
    while (true)
    {
        // Without room it is tried again when somebody ends, or after a second.
        pollfd Files[] = {{Get_Stop_Bell(), POLLIN, 0},
                          {m_Service.m_Ended.Get(), POLLIN, 0},
                          {m_bRoom ? m_Listener.Get() : -1, POLLIN, 0}};
        const int nReady = poll(Files, std::size(Files), m_bRoom ? -1 : 1000);
        m_bRoom = true;
        if (nReady < 0)
            continue;
        if (Files[0].revents != 0)
            return;
        if (Files[1].revents != 0)
            take_Away_Ended();
        if (Files[2].revents != 0)
            accept_One();
    }
}

void Reception::accept_One()
{
    Descriptor Socket(accept4(m_Listener.Get(), nullptr, nullptr, SOCK_CLOEXEC));
    if (!Socket.Is_Open())
    {
        m_bRoom = errno == EAGAIN || errno == EINTR || errno == ECONNABORTED;
        return;
    }
    ++m_nNumber;
    if (m_Connections.size() >= MOST_CLIENTS)
    {
        send_All(Socket.Get(), L"refused: too many clients", MSG_DONTWAIT);
        return;
    }
    const std::size_t nBefore = m_Connections.size();
    bool bStarted = false;
    try
    {
        bStarted = admit(m_Connections.emplace_back(m_Service, std::move(Socket), m_nNumber));
    }
    catch (const std::exception& Error) // the others are served on
    {
        std::fprintf(stderr, "pin_desk: client %u is not served: %s\n", m_nNumber, Error.what());
    }
    if (!bStarted && m_Connections.size() > nBefore)
        m_Connections.pop_back();
}

bool Reception::admit(Connection& connection) const
{
    if (!connection.Identify())
        return false;
    const auto is_Same = [&](const Connection& other)
    { return other.Get_Session() == connection.Get_Session(); };
    if (std::count_if(m_Connections.begin(), m_Connections.end(), is_Same) <= MOST_OF_A_SESSION)
        return connection.Start();
    connection.Refuse(L"too many clients of its session");
    return false;
}

void Reception::take_Away_Ended()
{
    std::uint64_t nRings = 0;
    if (read(m_Service.m_Ended.Get(), &nRings, sizeof(nRings)) == sizeof(nRings))
        m_Connections.remove_if([](const Connection& connection) { return connection.Has_Ended(); });
}

void Reception::Close()
{
    m_Listener.Close();
    for (Connection& connection : m_Connections)
        connection.Ask_To_End();
    const Steady_Clock::time_point end = Steady_Clock::now() + LAST_WORDS;
    for (Connection& connection : m_Connections)
        connection.Wait_For_End(static_cast<unsigned long>(get_Left(end)));
    m_Connections.clear();
}

} // namespace

int Serve_Socket(const Lib_String& strPath, const Options& options, const Desk_Rules& Rules)
{
    std::signal(SIGPIPE, SIG_IGN);
    Catch_Stop_Signals();
    Listener listener;
    Lib_String strFault;
    if (!listener.Open(strPath, strFault))
    {
        Print_Line(L"The desk cannot serve on " + strPath + L": " + strFault + L".");
        return EXIT_NO_SOCKET;
    }
    Report report(options.Get_Style(true), Rules.m_Clock);
    {
        Sessions All(Rules, report);
        Service service{All, report, Rules.m_Clock, std::chrono::seconds(options.Get_Patience())};
        if (!service.m_Ended.Is_Open())
            throw std::runtime_error("the ends of clients cannot be waited for");
        Reception reception(service, listener);
        report.Add_Note(L"the desk serves on " + strPath);
        reception.Work();
        report.Add_Note(Get_Stop_Signal() + Lib_String(L": the desk closes"));
        reception.Close();
    }
    report.Print_Summary(nullptr);
    report.Print_Sessions();
    return EXIT_SERVED;
}
