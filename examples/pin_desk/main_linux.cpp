#include "host.h"

#include "stop_signals.h"

#include <cerrno>
#include <cstring>
#include <iterator>
#include <vector>

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

// Linux hands texts over as UTF-8.

std::FILE* Open_For_Reading(const Lib_String& strPath)
{
    Lib_Buffer Path;
    if (!Lib_WString_To_UTF8_Buffer(strPath, static_cast<unsigned long>(strPath.Get_Length()), Path))
    {
        errno = ENOENT;
        return nullptr;
    }
    Path.Append("", 1);
    return std::fopen(static_cast<const char*>(Path.Get_Ptr()), "rb");
}

/// Without the file's own block, which would have to be full before anything of a pipe is seen.
long long Read_Bytes(std::FILE* pFile, char* pBytes, std::size_t nRoom)
{
    pollfd Files[] = {{fileno(pFile), POLLIN, 0}, {Get_Stop_Bell(), POLLIN, 0}};
    while (poll(Files, std::size(Files), -1) < 0)
    {
        if (errno != EINTR)
            return -1;
    }
    if (Files[1].revents != 0)
        return 0;
    ssize_t nRead = 0;
    do
        nRead = read(fileno(pFile), pBytes, nRoom);
    while (nRead < 0 && errno == EINTR);
    return nRead;
}

std::FILE* Open_For_Appending(const Lib_String& strPath)
{
    const int nSize = Lib_Get_Native_Path(strPath, nullptr, 0);
    std::vector<char> Path(static_cast<std::size_t>(nSize));
    if (nSize == 0 || Lib_Get_Native_Path(strPath, Path.data(), nSize) != nSize)
        return nullptr;
    const int nFile = open(Path.data(), O_RDWR | O_APPEND | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600);
    std::FILE* pFile = nFile >= 0 ? fdopen(nFile, "a+b") : nullptr;
    if (nFile >= 0 && pFile == nullptr)
        close(nFile);
    return pFile;
}

HANDLE Make_Session_Token(unsigned int nSession)
{
    return Lib_Create_Session_Token(nSession, TOKEN_QUERY | TOKEN_IMPERSONATE);
}

int main(int nArguments, char** ppArguments)
{
    std::vector<Lib_String> Texts(static_cast<std::size_t>(nArguments));
    std::vector<wchar_t*> Pointers;
    for (std::size_t i = 0; i < Texts.size(); ++i)
    {
        auto* pText = reinterpret_cast<unsigned char*>(ppArguments[i]);
        Lib_UTF8_Buffer_To_WString(pText, std::strlen(ppArguments[i]), Texts[i]);
        Pointers.push_back(Texts[i].Get_Buffer(Texts[i].Get_Length()));
    }
    return Run_Pin_Desk(nArguments, Pointers.data());
}
