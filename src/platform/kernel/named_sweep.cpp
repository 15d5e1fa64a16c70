#include "platform/kernel/named_sweep.h"

#include "platform/kernel/named_calls.h"
#include "platform/kernel/named_locks.h"
#include "platform/kernel/named_name.h"

#include <cstdio>
#include <cstring>

#include <dirent.h>
#include <fcntl.h>
#include <unistd.h>

namespace qn_platform::kernel
{

namespace
{

/// Opens only what this user could remove.
void sweep_File(const char* path)
{
    struct stat status = {};
    if (::lstat(path, &status) != 0 || !S_ISREG(status.st_mode) ||
        (status.st_uid != ::geteuid() && ::geteuid() != 0))
    {
        return;
    }
    const File file(named_calls.open_file(path, O_RDWR | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK, 0));
    if (file.Is_Open() && Lock_Door(file, 0) && named_calls.stat_file(file.get(), &status) == 0 &&
        status.st_nlink == 1 && !Is_Used(file))
    {
        named_calls.unlink_file(path);
    }
}

} // namespace

void Sweep_Leftovers()
{
    DIR* const pFolder = ::opendir(NAMED_FOLDER);
    if (pFolder == nullptr)
    {
        return;
    }
    constexpr int MOST_FILES = 256;
    const File_Prefix prefix = Get_File_Prefix();
    int nLeft = MOST_FILES;
    while (const dirent* const pEntry = ::readdir(pFolder))
    {
        if (std::strncmp(pEntry->d_name, prefix.text, std::strlen(prefix.text)) != 0)
        {
            continue;
        }
        char path[sizeof NAMED_FOLDER + sizeof pEntry->d_name];
        std::snprintf(path, sizeof path, "%s/%s", NAMED_FOLDER, pEntry->d_name);
        sweep_File(path);
        if (--nLeft == 0)
        {
            break;
        }
    }
    ::closedir(pFolder);
}

} // namespace qn_platform::kernel
