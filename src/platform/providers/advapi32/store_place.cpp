#include "platform/providers/advapi32/store_place.h"

#include "platform/files/user_folder.h"
#include "platform/providers/advapi32/store_error.h"

#include <cerrno>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace qn_advapi32
{

using namespace qn_platform;

namespace
{

/// Makes one folder. A mode that others shall see is set against the process's mask.
int make_One(const std::string& folder, mode_t mode)
{
    if (mkdir(folder.c_str(), mode) == 0)
        return (mode & S_IROTH) != 0 && chmod(folder.c_str(), mode) != 0 ? errno : 0;
    if (errno != EEXIST)
        return errno;
    struct stat status = {};
    return stat(folder.c_str(), &status) != 0 ? errno : S_ISDIR(status.st_mode) ? 0 : ENOTDIR;
}

/// The same with those above it. A link that leads nowhere stands in the way of both.
int make_Folder(const std::string& folder, mode_t mode)
{
    const int error = make_One(folder, mode);
    const std::size_t end = folder.rfind('/');
    if (error != ENOENT || end == 0 || end == std::string::npos)
        return error;
    const int above = make_Folder(folder.substr(0, end), mode);
    return above == 0 ? make_One(folder, mode) : above;
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
    const int error = make_Folder(m_strFolder, m_nFolder_Mode);
    if (error != 0)
        return Code_Of_System(error);
    const int file = open(m_strFile.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, m_nFile_Mode);
    if (file < 0)
        return errno == EEXIST ? ERROR_SUCCESS : Code_Of_System(errno);
    const bool set = fchmod(file, m_nFile_Mode) == 0;
    const DWORD result = set ? ERROR_SUCCESS : Code_Of_System(errno);
    close(file);
    return result;
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
    while (folder.rfind('/') != 0 && faccessat(AT_FDCWD, folder.c_str(), F_OK, AT_EACCESS) != 0 &&
           errno == ENOENT)
        folder.resize(folder.rfind('/'));
    return check_Access(folder, W_OK | X_OK);
}

} // namespace qn_advapi32
