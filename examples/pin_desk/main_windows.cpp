#include "host.h"

#include <cerrno>
#include <lib_platform.h>

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

int wmain(int nArguments, wchar_t** ppArguments)
{
    SetConsoleOutputCP(CP_UTF8);
    return Run_Pin_Desk(nArguments, ppArguments);
}
