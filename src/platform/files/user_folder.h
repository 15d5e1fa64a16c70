#ifndef QNLIB_SRC_PLATFORM_FILES_USER_FOLDER_H
#define QNLIB_SRC_PLATFORM_FILES_USER_FOLDER_H

// Folders of the user by the desktop's base-directory convention (XDG base directories, version 0.8). In
// the header alone, since the layer and a provider use it.

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <string>
#include <vector>

#include <pwd.h>
#include <unistd.h>

namespace qn_platform
{

/// With one slash in front and none at the end; the root is "/" still.
inline std::string Strip_Slashes(std::string folder)
{
    folder.erase(0, std::min(folder.find_first_not_of('/'), folder.size()) - 1);
    while (folder.size() > 1 && folder.back() == '/')
    {
        folder.pop_back();
    }
    return folder;
}

/// A folder that the environment names. Programs that run with more rights than their caller has do not ask
/// it; a relative path counts as none.
inline std::string Get_Named_Folder(const char* variable)
{
    const char* const folder = secure_getenv(variable);
    return folder != nullptr && *folder == '/' ? Strip_Slashes(folder) : "";
}

/// That of the environment, or else of the user database; empty if neither knows one.
inline std::string Get_Home()
{
    std::string home = Get_Named_Folder("HOME");
    if (!home.empty())
    {
        return home;
    }
    std::vector<char> texts(16384);
    passwd record{};
    passwd* found = nullptr;
    while (getpwuid_r(geteuid(), &record, texts.data(), texts.size(), &found) == ERANGE)
    {
        texts.resize(2 * texts.size());
    }
    return found != nullptr && *record.pw_dir == '/' ? Strip_Slashes(record.pw_dir) : "";
}

/// The folder that the variable names, or the default place in the home ("/.local/share"); empty if there is
/// no home. The root is "/.": what is put behind a slash, or a backslash, is a path in it.
inline std::string Get_User_Folder(const char* variable, const char* below_home)
{
    std::string named = Get_Named_Folder(variable);
    if (!named.empty())
    {
        return named == "/" ? "/." : named;
    }
    const std::string home = Get_Home();
    return home.size() <= 1 ? (home.empty() ? home : below_home) : home + below_home;
}

} // namespace qn_platform

#endif
