#ifndef QNLIB_KERNEL_LIB_MUTEX_H
#define QNLIB_KERNEL_LIB_MUTEX_H

#include "kernel/lib_synchro.h"

/// A mutex: a lock that one thread owns at a time, as many times as it has taken it by a wait. It belongs to
/// the thread and not to the handle, so a lock taken through one copy is given back through any. When its
/// owner ends without giving it back, the next waiter gets it and the answer 0x80. Names, copies, threads
/// and failures are as told in Lib_Synchro.
class LIB_API Lib_Mutex : public Lib_Synchro
{
public:
    Lib_Mutex() noexcept = default;
    Lib_Mutex(void* const& hSource, const wchar_t* pName);
    Lib_Mutex(const Lib_Mutex& Source);
    ~Lib_Mutex() override;
    Lib_Mutex& operator=(const Lib_Mutex& Source);

    /// Closes the handle held, then creates a mutex under the name held, or without one if that is empty; a
    /// new one is the calling thread's if bInitial_Owner. A mutex that exists under the name is opened: true
    /// with the last error 183, and the caller does not own it. On failure the object is left without a
    /// handle and keeps its name.
    bool Create(_SECURITY_ATTRIBUTES* pAttributes, bool bInitial_Owner);

    /// The same under this name, null meaning none: flush(), then the name is taken over. It may be the
    /// object's own text.
    bool Create(_SECURITY_ATTRIBUTES* pAttributes, bool bInitial_Owner, const wchar_t* pName);

    /// flush(), then a mutex under a new unique name that every user may open: across the machine if
    /// global, in the session otherwise. Get_Name is what others open it by.
    bool Create_Public_With_Unique_Name(bool bGlobal, bool bInitial_Owner);

    /// Closes the handle held, then opens a mutex by the name, which the object keeps; null opens by the
    /// name held. False, without asking the platform, when that is empty. The name may be the object's own
    /// text. `dwAccess` is MUTEX_ALL_ACCESS, or SYNCHRONIZE to wait alone. On failure, 2 for a name that
    /// nobody has, the object is left without a handle.
    bool Open(const wchar_t* pName, unsigned long dwAccess, bool bInherit);

    /// Gives back one lock of the calling thread. False when it has none, and for an empty object, without
    /// asking the platform.
    bool Release() override;

protected:
    void flush() override;
};

#endif
