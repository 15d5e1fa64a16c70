#ifndef QNLIB_KERNEL_LIB_LOCKER_H
#define QNLIB_KERNEL_LIB_LOCKER_H

#include "kernel/lib_mutex.h"

#include <atomic>

/// A lock that needs no setting up: it makes itself a mutex with a unique global name that every user may
/// open. A copy has the same name and a handle of its own: it is the same lock. The lock belongs to the
/// thread that took it, as many times as it took it.
///
/// Any thread may lock and unlock one object; assigning to it needs the object to itself. If the mutex could
/// not be made, or memory for its name, the object is there all the same and never locks.
///
/// An object destroyed while its thread has the lock does not unlock: whoever waits through a copy gets the
/// lock when that thread ends, as one that its owner abandoned.
class LIB_API Lib_Locker
{
public:
    Lib_Locker();
    Lib_Locker(const Lib_Locker& Source);
    ~Lib_Locker();

    /// Closes this object's mutex and shares the source's.
    Lib_Locker& operator=(const Lib_Locker& Source);

    /// Waits for the lock, at most that long; 0xFFFFFFFF waits without end. False after the time, on
    /// failure, and for a lock that its owner abandoned, although the caller has it then.
    bool Lock(unsigned long dwMilliseconds);

    /// Gives back one lock of the calling thread; false when it has none.
    bool Unlock();

    /// The same for std::lock_guard and its kin: without end and without an answer.
    void lock();
    void unlock();

private:
    Lib_Mutex m_Mutex;
};

/// A Lib_Locker with a count of users beside it, for work that the first one starts and the last one stops:
///
///     lock.Lock_And_Increase(INFINITE); if (lock.Get_Counter() == 1) start(); lock.Unlock();
///     lock.Lock(INFINITE); if (lock.Get_Counter() == 1) stop(); lock.Decrease_And_Unlock();
///
/// The count is 32 bits wide and each object's own: a copy takes it over once, though the lock is one. It
/// means something only to those who have the lock: reading, setting, raising and lowering it are single
/// steps each, but what follows from them is not.
class LIB_API Lib_Locker_With_Counter
{
public:
    Lib_Locker_With_Counter();
    Lib_Locker_With_Counter(const Lib_Locker_With_Counter& Source);
    ~Lib_Locker_With_Counter();
    Lib_Locker_With_Counter& operator=(const Lib_Locker_With_Counter& Source);

    /// As in Lib_Locker; the count stays as it is.
    bool Lock(unsigned long dwMilliseconds);
    bool Unlock();

    /// Lock, and with the lock the count goes up by one, at most to 0xFFFFFFFF: also when the answer is
    /// false because the lock was abandoned. Without the lock, after the time or on failure, the count stays.
    bool Lock_And_Increase(unsigned long dwMilliseconds);

    /// The count goes down by one unless it is 0, then Unlock, whose answer is returned. For the lock's
    /// owner.
    bool Decrease_And_Unlock();

    unsigned long Get_Counter() const;
    void Set_Counter(unsigned long dwValue);

private:
    friend class Lib_Monitor_Thread;

    /// Lock or Lock_And_Increase, and the wait's own answer: 0 and 0x80 (abandoned) have the lock.
    unsigned long take(unsigned long dwMilliseconds, bool bIncrease);

    Lib_Mutex m_Mutex;
    std::atomic<unsigned int> m_dwCounter = 0;
};

#endif
