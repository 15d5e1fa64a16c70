#include "lib_platform.h"
#include "platform/kernel/client_calls.h"
#include "test_process.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <utility>

#include <netinet/in.h>
#include <sys/mman.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

using namespace test_support;
using qn_platform::kernel::client_calls;

namespace
{

/// The token's session; 0xFFFFFFFE if it doesn't tell.
DWORD Session_Of(HANDLE token)
{
    DWORD session = 0xFFFFFFFE;
    DWORD needed = 0;
    GetTokenInformation(token, TokenSessionId, &session, sizeof session, &needed);
    return session;
}

DWORD User_Of(HANDLE token)
{
    struct
    {
        TOKEN_USER m_User;
        BYTE m_Sid[16];
    } told = {};
    DWORD needed = 0;
    EXPECT_TRUE(GetTokenInformation(token, TokenUser, &told, sizeof told, &needed));
    EXPECT_EQ(sizeof told, needed);
    EXPECT_EQ(told.m_Sid, told.m_User.User.Sid);
    EXPECT_TRUE(IsValidSid(told.m_User.User.Sid));
    EXPECT_EQ(16U, GetLengthSid(told.m_User.User.Sid));
    return static_cast<SID*>(told.m_User.User.Sid)->SubAuthority[1];
}

/// A listening socket under an abstract name, which goes with it.
class Listener
{
public:
    Listener()
    {
        bind(m_nSocket, Address(), sizeof(sa_family_t));
        getsockname(m_nSocket, Address(), &m_nSize); // the system chose the name
        EXPECT_EQ(0, listen(m_nSocket, 4));
    }
    Listener(const Listener&) = delete;
    Listener& operator=(const Listener&) = delete;
    ~Listener() { close(m_nSocket); }

    sockaddr* Address() { return reinterpret_cast<sockaddr*>(&m_Address); }
    int Accept() const { return accept4(m_nSocket, nullptr, nullptr, SOCK_CLOEXEC); }

    /// Connects as a user of its own, where that is allowed, and stays until it is told to go.
    int Connect(const Talk& owner)
    {
        const int line = socket(AF_UNIX, SOCK_STREAM, 0);
        const bool other_user = getuid() == 0 && setuid(4711) == 0;
        const int result = connect(line, Address(), m_nSize);
        owner.Say(result != 0 ? 'f' : other_user ? 'o' : 's');
        return owner.Hear(-1);
    }

private:
    int m_nSocket = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_un m_Address = {AF_UNIX, {}};
    socklen_t m_nSize = sizeof m_Address;
};

class Client_Token : public testing::Test
{
protected:
    void SetUp() override
    {
        m_nHeard = m_Client.Hear();
        ASSERT_TRUE(m_nHeard == 'o' || m_nHeard == 's');
        m_nLine = m_Listener.Accept();
        ASSERT_LE(0, m_nLine);
    }
    ~Client_Token() override
    {
        client_calls = m_Saved;
        close(m_nLine);
    }

    void expect_None(DWORD dwError, int line)
    {
        SetLastError(0);
        EXPECT_EQ(nullptr, Lib_Create_Client_Token(line));
        EXPECT_EQ(dwError, GetLastError());
    }

    Listener m_Listener;
    Test_Process m_Client{[this](const Talk& owner) { return m_Listener.Connect(owner); }};
    int m_nHeard = 0;
    int m_nLine = -1;
    const qn_platform::kernel::Client_Calls m_Saved = client_calls;
};

int s_nAsked_Process = 0;

int No_Descriptor_Of_The_Peer(int socket, int level, int option, void* value, socklen_t* size)
{
    constexpr int PEER_DESCRIPTOR = 77;
    if (option == PEER_DESCRIPTOR)
    {
        errno = ENOPROTOOPT;
        return -1;
    }
    return getsockopt(socket, level, option, value, size);
}

} // namespace

TEST_F(Client_Token, Stands_For_Whom_The_Kernel_Names)
{
    client_calls.read_session = [](int process, DWORD& session)
    {
        s_nAsked_Process = process;
        session = 1234;
        return DWORD{0};
    };
    for (int round = 0; round < 2; ++round)
    {
        const HANDLE token = Lib_Create_Client_Token(m_nLine);
        ASSERT_NE(nullptr, token) << GetLastError();
        EXPECT_EQ(m_Client.Get_Id(), s_nAsked_Process);
        EXPECT_EQ(1234U, Session_Of(token));
        EXPECT_EQ(m_nHeard == 'o' ? 4711 : getuid(), User_Of(token));
        EXPECT_TRUE(CloseHandle(token));
        client_calls.get_socket_option = No_Descriptor_Of_The_Peer; // the same of an older kernel
    }
    client_calls = m_Saved;
    const HANDLE token = Lib_Create_Client_Token(m_nLine);
    HANDLE own = nullptr;
    ASSERT_TRUE(OpenProcessToken(GetCurrentProcess(), TOKEN_QUERY, &own));
    EXPECT_EQ(Session_Of(own), Session_Of(token)) << "both are of the session in which the tests run";
    CloseHandle(own);
    CloseHandle(token);
}

TEST_F(Client_Token, Is_Not_Made_For_Whoever_Has_The_Number_Of_A_Peer_That_Ended)
{
    // The peer ends while its number is looked at, and another process answers to that.
    static Test_Process* s_pClient = nullptr;
    s_pClient = &m_Client;
    client_calls.read_session = [](int, DWORD& session)
    {
        s_pClient->Kill();
        session = 0;
        return DWORD{0};
    };
    expect_None(ERROR_PIPE_NOT_CONNECTED, m_nLine);
    expect_None(ERROR_PIPE_NOT_CONNECTED, m_nLine); // and when it has ended before
    client_calls.get_socket_option = No_Descriptor_Of_The_Peer;
    expect_None(ERROR_PIPE_NOT_CONNECTED, m_nLine);
}

TEST_F(Client_Token, Is_Refused_With_The_Reason)
{
    expect_None(ERROR_INVALID_HANDLE, -1);
    const int listener = socket(AF_UNIX, SOCK_STREAM, 0);
    const sockaddr_un nowhere = {AF_UNIX, {}};
    EXPECT_EQ(0, bind(listener, reinterpret_cast<const sockaddr*>(&nowhere), sizeof(sa_family_t)));
    EXPECT_EQ(0, listen(listener, 1));
    const std::pair<DWORD, int> refused[] = {
        {ERROR_INVALID_HANDLE, memfd_create("file", 0)},
        {ERROR_NOT_SUPPORTED, socket(AF_INET, SOCK_STREAM, 0)},
        {ERROR_PIPE_NOT_CONNECTED, socket(AF_UNIX, SOCK_STREAM, 0)},
        {ERROR_PIPE_NOT_CONNECTED, listener}, // the kernel would name this process
    };
    for (const auto& [error, line] : refused)
    {
        expect_None(error, line);
        close(line);
    }

    client_calls.get_socket_option = [](int socket, int level, int option, void* value, socklen_t* size)
    {
        constexpr int LAST_KNOWN = 76;
        errno = ENOMEM;
        return option <= LAST_KNOWN ? getsockopt(socket, level, option, value, size) : -1;
    };
    expect_None(ERROR_NOT_ENOUGH_MEMORY, m_nLine);
    client_calls.get_socket_option = getsockopt;
    client_calls.read_session = [](int, DWORD&) { return DWORD{ERROR_TOO_MANY_OPEN_FILES}; };
    expect_None(ERROR_TOO_MANY_OPEN_FILES, m_nLine);
}
