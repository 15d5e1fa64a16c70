#include "host.h"

#include <cerrno>
#include <io.h>
#include <lib_kernel.h>

// Windows hands texts over in 16 bits, and its console must be told that the report is UTF-8.

std::FILE* Open_For_Reading(const Lib_String& strPath)
{
    const DWORD nAttributes = GetFileAttributesW(strPath);
    if (nAttributes != INVALID_FILE_ATTRIBUTES && (nAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0)
    {
        errno = EISDIR; // of itself the runtime only says that a directory may not be read
        return nullptr;
    }
    return _wfopen(strPath, L"rb");
}

long long Read_Bytes(std::FILE* pFile, char* pBytes, std::size_t nRoom)
{
    return _read(_fileno(pFile), pBytes, static_cast<unsigned int>(nRoom));
}

std::FILE* Open_For_Appending(const Lib_String& strPath) { return _wfopen(strPath, L"a+b"); }

// Tokens for sessions are given to those who act as part of the operating system, services as a rule; others
// get ERROR_PRIVILEGE_NOT_HELD.
HANDLE Make_Session_Token(unsigned int nSession)
{
    Lib_Handle Own;
    Lib_Handle Copy;
    HANDLE hToken = nullptr;
    if (!OpenProcessToken(GetCurrentProcess(), TOKEN_DUPLICATE | TOKEN_QUERY, &hToken))
        return nullptr;
    Own.Attach(hToken);
    if (!DuplicateTokenEx(Own, TOKEN_ALL_ACCESS, nullptr, SecurityImpersonation, TokenImpersonation, &hToken))
        return nullptr;
    Copy.Attach(hToken);
    DWORD nValue = nSession;
    DWORD nSize = 0;
    if (!SetTokenInformation(Copy, TokenSessionId, &nValue, sizeof(nValue)) ||
        !GetTokenInformation(Copy, TokenSessionId, &nValue, sizeof(nValue), &nSize))
        return nullptr;
    if (nValue != nSession)
    {
        SetLastError(ERROR_NOT_SUPPORTED);
        return nullptr;
    }
    return DuplicateHandle(GetCurrentProcess(), Copy, GetCurrentProcess(), &hToken, 0, FALSE,
                           DUPLICATE_SAME_ACCESS)
               ? hToken
               : nullptr;
}

int wmain(int nArguments, wchar_t** ppArguments)
{
    SetConsoleOutputCP(CP_UTF8);
    return Run_Pin_Desk(nArguments, ppArguments);
}
