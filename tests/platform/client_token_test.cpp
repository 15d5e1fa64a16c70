#include "lib_platform.h"
#include "platform/kernel/client_calls.h"
#include "test_process.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstddef>
#include <string>

#include <netinet/in.h>
#include <poll.h>
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
        bind(m_nSocket, reinterpret_cast<const sockaddr*>(&m_Address), sizeof(sa_family_t));
        socklen_t size = sizeof m_Address; // the system chose the name
        getsockname(m_nSocket, reinterpret_cast<sockaddr*>(&m_Address), &size);
        EXPECT_EQ(0, listen(m_nSocket, 4));
    }
    Listener(const Listener&) = delete;
    Listener& operator=(const Listener&) = delete;
    ~Listener() { close(m_nSocket); }

    std::string Name() const { return m_Address.sun_path + 1; }
    int Accept() const { return accept4(m_nSocket, nullptr, nullptr, SOCK_CLOEXEC); }

private:
    int m_nSocket = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_un m_Address = {AF_UNIX, {}};
};

/// Connects as a user of its own, where that is allowed, and stays until it is told to go.
int Connect(const Part_Arguments& arguments)
{
    sockaddr_un address = {AF_UNIX, {}};
    arguments[0].copy(address.sun_path + 1, sizeof address.sun_path - 2);
    const auto size = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + 1 + arguments[0].size());
    const int line = socket(AF_UNIX, SOCK_STREAM, 0);
    const bool other_user = getuid() == 0 && setuid(4711) == 0;
    const int result = connect(line, reinterpret_cast<const sockaddr*>(&address), size);
    Say_To_Owner(result != 0 ? 'f' : other_user ? 'o' : 's');
    return Hear_From_Owner() == 'q' ? 0 : 1;
}

[[maybe_unused]] const Part connect_part("client_of_a_service", Connect);

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
    Test_Process m_Client{"client_of_a_service", {m_Listener.Name()}};
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
    const int file = memfd_create("file", 0);
    expect_None(ERROR_INVALID_HANDLE, file);
    close(file);
    const int foreign = socket(AF_INET, SOCK_STREAM, 0);
    expect_None(ERROR_NOT_SUPPORTED, foreign);
    close(foreign);
    const int alone = socket(AF_UNIX, SOCK_STREAM, 0);
    expect_None(ERROR_PIPE_NOT_CONNECTED, alone);
    close(alone);

    client_calls.read_session = [](int, DWORD&) { return DWORD{ERROR_TOO_MANY_OPEN_FILES}; };
    expect_None(ERROR_TOO_MANY_OPEN_FILES, m_nLine);
}
