#include "platform/kernel/session.h"

#include "platform/system_calls.h"

#include <cerrno>
#include <charconv>
#include <cstdio>

#include <fcntl.h>
#include <unistd.h>

namespace qn_platform::kernel
{

namespace
{

constexpr DWORD FILE_MISSING = 2;
constexpr DWORD TOO_MANY_FILES = 4;
constexpr DWORD DENIED = 5;
constexpr DWORD NO_MEMORY = 8;

constexpr char OWN_FILE[] = "/proc/self/sessionid";

constinit Session_Once g_Own_Session;

DWORD tell_Error(int error)
{
    switch (error)
    {
    case ENOENT:
        return FILE_MISSING;
    case EMFILE:
    case ENFILE:
        return TOO_MANY_FILES;
    case ENOMEM:
        return NO_MEMORY;
    default:
        return DENIED;
    }
}

DWORD parse(const char* text, const char* end, DWORD& session)
{
    constexpr DWORD UNSET = 0xFFFFFFFF;
    DWORD dwRead = UNSET;
    if (std::from_chars(text, end, dwRead).ec != std::errc())
    {
        return DENIED;
    }
    session = dwRead == UNSET ? 0 : dwRead;
    return 0;
}

DWORD read_File(const char* path, DWORD& session)
{
    const int nFile = system_calls.open_file(path, O_RDONLY | O_CLOEXEC);
    if (nFile < 0)
    {
        return tell_Error(errno);
    }
    char text[16];
    const ssize_t nRead = ::read(nFile, text, sizeof text);
    const DWORD nError = nRead < 0 ? tell_Error(errno) : parse(text, text + nRead, session);
    ::close(nFile);
    return nError;
}

bool is_There(const char* path) { return system_calls.access_file(path, F_OK) == 0 || errno != ENOENT; }

} // namespace

DWORD Session_Once::Get(DWORD& session)
{
    constexpr std::uint64_t KNOWN = 1ull << 32;
    std::uint64_t nSession = m_nSession.load(std::memory_order_acquire);
    if (nSession == 0)
    {
        DWORD dwRead = 0;
        const DWORD nError = read_File(OWN_FILE, dwRead);
        if (nError != 0 && nError != FILE_MISSING)
        {
            return nError;
        }
        nSession = KNOWN | dwRead;
        m_nSession.store(nSession, std::memory_order_release);
    }
    session = static_cast<DWORD>(nSession);
    return 0;
}

DWORD Get_Own_Session(DWORD& session) { return g_Own_Session.Get(session); }

DWORD Read_Session(int process, DWORD& session)
{
    char path[40];
    const int nFolder = std::snprintf(path, sizeof path, "/proc/%d", process);
    std::snprintf(path + nFolder, sizeof path - static_cast<std::size_t>(nFolder), "/sessionid");
    const DWORD nError = read_File(path, session);
    if (nError != FILE_MISSING)
    {
        return nError;
    }
    // A kernel without audit: all are as without a session.
    path[nFolder] = 0;
    if (is_There(path) && !is_There(OWN_FILE))
    {
        session = 0;
        return 0;
    }
    return DENIED;
}

} // namespace qn_platform::kernel
