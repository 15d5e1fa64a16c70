#include "platform/kernel/named_locks.h"

#include "platform/kernel/named_calls.h"

#include <ctime>

#include <fcntl.h>
#include <sched.h>
#include <unistd.h>

namespace qn_platform::kernel
{

namespace
{

constexpr off_t DOOR = 0;
constexpr off_t LIFE = 1;

struct flock make_Lock(short type, off_t start, off_t length)
{
    struct flock lock = {};
    lock.l_type = type;
    lock.l_whence = SEEK_SET;
    lock.l_start = start;
    lock.l_len = length;
    return lock;
}

bool set_Lock(const File& file, short type, off_t start, off_t length = 1)
{
    struct flock lock = make_Lock(type, start, length);
    return named_calls.lock_file(file.get(), F_OFD_SETLK, &lock) == 0;
}

/// Whether another open file has a lock in the range; 0 as length is up to the end. What cannot be asked
/// counts as locked.
bool is_Locked(const File& file, off_t start, off_t length)
{
    struct flock lock = make_Lock(F_WRLCK, start, length);
    return named_calls.lock_file(file.get(), F_OFD_GETLK, &lock) != 0 || lock.l_type != F_UNLCK;
}

void pause_Shortly()
{
    const timespec time = {0, 200000};
    ::nanosleep(&time, nullptr);
}

} // namespace

File::~File()
{
    if (m_nFile >= 0)
    {
        named_calls.close_file(m_nFile);
    }
}

bool Lock_Door(const File& file, int milliseconds)
{
    constexpr int YIELDS = 20;
    constexpr int PAUSES_A_MILLISECOND = 4;
    const int nTries = YIELDS + milliseconds * PAUSES_A_MILLISECOND;
    for (int i = 0; !set_Lock(file, F_WRLCK, DOOR); ++i)
    {
        if (i == nTries)
        {
            return false;
        }
        if (i < YIELDS)
        {
            ::sched_yield();
        }
        else
        {
            pause_Shortly();
        }
    }
    return true;
}

void Unlock_Door(const File& file) { set_Lock(file, F_UNLCK, DOOR); }

bool Lock_Unused(const File& file)
{
    constexpr off_t TO_THE_END = 0;
    return set_Lock(file, F_WRLCK, DOOR, TO_THE_END);
}

bool Show_Life(const File& file) { return set_Lock(file, F_RDLCK, LIFE + ::getpid()); }

bool Is_Used(const File& file) { return is_Locked(file, LIFE, 0); }

bool Is_Used_By_Others(const File& file)
{
    const off_t nOwn = LIFE + ::getpid();
    return is_Locked(file, LIFE, nOwn - LIFE) || is_Locked(file, nOwn + 1, 0);
}

} // namespace qn_platform::kernel
