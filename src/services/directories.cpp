#include "services/directories.h"

#include "lib_platform.h"

#include <memory>
#include <stdexcept>

namespace
{

struct Task_Memory
{
    void operator()(wchar_t* pBlock) const { CoTaskMemFree(pBlock); }
};

} // namespace

Lib_StringW localDirectoryPath()
{
    wchar_t aPath[MAX_PATH] = {};
    if (SHGetFolderPathW(nullptr, CSIDL_APPDATA, nullptr, 0, aPath) < 0)
    {
        throw std::runtime_error("Error while obtaining AppData path");
    }
    return aPath;
}

Lib_StringW localLowDirectoryPath()
{
    constexpr KNOWNFOLDERID LOCAL_LOW = {
        0xA520A1A4, 0x1780, 0x4FF6, {0xBD, 0x18, 0x16, 0x73, 0x43, 0xC5, 0xAF, 0x16}};
    wchar_t* pPath = nullptr;
    const HRESULT nResult = SHGetKnownFolderPath(LOCAL_LOW, 0, nullptr, &pPath);
    const std::unique_ptr<wchar_t, Task_Memory> path(pPath); // may be there on failure, too
    if (nResult < 0)
    {
        throw std::runtime_error("Error while obtaining AppDataLow path");
    }
    return path.get();
}

Lib_StringW companyDirectory()
{
    Lib_StringW strPath = localLowDirectoryPath();
    if (strPath.Is_Empty())
    {
        strPath = localDirectoryPath();
    }
    return strPath + L"\\Vorel Co";
}

Lib_StringW pinCacheDirectory() { return companyDirectory() + L"\\Quillon"; }

Lib_StringW createPinCacheDirectory()
{
    const Lib_StringW strPath = pinCacheDirectory();
    if (SHCreateDirectory(nullptr, strPath) != ERROR_SUCCESS)
    {
        const DWORD dwError = GetLastError();
        if (dwError != ERROR_FILE_EXISTS && dwError != ERROR_ALREADY_EXISTS)
        {
            throw std::runtime_error("Error creating directory");
        }
    }
    return strPath;
}
