#include "local_socket_linux.h"

#include <cerrno>
#include <cstring>
#include <lib_foundation.h>

#include <fcntl.h>
#include <libgen.h>
#include <sys/file.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

namespace
{

constexpr const wchar_t* A_DESK = L"a desk serves there already";

Descriptor make_Socket(int nFlags)
{
    return Descriptor(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | nFlags, 0));
}

/// 0, or the errno of the failure.
int connect_To(const Descriptor& Socket, const sockaddr_un& Address)
{
    const auto* pAddress = reinterpret_cast<const sockaddr*>(&Address);
    return connect(Socket.Get(), pAddress, sizeof(Address)) == 0 ? 0 : errno;
}

/// Keeps other desks from taking a place in a folder, by a lock on the folder itself: it leaves nothing
/// behind.
class Folder_Lock
{
public:
    /// Of the folder in which the socket lies. The address is a copy, since dirname cuts it; it asks for no
    /// memory, so that a listener can end at any time.
    explicit Folder_Lock(sockaddr_un Address)
        : m_Folder(open(dirname(Address.sun_path), O_RDONLY | O_DIRECTORY | O_CLOEXEC))
    {
        take();
    }

    /// 0 or errno. EWOULDBLOCK: another process has had the lock for a second, for which none has a good
    /// reason.
    int Get_Error() const { return m_nError; }

private:
    void take()
    {
        for (int nTries = 0; nTries < 100; ++nTries)
        {
            m_nError = m_Folder.Is_Open() && flock(m_Folder.Get(), LOCK_EX | LOCK_NB) == 0 ? 0 : errno;
            if (m_nError != EWOULDBLOCK && m_nError != EINTR)
                return;
            usleep(10'000);
        }
    }

    Descriptor m_Folder;
    int m_nError = 0;
};

} // namespace

Descriptor::~Descriptor()
{
    if (m_nFile >= 0)
        close(m_nFile);
}

std::optional<sockaddr_un> Get_Socket_Address(const Lib_String& strPath)
{
    sockaddr_un Address{};
    Address.sun_family = AF_UNIX;
    Lib_Buffer Path;
    if (!Lib_WString_To_UTF8_Buffer(strPath, static_cast<unsigned long>(strPath.Get_Length()), Path) ||
        Path.Get_Size() == 0 || Path.Get_Size() >= sizeof(Address.sun_path))
        return std::nullopt;
    std::memcpy(Address.sun_path, Path.Get_Ptr(), static_cast<std::size_t>(Path.Get_Size()));
    return Address;
}

Lib_String Get_System_Text(int nError)
{
    char text[128];
    return Lib_String(strerror_r(nError, text, sizeof(text)));
}

Descriptor Connect_To_Desk(const Lib_String& strPath, Lib_String& strFault)
{
    const std::optional<sockaddr_un> Address = Get_Socket_Address(strPath);
    Descriptor Socket = make_Socket(0);
    const int nError = !Socket.Is_Open() ? errno : !Address ? ENAMETOOLONG : connect_To(Socket, *Address);
    if (nError == 0)
        return Socket;
    strFault = nError == ECONNREFUSED ? Lib_String(L"no desk serves there") : Get_System_Text(nError);
    return Descriptor();
}

bool Listener::Open(const Lib_String& strPath, Lib_String& strFault)
{
    const std::optional<sockaddr_un> Address = Get_Socket_Address(strPath);
    if (!Address)
    {
        strFault = L"the path is too long for a socket";
        return false;
    }
    m_Address = *Address;
    const Folder_Lock Lock(m_Address);
    if (Lock.Get_Error() != 0)
    {
        strFault = Lock.Get_Error() == EWOULDBLOCK ? Lib_String(L"another process keeps the folder locked")
                                                   : Get_System_Text(Lock.Get_Error());
        return false;
    }
    return clear_Place(strFault) && bind_There(strFault);
}

/// Removes a socket that nobody listens on.
bool Listener::clear_Place(Lib_String& strFault) const
{
    struct stat Found;
    if (lstat(m_Address.sun_path, &Found) != 0)
    {
        strFault = Get_System_Text(errno);
        return errno == ENOENT;
    }
    if (!S_ISSOCK(Found.st_mode))
    {
        strFault = L"there is a file that is no socket";
        return false;
    }
    // A desk whose queue is full is alive, too: the attempt does not wait for room in it.
    const Descriptor Attempt = make_Socket(SOCK_NONBLOCK);
    const int nError = Attempt.Is_Open() ? connect_To(Attempt, m_Address) : errno;
    strFault = nError == 0 || nError == EAGAIN ? Lib_String(A_DESK) : Get_System_Text(nError);
    if (nError != ECONNREFUSED)
        return false;
    strFault = L"the socket of a dead desk cannot be removed";
    return unlink(m_Address.sun_path) == 0;
}

/// No other thread makes files meanwhile: the mask is the process's.
bool Listener::bind_There(Lib_String& strFault)
{
    m_Socket = make_Socket(SOCK_NONBLOCK);
    const mode_t nMask = umask(0177);
    const int nBound = bind(m_Socket.Get(), reinterpret_cast<const sockaddr*>(&m_Address), sizeof(m_Address));
    const int nError = errno;
    umask(nMask);
    struct stat Made;
    if (nBound != 0)
    {
        m_Socket = Descriptor();
        strFault = Get_System_Text(nError);
        return false;
    }
    if (lstat(m_Address.sun_path, &Made) == 0)
    {
        m_nDevice = Made.st_dev;
        m_nNumber = Made.st_ino;
    }
    if (listen(m_Socket.Get(), SOMAXCONN) == 0)
        return true;
    strFault = Get_System_Text(errno);
    return false;
}

void Listener::Close()
{
    if (!m_Socket.Is_Open())
        return;
    const Folder_Lock Lock(m_Address);
    struct stat Found;
    if (lstat(m_Address.sun_path, &Found) == 0 && Found.st_dev == m_nDevice && Found.st_ino == m_nNumber)
        unlink(m_Address.sun_path);
    m_Socket = Descriptor();
}
