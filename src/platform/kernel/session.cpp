#include "platform/kernel/session.h"

#include <cstdio>

namespace qn_platform::kernel
{

namespace
{

bool read_Session_File(const char* path, DWORD& session)
{
    constexpr DWORD UNSET = 0xFFFFFFFF;
    FILE* const pFile = std::fopen(path, "re");
    if (pFile == nullptr)
    {
        return false;
    }
    DWORD dwRead = UNSET;
    const bool bRead = std::fscanf(pFile, "%u", &dwRead) == 1;
    std::fclose(pFile);
    session = dwRead == UNSET ? 0 : dwRead;
    return bRead;
}

} // namespace

DWORD Get_Own_Session()
{
    static const DWORD session = []
    {
        DWORD dwRead = 0;
        return read_Session_File("/proc/self/sessionid", dwRead) ? dwRead : 0;
    }();
    return session;
}

bool Read_Session(int process, DWORD& session)
{
    char path[40];
    std::snprintf(path, sizeof path, "/proc/%d/sessionid", process);
    return read_Session_File(path, session);
}

} // namespace qn_platform::kernel
