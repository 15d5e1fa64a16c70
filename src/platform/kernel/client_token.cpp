#include "platform/kernel/access_rights.h"
#include "platform/kernel/client_calls.h"
#include "platform/kernel/object_layout.h"
#include "platform/kernel/session.h"
#include "platform/kernel/token.h"
#include "platform/modules.h"
#include "platform/sessions.h"
#include "platform/tokens.h"

#include <cerrno>

#include <unistd.h>

// Who is at the other end of a socket. The kernel tells a process number, which may be another process's by
// now, and since Linux 6.5 a descriptor of the very process.

namespace qn_platform
{

namespace kernel
{

constinit Client_Calls client_calls{::getsockopt, ::poll, Read_Session};

} // namespace kernel

using namespace kernel;

namespace
{

#if defined(SO_PEERPIDFD)
constexpr int PEER_DESCRIPTOR = SO_PEERPIDFD;
#else
constexpr int PEER_DESCRIPTOR = 77; // headers older than the kernel that the program meets
#endif

constexpr DWORD CLIENT_GRANT = TOKEN_QUERY | TOKEN_IMPERSONATE | TOKEN_DUPLICATE;

/// The peer's process for as long as it is looked at.
class Peer_Process
{
public:
    /// Asks for the kernel's descriptor. False for a peer that has gone; true, and no descriptor, if the
    /// kernel has none to give.
    bool Open(int socket)
    {
        m_nSocket = socket;
        socklen_t size = sizeof m_nDescriptor;
        if (client_calls.get_socket_option(socket, SOL_SOCKET, PEER_DESCRIPTOR, &m_nDescriptor, &size) == 0)
        {
            return true;
        }
        m_nDescriptor = NONE;
        return errno == ENOPROTOOPT;
    }

    Peer_Process() = default;
    Peer_Process(const Peer_Process&) = delete;
    Peer_Process& operator=(const Peer_Process&) = delete;
    ~Peer_Process()
    {
        if (m_nDescriptor != NONE)
        {
            ::close(m_nDescriptor);
        }
    }

    /// Whether it runs, so that what was read by its number until now was its own. Without a descriptor it is
    /// its end of the connection that is asked after, which it may have given away.
    bool Is_There() const
    {
        pollfd sign = {m_nSocket, 0, 0}; // that it is hung up is told unasked
        if (m_nDescriptor != NONE)
        {
            sign = {m_nDescriptor, POLLIN, 0}; // that is its end
        }
        return client_calls.poll_files(&sign, 1, 0) == 0;
    }

private:
    static constexpr int NONE = -1;

    int m_nSocket = NONE;
    int m_nDescriptor = NONE;
};

HANDLE fail_With(DWORD error)
{
    SetLastError(error);
    return nullptr;
}

/// The error of a call that needs a descriptor for itself.
DWORD get_Error(DWORD otherwise)
{
    if (errno == ENOMEM)
    {
        return ERROR_NOT_ENOUGH_MEMORY;
    }
    return errno == EMFILE || errno == ENFILE ? ERROR_TOO_MANY_OPEN_FILES : otherwise;
}

/// 0, or the error for which the socket has no peer of this machine.
DWORD find_Peer(int socket, ucred& peer)
{
    int nDomain = 0;
    socklen_t size = sizeof nDomain;
    if (client_calls.get_socket_option(socket, SOL_SOCKET, SO_DOMAIN, &nDomain, &size) != 0)
    {
        return ERROR_INVALID_HANDLE;
    }
    if (nDomain != AF_UNIX)
    {
        return ERROR_NOT_SUPPORTED;
    }
    int nListens = 0; // then there is no other end, and the kernel would name this process
    size = sizeof nListens;
    if (client_calls.get_socket_option(socket, SOL_SOCKET, SO_ACCEPTCONN, &nListens, &size) != 0 ||
        nListens != 0)
    {
        return ERROR_PIPE_NOT_CONNECTED;
    }
    size = sizeof peer;
    if (client_calls.get_socket_option(socket, SOL_SOCKET, SO_PEERCRED, &peer, &size) != 0 ||
        peer.uid == static_cast<uid_t>(-1))
    {
        return ERROR_PIPE_NOT_CONNECTED;
    }
    return peer.pid > 0 ? ERROR_SUCCESS : ERROR_ACCESS_DENIED;
}

/// 0, or the error for which it is not known whom the peer stands for.
DWORD identify(int socket, Identity& client)
{
    ucred peer = {0, static_cast<uid_t>(-1), static_cast<gid_t>(-1)};
    const DWORD error = find_Peer(socket, peer);
    if (error != ERROR_SUCCESS)
    {
        return error;
    }
    Peer_Process process;
    if (!process.Open(socket))
    {
        return get_Error(ERROR_PIPE_NOT_CONNECTED);
    }
    client.user = peer.uid;
    const DWORD read = client_calls.read_session(peer.pid, client.session);
    return process.Is_There() ? read : ERROR_PIPE_NOT_CONNECTED;
}

} // namespace

HANDLE Lib_Create_Session_Token(unsigned int session_id, unsigned int granted_access)
{
    constexpr DWORD GENERIC = GENERIC_READ | GENERIC_WRITE | GENERIC_EXECUTE | GENERIC_ALL;
    if (session_id == 0xFFFFFFFF || (granted_access & ~(TOKEN_ALL_ACCESS | GENERIC)) != 0)
    {
        return fail_With(ERROR_INVALID_PARAMETER);
    }
    return New_Client_Token(Map_Access(Kind::Token, granted_access), {session_id, ::geteuid()});
}

HANDLE Lib_Create_Client_Token(int socket)
{
    Identity client = {};
    const DWORD error = identify(socket, client);
    return error == ERROR_SUCCESS ? New_Client_Token(CLIENT_GRANT, client) : fail_With(error);
}

} // namespace qn_platform
