#include "platform/providers/advapi32/store_place.h"

#include "platform/files/user_folder.h"
#include "platform/providers/advapi32/store_error.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace qn_advapi32
{

using namespace qn_platform;

namespace
{

/// A template for mkdtemp and mkstemp: a name beside the final one, for what is not ready yet.
std::string get_Draft(const std::string& path) { return path + ".XXXXXX"; }

bool is_Shared(mode_t mode) { return (mode & S_IROTH) != 0; }

/// 0, or errno: EEXIST when there is something of that name.
int rename_To_Free_Name(const std::string& from, const std::string& to)
{
    return renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) == 0 ? 0 : errno;
}

/// The same for a folder. Some file systems only know the plain rename, which replaces an empty one.
int rename_Folder(const std::string& from, const std::string& to)
{
    const int error = rename_To_Free_Name(from, to);
    if (error != EINVAL && error != EOPNOTSUPP && error != ENOSYS)
        return error;
    return std::rename(from.c_str(), to.c_str()) == 0 ? 0 : errno == ENOTEMPTY ? EEXIST : errno;
}

/// What others shall see has its mode, whatever the process's mask, before it has its name: who dies between
/// the two leaves nothing behind that nobody can open. EEXIST when somebody else was faster.
int make_Shared_Folder(const std::string& folder, mode_t mode)
{
    std::string draft = get_Draft(folder);
    if (mkdtemp(draft.data()) == nullptr)
        return errno;
    const int error = chmod(draft.c_str(), mode) == 0 ? rename_Folder(draft, folder) : errno;
    if (error != 0)
        rmdir(draft.c_str());
    return error;
}

/// Gives a draft its final name, unless there is one of that name: 0, or errno. Some file systems have no
/// links.
int publish(const std::string& draft, const std::string& path)
{
    const int error = link(draft.c_str(), path.c_str()) == 0 ? 0 : errno;
    const bool no_links = error == EPERM || error == EOPNOTSUPP || error == ENOSYS;
    return no_links ? rename_To_Free_Name(draft, path) : error;
}

/// An empty file. EEXIST when there is one. It is closed before it has its name: closing a descriptor of a
/// file takes away every lock that this process has on it, and another thread may have the store open at
/// once.
int make_File(const std::string& path, mode_t mode)
{
    std::string draft = get_Draft(path);
    const int file = mkostemp(draft.data(), O_CLOEXEC); // for its owner alone
    if (file < 0)
        return errno;
    const int error = is_Shared(mode) && fchmod(file, mode) != 0 ? errno : 0;
    close(file);
    const int published = error == 0 ? publish(draft, path) : error;
    unlink(draft.c_str());
    return published;
}

/// Makes one folder, if it is not there.
int make_One(const std::string& folder, mode_t mode)
{
    struct stat status = {};
    if (stat(folder.c_str(), &status) == 0)
        return S_ISDIR(status.st_mode) ? 0 : ENOTDIR;
    if (is_Shared(mode))
    {
        const int error = make_Shared_Folder(folder, mode);
        return error == EEXIST ? 0 : error;
    }
    if (mkdir(folder.c_str(), mode) == 0)
        return 0;
    // Somebody else was faster, or a link leads nowhere.
    const int error = errno;
    return error != EEXIST ? error : stat(folder.c_str(), &status) == 0 ? 0 : errno;
}

/// The same with those above it.
int make_Folder(const std::string& folder, mode_t mode)
{
    const int error = make_One(folder, mode);
    const std::size_t end = folder.rfind('/');
    if (error != ENOENT || end == 0 || end == std::string::npos)
        return error;
    const int above = make_Folder(folder.substr(0, end), mode);
    return above == 0 ? make_One(folder, mode) : above;
}

/// The file and its folder, as far as they are not there.
int make_Store(const std::string& folder, mode_t folder_mode, const std::string& file, mode_t file_mode)
{
    const int error = make_Folder(folder, folder_mode);
    if (error != 0)
        return error;
    const int made =
        faccessat(AT_FDCWD, file.c_str(), F_OK, AT_EACCESS) == 0 ? 0 : make_File(file, file_mode);
    return made == EEXIST ? 0 : made;
}

DWORD check_Access(const std::string& path, int access)
{
    return faccessat(AT_FDCWD, path.c_str(), access, AT_EACCESS) == 0 ? ERROR_SUCCESS : Code_Of_System(errno);
}

} // namespace

Store_Place::Store_Place(const std::string& folder, mode_t folder_mode, mode_t file_mode)
    : m_bNowhere(false), m_strFolder(folder), m_strFile(folder.empty() ? "" : folder + "/registry.db"),
      m_nFolder_Mode(folder_mode), m_nFile_Mode(file_mode)
{
}

Store_Place Store_Place::User()
{
    const std::string data = Get_User_Folder("XDG_DATA_HOME", "/.local/share");
    return {data.empty() ? data : data + "/qnlib", 0700, 0600};
}

Store_Place Store_Place::Machine()
{
    const std::string named = Get_Named_Folder("QNLIB_MACHINE_STORE");
    return {named.empty() ? "/var/lib/qnlib" : named, 0755, 0644};
}

DWORD Store_Place::Find() const
{
    if (m_strFile.empty())
        return m_bNowhere ? ERROR_FILE_NOT_FOUND : ERROR_PATH_NOT_FOUND;
    const DWORD error = check_Access(m_strFile, F_OK);
    return error == ERROR_PATH_NOT_FOUND ? static_cast<DWORD>(ERROR_FILE_NOT_FOUND) : error;
}

DWORD Store_Place::Make() const
{
    if (m_strFile.empty())
        return m_bNowhere ? ERROR_ACCESS_DENIED : ERROR_PATH_NOT_FOUND;
    // Another process's plain rename may replace the folder before the file is in it; each does so once.
    int error = ENOENT;
    for (int tries = 0; tries < 20 && error == ENOENT; ++tries)
        error = make_Store(m_strFolder, m_nFolder_Mode, m_strFile, m_nFile_Mode);
    return error == 0 ? ERROR_SUCCESS : Code_Of_System(error);
}

DWORD Store_Place::Check_Writable() const
{
    if (m_strFile.empty())
        return m_bNowhere ? ERROR_ACCESS_DENIED : ERROR_PATH_NOT_FOUND;
    if (Find() == ERROR_SUCCESS)
    {
        // The journal lies beside the file.
        const DWORD file = check_Access(m_strFile, W_OK);
        return file == ERROR_SUCCESS ? check_Access(m_strFolder, W_OK | X_OK) : file;
    }
    std::string folder = m_strFolder;
    while (folder.size() > 1 && faccessat(AT_FDCWD, folder.c_str(), F_OK, AT_EACCESS) != 0 && errno == ENOENT)
        folder.resize(std::max<std::size_t>(folder.rfind('/'), 1));
    return check_Access(folder, W_OK | X_OK);
}

} // namespace qn_advapi32
