#include "platform/kernel/named_file.h"

#include "platform/kernel/named_calls.h"
#include "platform/kernel/named_locks.h"
#include "platform/kernel/named_words.h"
#include "platform/kernel/page_guard.h"

#include <cerrno>
#include <cstdio>
#include <cstring>

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

namespace qn_platform::kernel
{

namespace
{

constexpr DWORD FILE_MISSING = 2;
constexpr DWORD PATH_MISSING = 3;
constexpr DWORD TOO_MANY_FILES = 4;
constexpr DWORD DENIED = 5;
constexpr DWORD WRONG_KIND = 6;
constexpr DWORD NO_MEMORY = 8;
constexpr DWORD NOT_SUPPORTED = 50;
constexpr DWORD BUSY = 170;
constexpr DWORD EXISTS_ALREADY = 183;
constexpr DWORD TRY_AGAIN = 0xFFFFFFFF; // inside this file only: the file went, or came, in between

constexpr int JOINING_PATIENCE = 1000; // milliseconds at the door
constexpr int LEAVING_PATIENCE = 100;

constexpr mode_t FOR_ALL = 0666;
constexpr mode_t FOR_ONE = 0600;

DWORD tell_Error(int error)
{
    switch (error)
    {
    case ENOENT:
        return FILE_MISSING;
    case ENOTDIR:
        return PATH_MISSING;
    case EMFILE:
    case ENFILE:
        return TOO_MANY_FILES;
    case EACCES:
    case EPERM:
    case EROFS:
    case ELOOP: // not a file in the file's place
    case EISDIR:
    case ENXIO:
        return DENIED;
    case ENOMEM:
    case ENOSPC:
    case EDQUOT:
    case EAGAIN:
    case ENOLCK:
        return NO_MEMORY;
    default:
        return NOT_SUPPORTED;
    }
}

int open_File(const char* path, int flags)
{
    int nFile;
    do
    {
        nFile = named_calls.open_file(path, flags | O_RDWR | O_CLOEXEC, FOR_ONE);
    } while (nFile < 0 && errno == EINTR);
    return nFile;
}

/// A file in the place of an object may be anything.
int open_Path(const char* path) { return open_File(path, O_NOFOLLOW | O_NONBLOCK); }

/// Gives the file its one page, so that touching it never fails for want of memory.
DWORD allocate_Page(const File& file)
{
    int nResult;
    do
    {
        nResult = named_calls.allocate(file.get(), 0, 0, NAMED_PAGE_SIZE);
    } while (nResult != 0 && errno == EINTR);
    return nResult == 0 ? 0 : tell_Error(errno);
}

// ---- Mapping ---------------------------------------------------------------------------------------------

/// The shared page, with a private one behind it. No forked child has them: it would keep the sign of life.
DWORD map_File(Named_Object& object, const File& file)
{
    constexpr int ACCESS = PROT_READ | PROT_WRITE;
    void* const pBoth = named_calls.map(nullptr, MAPPING_SIZE, ACCESS, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (pBoth == MAP_FAILED)
    {
        return tell_Error(errno);
    }
    DWORD nError = 0;
    if (named_calls.map(pBoth, NAMED_PAGE_SIZE, ACCESS, MAP_SHARED | MAP_FIXED, file.get(), 0) ==
            MAP_FAILED ||
        named_calls.advise(pBoth, MAPPING_SIZE, MADV_DONTFORK) != 0)
    {
        nError = tell_Error(errno);
        named_calls.unmap(pBoth, MAPPING_SIZE);
        return nError;
    }
    object.page.store(static_cast<Named_Page*>(pBoth), std::memory_order_release);
    return 0;
}

/// Whether somebody else than this user and root can change the file.
bool is_Exposed(const struct stat& status)
{
    constexpr mode_t WRITABLE_BY_OTHERS = 022;
    return (status.st_mode & WRITABLE_BY_OTHERS) != 0 || (status.st_uid != 0 && status.st_uid != ::geteuid());
}

void note_File(Named_Object& object, const struct stat& status)
{
    object.inode = status.st_ino;
    object.exposed = is_Exposed(status);
    if (object.exposed)
    {
        Guard_Pages();
    }
}

void write_Page(Named_Object& object, const Object_Name& name, const Named_Request& request)
{
    Named_Page& page = object.Page();
    page.magic = PAGE_MAGIC;
    page.version = PAGE_VERSION;
    page.kind = request.kind;
    page.manual_reset = request.manual_reset ? 1 : 0;
    page.name_length = static_cast<std::uint16_t>(name.length);
    std::memcpy(page.name, name.text, name.length * sizeof(wchar_t));
    const bool bSet = request.kind == Kind::Event && request.initial;
    page.manual_state.store(bSet && request.manual_reset ? 1 : 0, std::memory_order_relaxed);
    page.state.store(bSet && !request.manual_reset ? MARK : 0, std::memory_order_relaxed);
    object.manual_reset = request.manual_reset && request.kind == Kind::Event;
}

DWORD check_Page(Named_Object& object, const Object_Name& name, const Named_Request& request)
{
    const Named_Page& page = object.Page();
    const bool bGood = page.magic == PAGE_MAGIC && page.version == PAGE_VERSION &&
                       page.kind == request.kind && page.name_length == name.length &&
                       std::memcmp(page.name, name.text, name.length * sizeof(wchar_t)) == 0;
    object.manual_reset = request.kind == Kind::Event && page.manual_reset != 0;
    return bGood ? 0 : WRONG_KIND;
}

// ---- New files -------------------------------------------------------------------------------------------

/// Gives the finished file its name. Older kernels want a way through the list of open files for that.
DWORD publish(const File& file, const char* path)
{
    int nResult = named_calls.link_file(file.get(), "", AT_FDCWD, path, AT_EMPTY_PATH);
    if (nResult != 0 && errno == ENOENT)
    {
        char open_file[40];
        std::snprintf(open_file, sizeof open_file, "/proc/self/fd/%d", file.get());
        nResult = named_calls.link_file(AT_FDCWD, open_file, AT_FDCWD, path, AT_SYMLINK_FOLLOW);
    }
    if (nResult == 0)
    {
        return 0;
    }
    return errno == EEXIST ? TRY_AGAIN : tell_Error(errno);
}

/// Makes an empty file an object that this process uses.
DWORD fill(Named_Object& object, const File& file, const struct stat& status, const Object_Name& name,
           const Named_Request& request)
{
    DWORD nError = allocate_Page(file);
    if (nError == 0 && !Show_Life(file))
    {
        nError = tell_Error(errno);
    }
    if (nError == 0)
    {
        nError = map_File(object, file);
    }
    if (nError == 0)
    {
        note_File(object, status);
        write_Page(object, name, request);
    }
    return nError;
}

bool own_If_Asked(Named_Object& object, const Named_Request& request, Thread_Record* self)
{
    bool bAbandoned;
    return request.kind == Kind::Mutex && request.initial && Try_Lock(object, *self, bAbandoned);
}

/// Makes the object whole, life and first owner included, before anybody can see it.
DWORD make_New(Named_Object& object, const Object_Name& name, const Named_Request& request,
               Thread_Record* self)
{
    const File file(open_File(NAMED_FOLDER, O_TMPFILE));
    if (!file.Is_Open())
    {
        return errno == ENOENT ? PATH_MISSING : tell_Error(errno);
    }
    struct stat status = {};
    if ((request.open_to_all && named_calls.change_mode(file.get(), FOR_ALL) != 0) ||
        named_calls.stat_file(file.get(), &status) != 0)
    {
        return tell_Error(errno);
    }
    DWORD nError = fill(object, file, status, name, request);
    if (nError != 0)
    {
        return nError;
    }
    const bool bOwned = own_If_Asked(object, request, self);
    nError = publish(file, name.path);
    if (nError != 0 && bOwned)
    {
        Give_Up(object, *self, 0);
    }
    if (nError != 0)
    {
        Unmap_File(object);
    }
    return nError;
}

// ---- Files that are there --------------------------------------------------------------------------------

/// A file that nobody uses: its last user was killed. It goes, or serves as paper for the new object if it
/// is another user's, open to all, and so cannot go. With the door locked.
DWORD use_Leftover(Named_Object& object, const File& file, const struct stat& status, const Object_Name& name,
                   const Named_Request& request, bool create, Thread_Record* self)
{
    if (named_calls.unlink_file(name.path) == 0)
    {
        return create ? TRY_AGAIN : FILE_MISSING;
    }
    if (!create)
    {
        return FILE_MISSING;
    }
    if (!request.open_to_all || (status.st_mode & FOR_ALL) != FOR_ALL)
    {
        return DENIED;
    }
    if (named_calls.truncate_file(file.get(), 0) != 0)
    {
        return tell_Error(errno);
    }
    const DWORD nError = fill(object, file, status, name, request);
    if (nError == 0)
    {
        own_If_Asked(object, request, self);
        Unlock_Door(file);
    }
    return nError;
}

DWORD join(Named_Object& object, const File& file, const struct stat& status, const Object_Name& name,
           const Named_Request& request)
{
    if (status.st_size != static_cast<off_t>(NAMED_PAGE_SIZE))
    {
        return WRONG_KIND;
    }
    DWORD nError = map_File(object, file);
    if (nError != 0)
    {
        return nError;
    }
    note_File(object, status);
    nError = check_Page(object, name, request);
    if (nError == 0 && !Show_Life(file))
    {
        nError = DENIED;
    }
    if (nError != 0)
    {
        Unmap_File(object);
        return nError;
    }
    Unlock_Door(file);
    return 0;
}

DWORD open_Existing(Named_Object& object, const Object_Name& name, const Named_Request& request, bool create,
                    Thread_Record* self)
{
    const File file(open_Path(name.path));
    if (!file.Is_Open())
    {
        return tell_Error(errno);
    }
    if (!Lock_Door(file, JOINING_PATIENCE))
    {
        return BUSY;
    }
    struct stat status = {};
    if (named_calls.stat_file(file.get(), &status) != 0)
    {
        return tell_Error(errno);
    }
    if (!S_ISREG(status.st_mode))
    {
        return DENIED;
    }
    if (status.st_nlink == 0)
    {
        return TRY_AGAIN;
    }
    if (!Is_Used(file))
    {
        return use_Leftover(object, file, status, name, request, create, self);
    }
    const DWORD nError = join(object, file, status, name, request);
    return nError == 0 && create ? EXISTS_ALREADY : nError;
}

} // namespace

DWORD Attach_File(Named_Object& object, const Object_Name& name, const Named_Request& request, bool create,
                  Thread_Record* self)
{
    constexpr int MOST_TRIES = 10000; // against somebody who makes and removes the name all the time
    object.kind = request.kind;
    std::strcpy(object.path, name.path);
    for (int i = 0; i < MOST_TRIES; ++i)
    {
        DWORD nError = open_Existing(object, name, request, create, self);
        if (nError == FILE_MISSING && create)
        {
            nError = make_New(object, name, request, self);
        }
        if (nError != TRY_AGAIN)
        {
            return nError;
        }
    }
    return BUSY;
}

void Unmap_File(Named_Object& object)
{
    Named_Page* const pPage = object.page.exchange(nullptr, std::memory_order_acq_rel);
    named_calls.unmap(pPage, MAPPING_SIZE);
}

bool Remove_File_If_Unused(const Named_Object& object)
{
    const File file(open_Path(object.path));
    if (!file.Is_Open())
    {
        return false;
    }
    const bool bAlone = Lock_Unused(file);
    if (!bAlone && !Lock_Door(file, LEAVING_PATIENCE))
    {
        return false;
    }
    struct stat status = {};
    if (named_calls.stat_file(file.get(), &status) != 0 || status.st_ino != object.inode ||
        status.st_nlink == 0 || (!bAlone && Is_Used_By_Others(file)))
    {
        return false;
    }
    named_calls.unlink_file(object.path);
    return true;
}

void Detach_File(Named_Object& object)
{
    Unmap_File(object);
    Remove_File_If_Unused(object);
}

} // namespace qn_platform::kernel
