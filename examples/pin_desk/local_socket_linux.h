#ifndef PIN_DESK_LOCAL_SOCKET_LINUX_H
#define PIN_DESK_LOCAL_SOCKET_LINUX_H

#include <lib_strings.h>
#include <optional>
#include <utility>

#include <sys/types.h>
#include <sys/un.h>

/// Owns a file descriptor.
class Descriptor
{
public:
    explicit Descriptor(int nFile = -1) : m_nFile(nFile) {}
    Descriptor(Descriptor&& Source) noexcept : m_nFile(std::exchange(Source.m_nFile, -1)) {}
    Descriptor& operator=(Descriptor&& Source) noexcept
    {
        std::swap(m_nFile, Source.m_nFile);
        return *this;
    }
    ~Descriptor();

    int Get() const { return m_nFile; }
    bool Is_Open() const { return m_nFile >= 0; }

private:
    int m_nFile;
};

/// The address of a socket that lies at a path; none for a path that is too long for one.
std::optional<sockaddr_un> Get_Socket_Address(const Lib_String& strPath);

/// The text of errno.
Lib_String Get_System_Text(int nError);

/// A connection to the desk that serves there; if there is none, what is in the way is in strFault.
Descriptor Connect_To_Desk(const Lib_String& strPath, Lib_String& strFault);

/// A socket in the file system on which a desk listens. Its file is removed with it.
class Listener
{
public:
    /// Takes the path: a file that a dead desk left there is replaced, anything else is left alone, and what
    /// it is stands in strFault. Of two desks that begin at once, one gets it. Only the user of this process
    /// (and root) can connect.
    bool Open(const Lib_String& strPath, Lib_String& strFault);

    /// From here on nobody connects. What others have put in the file's place stays.
    void Close();

    Listener() = default;
    Listener(const Listener&) = delete;
    Listener& operator=(const Listener&) = delete;
    ~Listener() { Close(); }

    int Get() const { return m_Socket.Get(); }

private:
    bool clear_Place(Lib_String& strFault) const;
    bool bind_There(Lib_String& strFault);

    Descriptor m_Socket;
    sockaddr_un m_Address{};
    dev_t m_nDevice = 0; ///< with the number, which file is ours
    ino_t m_nNumber = 0;
};

#endif
