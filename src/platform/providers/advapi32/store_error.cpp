#include "platform/providers/advapi32/store_error.h"

#include <cerrno>

#include <sqlite3.h>

namespace qn_advapi32
{

using namespace qn_platform;

DWORD Code_Of_System(int system_error)
{
    switch (system_error)
    {
    case ENOENT:
    case ENOTDIR:
        return ERROR_PATH_NOT_FOUND;
    case EACCES:
    case EPERM:
    case ELOOP:
        return ERROR_ACCESS_DENIED;
    case EROFS:
        return ERROR_WRITE_PROTECT;
    case ENOSPC:
    case EDQUOT:
        return ERROR_DISK_FULL;
    case EMFILE:
    case ENFILE:
        return ERROR_TOO_MANY_OPEN_FILES;
    case ENOMEM:
        return ERROR_NOT_ENOUGH_MEMORY;
    case ENAMETOOLONG:
        return ERROR_FILENAME_EXCED_RANGE;
    default:
        return ERROR_REGISTRY_IO_FAILED;
    }
}

DWORD Code_Of_Sqlite(int result, int system_error)
{
    if (result == SQLITE_IOERR_NOMEM) // no fault of the system is behind it
        return ERROR_NOT_ENOUGH_MEMORY;
    switch (result & 0xFF)
    {
    case SQLITE_OK:
    case SQLITE_ROW:
    case SQLITE_DONE:
        return ERROR_SUCCESS;
    case SQLITE_CORRUPT:
    case SQLITE_NOTADB:
        return ERROR_BADDB;
    case SQLITE_FULL:
        return ERROR_DISK_FULL;
    case SQLITE_NOMEM:
        return ERROR_NOT_ENOUGH_MEMORY;
    case SQLITE_BUSY:
    case SQLITE_LOCKED:
    case SQLITE_PROTOCOL:
        return ERROR_BUSY;
    case SQLITE_READONLY:
    case SQLITE_PERM:
    case SQLITE_AUTH:
        return system_error == EROFS ? ERROR_WRITE_PROTECT : ERROR_ACCESS_DENIED;
    case SQLITE_CANTOPEN:
    case SQLITE_IOERR:
        return Code_Of_System(system_error);
    default:
        return ERROR_BADDB; // the tables are not as the format says
    }
}

} // namespace qn_advapi32
