#ifndef QNLIB_KERNEL_LIB_EVENT_H
#define QNLIB_KERNEL_LIB_EVENT_H

#include "kernel/lib_synchro.h"

/// An event: something that happened, for threads and processes to wait for. A manual one stays signalled
/// until it is reset; the other kind resets itself by releasing one waiter. Names, copies, threads and
/// failures are as told in Lib_Synchro.
class LIB_API Lib_Event : public Lib_Synchro
{
public:
    Lib_Event() noexcept = default;
    Lib_Event(void* const& hSource, const wchar_t* pName);
    Lib_Event(const Lib_Event& Source);
    ~Lib_Event() override;
    Lib_Event& operator=(const Lib_Event& Source);

    /// Closes the handle held, then creates an event under the name held, or without one if that is empty.
    /// An event that exists under the name is opened: true with the last error 183, and state and kind are
    /// those that it has. On failure the object is left without a handle and keeps its name.
    bool Create(_SECURITY_ATTRIBUTES* pAttributes, bool bManual_Reset, bool bInitial_State);

    /// The same under this name, null meaning none: flush(), then the name is taken over. It may be the
    /// object's own text.
    bool Create(_SECURITY_ATTRIBUTES* pAttributes, bool bManual_Reset, bool bInitial_State,
                const wchar_t* pName);

    /// flush(), then an event under a new unique name that every user may open: across the machine if
    /// global, in the session otherwise. Get_Name is what others open it by.
    bool Create_Public_With_Unique_Name(bool bGlobal, bool bManual_Reset, bool bInitial_State);

    /// Closes the handle held, then opens an event by the name, which the object keeps; null opens by the
    /// name held. False, without asking the platform, when that is empty. The name may be the object's own
    /// text. `dwAccess` is EVENT_ALL_ACCESS, or of SYNCHRONIZE to wait and EVENT_MODIFY_STATE to signal. On
    /// failure, 2 for a name that nobody has, the object is left without a handle.
    bool Open(const wchar_t* pName, unsigned long dwAccess, bool bInherit);

    /// Signal the event, reset it, or release those who wait at this moment and leave it reset. False for an
    /// empty object, without asking the platform.
    bool Set() const;
    bool Reset() const;
    bool Pulse() const;

protected:
    void flush() override;
};

#endif
