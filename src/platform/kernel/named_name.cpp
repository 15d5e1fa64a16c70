#include "platform/kernel/named_name.h"

#include "platform/kernel/session.h"

#include <atomic>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <string_view>

#include <climits>
#include <sys/stat.h>

namespace qn_platform::kernel
{

namespace
{

constexpr DWORD NO_SUCH_PATH = 3;
constexpr DWORD NO_MEMORY = 8;
constexpr DWORD INVALID_NAME = 123;
constexpr DWORD NAME_TOO_LONG = 206;

/// The process's own from its start; a forked child has its parent's. As with the session, each reader reads
/// the same, and no lock is needed.
/// False when the kernel can't tell just now.
bool get_Process_Space(unsigned long long& space)
{
    static constinit std::atomic<unsigned long long> nKnown{0};
    space = nKnown.load(std::memory_order_relaxed);
    struct stat status = {};
    if (space != 0 || ::stat("/proc/self/ns/pid", &status) != 0)
    {
        return space != 0 || errno == ENOENT; // one without name spaces has one for all
    }
    space = status.st_ino;
    nKnown.store(space, std::memory_order_relaxed);
    return true;
}

/// The unit count of a text, at most one more than a name may have.
std::size_t measure(const wchar_t* text)
{
    std::size_t nLength = 0;
    while (nLength <= MOST_NAME_UNITS && text[nLength] != 0)
    {
        ++nLength;
    }
    return nLength;
}

bool skip_Prefix(const wchar_t*& text, std::size_t& length, std::string_view prefix)
{
    if (length < prefix.size())
    {
        return false;
    }
    for (std::size_t i = 0; i < prefix.size(); ++i)
    {
        if (text[i] != static_cast<wchar_t>(prefix[i]))
        {
            return false;
        }
    }
    text += prefix.size();
    length -= prefix.size();
    return true;
}

bool stands_For_Itself(wchar_t unit)
{
    return (unit >= 'a' && unit <= 'z') || (unit >= 'A' && unit <= 'Z') || (unit >= '0' && unit <= '9') ||
           unit == '-' || unit == '_' || unit == '{' || unit == '}';
}

std::uint64_t hash_Units(const wchar_t* text, std::size_t length, std::uint64_t seed)
{
    std::uint64_t nHash = seed;
    for (std::size_t i = 0; i < length; ++i)
    {
        nHash = (nHash ^ text[i]) * 0x9E3779B97F4A7C15;
        nHash ^= nHash >> 29;
    }
    nHash = (nHash ^ (nHash >> 32)) * 0xD6E8FEB86659FD93;
    return nHash ^ (nHash >> 32);
}

/// False when there is not enough room.
bool spell_Out(const wchar_t* text, std::size_t length, char* target, std::size_t room)
{
    for (std::size_t i = 0; i < length; ++i)
    {
        const std::size_t nNeed = stands_For_Itself(text[i]) ? 1 : 5;
        if (room <= nNeed)
        {
            return false;
        }
        if (nNeed == 1)
        {
            *target = static_cast<char>(text[i]);
        }
        else
        {
            std::snprintf(target, room, "%%%04X", static_cast<unsigned int>(text[i]));
        }
        target += nNeed;
        room -= nNeed;
    }
    *target = 0;
    return true;
}

/// The answer is 0, or why name space or session are not known. `length` is that of what was written.
DWORD write_Prefix(bool machine, Object_Name& parsed, int& length)
{
    unsigned long long nSpace = 0;
    if (!get_Process_Space(nSpace))
    {
        return NO_MEMORY;
    }
    if (machine)
    {
        length = std::snprintf(parsed.path, sizeof parsed.path, "%s/qnlib.%llu.g.", NAMED_FOLDER, nSpace);
        return 0;
    }
    DWORD dwSession = 0;
    const DWORD nError = Get_Own_Session(dwSession);
    length =
        std::snprintf(parsed.path, sizeof parsed.path, "%s/qnlib.%llu.s%u.", NAMED_FOLDER, nSpace, dwSession);
    return nError;
}

DWORD write_Path(Object_Name& parsed, bool machine)
{
    int nStart = 0;
    if (const DWORD nError = write_Prefix(machine, parsed, nStart))
    {
        return nError;
    }
    char* const pTarget = parsed.path + nStart;
    const std::size_t nRoom = sizeof NAMED_FOLDER + NAME_MAX + 1 - static_cast<std::size_t>(nStart);
    if (!spell_Out(parsed.text, parsed.length, pTarget, nRoom))
    {
        std::snprintf(pTarget, nRoom, "#%016llX%016llX",
                      static_cast<unsigned long long>(hash_Units(parsed.text, parsed.length, 1)),
                      static_cast<unsigned long long>(hash_Units(parsed.text, parsed.length, 2)));
    }
    parsed.hash = 0;
    for (const char* pNext = parsed.path; *pNext != 0; ++pNext)
    {
        parsed.hash = (parsed.hash ^ static_cast<unsigned char>(*pNext)) * 0x01000193;
    }
    return 0;
}

} // namespace

DWORD Parse_Object_Name(LPCWSTR name, Object_Name& parsed)
{
    parsed.text = name;
    parsed.length = measure(name);
    if (parsed.length > MOST_NAME_UNITS)
    {
        return NAME_TOO_LONG;
    }
    const bool bMachine = skip_Prefix(parsed.text, parsed.length, "Global\\");
    if (!bMachine)
    {
        skip_Prefix(parsed.text, parsed.length, "Local\\");
    }
    if (parsed.length == 0)
    {
        return INVALID_NAME;
    }
    for (std::size_t i = 0; i < parsed.length; ++i)
    {
        if (parsed.text[i] == '\\')
        {
            return NO_SUCH_PATH;
        }
    }
    return write_Path(parsed, bMachine);
}

File_Prefix Get_File_Prefix()
{
    File_Prefix prefix;
    unsigned long long nSpace = 0;
    get_Process_Space(nSpace); // known to whoever has parsed a name
    std::snprintf(prefix.text, sizeof prefix.text, "qnlib.%llu.", nSpace);
    return prefix;
}

} // namespace qn_platform::kernel
