#include "socket_service.h"

#include "local_socket_linux.h"
#include "text_output.h"

#include <array>
#include <cerrno>
#include <string_view>

#include <poll.h>
#include <string.h>
#include <sys/socket.h>
#include <unistd.h>

namespace
{

bool is_Passing(int nError) { return nError == EAGAIN || nError == EWOULDBLOCK || nError == EINTR; }

/// Counts the lines of what passes, without empty ones and notes, which begin with a `#`.
class Line_Counter
{
public:
    void Take(const char* pBytes, std::size_t nBytes)
    {
        constexpr std::string_view LEFT_OUT = " \t\v\f\r\xEF\xBB\xBF"; // the mark in front of UTF-8, too
        for (const char ch : std::string_view(pBytes, nBytes))
        {
            if (ch == '\n')
                m_bBegun = false;
            else if (!m_bBegun && LEFT_OUT.find(ch) == std::string_view::npos)
            {
                m_bBegun = true;
                m_nLines += ch != '#';
            }
        }
    }
    unsigned long long Get() const { return m_nLines; }

private:
    unsigned long long m_nLines = 0;
    bool m_bBegun = false; ///< the line's first character has passed
};

/// Passes requests and answers on, both ways at once. Requests are wiped when they are sent: there are PINs
/// in them.
class Conversation
{
public:
    explicit Conversation(int nSocket) : m_nSocket(nSocket) {}
    Conversation(const Conversation&) = delete;
    Conversation& operator=(const Conversation&) = delete;
    ~Conversation() { explicit_bzero(m_Requests.data(), m_Requests.size()); }

    int Hold();

private:
    bool has_Unsent() const { return m_nNext != m_nEnd; }
    void read_Requests();
    void send_Requests();
    bool pass_Answers();

    int m_nSocket;
    std::array<char, 4096> m_Requests{};
    std::size_t m_nNext = 0;
    std::size_t m_nEnd = 0;
    bool m_bLine_Open = false; ///< the last byte was no line feed
    bool m_bMore = true;       ///< requests may come
    bool m_bTaken = true;      ///< the desk takes them, and they can be read
    Line_Counter m_Asked;
    Line_Counter m_Answered;
};

int Conversation::Hold()
{
    bool bAnswers = true;
    while (bAnswers)
    {
        const short nWanted = has_Unsent() ? POLLIN | POLLOUT : POLLIN;
        pollfd Files[] = {{m_nSocket, nWanted, 0}, {m_bMore && !has_Unsent() ? STDIN_FILENO : -1, POLLIN, 0}};
        if (poll(Files, 2, -1) < 0)
            continue;
        if (Files[1].revents != 0)
            read_Requests();
        if (has_Unsent())
            send_Requests();
        if ((Files[0].revents & ~POLLOUT) != 0)
            bAnswers = pass_Answers();
    }
    return m_bTaken && !has_Unsent() && m_Answered.Get() >= m_Asked.Get() ? EXIT_SERVED : EXIT_CUT_OFF;
}

/// The last line gets its end, without which the desk would take it for a part of one.
void Conversation::read_Requests()
{
    const ssize_t nRead = read(STDIN_FILENO, m_Requests.data(), m_Requests.size());
    if (nRead < 0 && is_Passing(errno))
        return;
    m_bTaken = m_bTaken && nRead >= 0;
    m_nNext = 0;
    m_nEnd = nRead > 0 ? static_cast<std::size_t>(nRead) : 0;
    m_bMore = nRead > 0;
    if (m_nEnd == 0 && m_bLine_Open)
        m_Requests[m_nEnd++] = '\n';
    m_Asked.Take(m_Requests.data(), m_nEnd);
    m_bLine_Open = m_nEnd != 0 && m_Requests[m_nEnd - 1] != '\n';
    if (!has_Unsent())
        shutdown(m_nSocket, SHUT_WR);
}

void Conversation::send_Requests()
{
    const ssize_t nSent =
        send(m_nSocket, m_Requests.data() + m_nNext, m_nEnd - m_nNext, MSG_NOSIGNAL | MSG_DONTWAIT);
    if (nSent < 0 && is_Passing(errno))
        return;
    const bool bSent = nSent >= 0;
    m_bTaken = m_bTaken && bSent;
    m_bMore = m_bMore && bSent;
    const std::size_t nGone = bSent ? static_cast<std::size_t>(nSent) : m_nEnd - m_nNext;
    explicit_bzero(m_Requests.data() + m_nNext, nGone);
    m_nNext += nGone;
    if (!m_bMore && !has_Unsent())
        shutdown(m_nSocket, SHUT_WR);
}

/// False at their end.
bool Conversation::pass_Answers()
{
    char block[4096];
    const ssize_t nRead = recv(m_nSocket, block, sizeof(block), MSG_DONTWAIT);
    if (nRead < 0 && is_Passing(errno))
        return true;
    m_bTaken = m_bTaken && nRead >= 0; // torn off: not all that was sent has been read
    if (nRead <= 0)
        return false;
    m_Answered.Take(block, static_cast<std::size_t>(nRead));
    std::fwrite(block, 1, static_cast<std::size_t>(nRead), stdout);
    return std::fflush(stdout) == 0;
}

} // namespace

int Ask_Socket(const Lib_String& strPath)
{
    Lib_String strFault;
    const Descriptor Socket = Connect_To_Desk(strPath, strFault);
    if (!Socket.Is_Open())
    {
        Print_Line(L"There is no asking at " + strPath + L": " + strFault + L".");
        return EXIT_NO_SOCKET;
    }
    return Conversation(Socket.Get()).Hold();
}
