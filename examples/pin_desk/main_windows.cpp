#include "host.h"

#include <lib_platform.h>

// Windows hands texts over in 16 bits, and its console must be told that the report is UTF-8.

std::FILE* Open_For_Reading(const Lib_String& strPath)
{
    return strPath.Is_Empty() ? nullptr : _wfopen(strPath, L"rb");
}

int wmain(int nArguments, wchar_t** ppArguments)
{
    SetConsoleOutputCP(CP_UTF8);
    return Run_Pin_Desk(nArguments, ppArguments);
}
