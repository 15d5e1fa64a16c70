#ifndef PIN_DESK_LOCK_GUARD_H
#define PIN_DESK_LOCK_GUARD_H

#include <lib_kernel.h>
#include <lib_platform.h>
#include <stdexcept>

/// Has a lock for as long as it lives. Throws std::runtime_error when there is no lock to have, since the
/// platform made none: nothing is done unlocked.
class Lock_Guard
{
public:
    explicit Lock_Guard(Lib_Mutex& Lock) : m_Lock(Lock)
    {
        const unsigned long nWait = Lock.Wait(INFINITE);
        if (nWait != WAIT_OBJECT_0 && nWait != WAIT_ABANDONED)
            throw std::runtime_error("a lock cannot be taken");
    }
    Lock_Guard(const Lock_Guard&) = delete;
    Lock_Guard& operator=(const Lock_Guard&) = delete;
    ~Lock_Guard() { m_Lock.Release(); }

private:
    Lib_Mutex& m_Lock;
};

#endif
