// Where the user's folders are on Linux, and what becomes of paths that are none.

#include "lib_platform.h"
#include "lib_services.h"
#include "test_text.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>

#include <sys/stat.h>
#include <unistd.h>

namespace
{

/// A variable of the environment, as it was again afterwards.
class Variable
{
public:
    Variable(const char* pName, const char* pValue) : m_pName(pName)
    {
        const char* const pFormer = std::getenv(pName);
        m_bSet = pFormer != nullptr;
        m_strFormer = m_bSet ? pFormer : "";
        pValue != nullptr ? setenv(pName, pValue, 1) : unsetenv(pName);
    }
    Variable(const Variable&) = delete;
    Variable& operator=(const Variable&) = delete;
    ~Variable() { m_bSet ? setenv(m_pName, m_strFormer.c_str(), 1) : unsetenv(m_pName); }

private:
    const char* m_pName;
    bool m_bSet;
    std::string m_strFormer;
};

std::string Native(const Lib_StringW& strPath)
{
    std::string native(static_cast<std::size_t>(Lib_Get_Native_Path(strPath, nullptr, 0)), '?');
    EXPECT_EQ(static_cast<int>(native.size()),
              Lib_Get_Native_Path(strPath, native.data(), static_cast<int>(native.size())));
    native.pop_back();
    return native;
}

std::string What_Throws(Lib_StringW (*pfnPath)())
{
    try
    {
        return "nothing: " + Native(pfnPath());
    }
    catch (const std::runtime_error& error)
    {
        return error.what();
    }
}

TEST(Directories_On_Linux, Follow_The_Desktops_Convention)
{
    const Variable home("HOME", "/home/\xD0\x96 user");
    {
        const Variable data("XDG_DATA_HOME", nullptr);
        const Variable state("XDG_STATE_HOME", "relative");
        EXPECT_EQ("/home/\xD0\x96 user/.local/share", Native(localDirectoryPath()));
        EXPECT_EQ("/home/\xD0\x96 user/.local/state/Vorel Co/Quillon", Native(pinCacheDirectory()));
    }
    {
        const Variable root("HOME", "//");
        const Variable data("XDG_DATA_HOME", nullptr);
        const Variable state("XDG_STATE_HOME", nullptr);
        EXPECT_EQ("/.local/share", Native(localDirectoryPath()));
        EXPECT_EQ("/.local/state/Vorel Co", Native(companyDirectory()));
    }
    {
        const Variable data("XDG_DATA_HOME", "/");
        const Variable state("XDG_STATE_HOME", "///");
        EXPECT_EQ("/.", Native(localDirectoryPath()));
        EXPECT_EQ("/./Vorel Co", Native(companyDirectory()));
    }
    const Variable data("XDG_DATA_HOME", "/srv/data/");
    const Variable state("XDG_STATE_HOME", "//srv/state");
    EXPECT_EQ("/srv/data", Native(localDirectoryPath()));
    EXPECT_EQ(0, localLowDirectoryPath().Compare(L"\\srv\\state"));
}

TEST(Directories_On_Linux, Refuse_Paths_That_Have_No_Form_Here)
{
    for (const char* const pPath : {"/back\\slash", "/half \xFF"})
    {
        const Variable data("XDG_DATA_HOME", pPath);
        const Variable state("XDG_STATE_HOME", pPath);
        EXPECT_EQ("Error while obtaining AppData path", What_Throws(localDirectoryPath));
        EXPECT_EQ("Error while obtaining AppDataLow path", What_Throws(companyDirectory));
    }
    const std::string strLong = "/" + std::string(300, 'l');
    const Variable data("XDG_DATA_HOME", strLong.c_str());
    const Variable state("XDG_STATE_HOME", strLong.c_str());
    EXPECT_EQ("Error while obtaining AppData path", What_Throws(localDirectoryPath));
    EXPECT_EQ(strLong, Native(localLowDirectoryPath()));
    EXPECT_EQ("Error creating directory", What_Throws(createPinCacheDirectory));
    EXPECT_EQ(DWORD{ERROR_FILENAME_EXCED_RANGE}, GetLastError());
}

TEST(Directories_On_Linux, Are_Made_For_The_User_Alone)
{
    const std::string base = Native(localLowDirectoryPath()) + "/made/here";
    const Variable state("XDG_STATE_HOME", base.c_str());
    const mode_t mask = umask(0);
    const std::string path = Native(createPinCacheDirectory());
    umask(mask);
    for (std::filesystem::path each = path; each != std::filesystem::path(base).parent_path().parent_path();
         each = each.parent_path())
    {
        struct stat status = {};
        EXPECT_EQ(0, stat(each.c_str(), &status)) << each;
        EXPECT_EQ(0700U, status.st_mode & 0777U) << each;
    }
    std::filesystem::remove(path);
    std::ofstream(path) << "a file in its place";
    EXPECT_EQ("Error creating directory", What_Throws(createPinCacheDirectory));
    EXPECT_EQ(DWORD{ERROR_DIRECTORY}, GetLastError());
    EXPECT_EQ(267, SHCreateDirectory(nullptr, pinCacheDirectory()));
    EXPECT_EQ(3, SHCreateDirectory(nullptr, pinCacheDirectory() + L"\\below"));
}

TEST(Directories_On_Linux, Are_Asked_For_In_The_Platforms_Words)
{
    wchar_t aPath[MAX_PATH];
    wchar_t* pPath = aPath;
    EXPECT_EQ(E_INVALIDARG, SHGetFolderPathW(nullptr, CSIDL_APPDATA, nullptr, 0, nullptr));
    EXPECT_EQ(E_INVALIDARG, SHGetFolderPathW(nullptr, 9999, nullptr, 0, aPath));
    EXPECT_EQ(static_cast<HRESULT>(0x80070032), SHGetFolderPathW(nullptr, CSIDL_APPDATA, nullptr, 1, aPath));
    EXPECT_EQ(static_cast<HRESULT>(0x80070002), SHGetKnownFolderPath(GUID{}, 0, nullptr, &pPath));
    EXPECT_EQ(nullptr, pPath);
    CoTaskMemFree(nullptr);
    EXPECT_EQ(161, SHCreateDirectory(nullptr, L"relative"));
    EXPECT_EQ(161, SHCreateDirectory(nullptr, L"\\\\server\\share"));
    EXPECT_EQ(3, SHCreateDirectory(nullptr, nullptr));
    char aNative[4];
    EXPECT_EQ(0, Lib_Get_Native_Path(L"\\abc", aNative, 4));
    EXPECT_EQ(DWORD{ERROR_INSUFFICIENT_BUFFER}, GetLastError());
    EXPECT_EQ(0, Lib_Get_Native_Path(L"\xD800", aNative, 4));
    EXPECT_EQ(DWORD{ERROR_NO_UNICODE_TRANSLATION}, GetLastError());
    EXPECT_EQ(0, Lib_Get_Native_Path(nullptr, aNative, 4));
    EXPECT_EQ(DWORD{ERROR_INVALID_PARAMETER}, GetLastError());
}

} // namespace
