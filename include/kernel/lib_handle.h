#ifndef QNLIB_KERNEL_LIB_HANDLE_H
#define QNLIB_KERNEL_LIB_HANDLE_H

#include "lib_api.h"
#include "lib_platform.h"

/// Owns one kernel handle and closes it when it goes away. Copying never shares the handle: every copy is a
/// second handle to the same kernel object, inheritable and with the same access rights, which is closed on
/// its own. An empty object holds null; no other value is special.
///
/// An object needs one thread at a time as soon as anyone changes it. What is behind the handle may be used
/// by many threads through copies, and so may one object that nobody changes.
///
/// Failures are told by the answer of a call, with the platform's last error, or by an empty object. Nothing
/// here throws.
class LIB_API Lib_Handle
{
public:
    Lib_Handle() noexcept = default;

    /// A duplicate of the handle, as by assignment: the argument stays the caller's.
    Lib_Handle(void* const& hSource);
    Lib_Handle(const Lib_Handle& Source);

    virtual ~Lib_Handle();

    /// Closes the handle held, then duplicates the argument, which stays the caller's: an inheritable handle
    /// with the same access. Null leaves the object empty, and so does a failed duplication. The very handle
    /// that is held changes nothing.
    Lib_Handle& operator=(void* const& hSource);
    Lib_Handle& operator=(const Lib_Handle& Source);

    /// The handle, which stays this object's.
    operator void*() const { return m_hHandle; }

    /// Calls flush(), then takes the argument over as it is: from now on this object closes it. It must not
    /// be the handle that the object holds already. Always true.
    bool Attach(void* const hHandle);

    /// Closes the handle. The object is empty afterwards, whatever the platform answered; false is its
    /// failure. An empty object answers true. Nothing but the handle goes: flush() is not called.
    bool Close();

    /// Duplicates this object's handle from the source process into the target process; null and an empty
    /// object stand for the calling process. When that succeeded, Target is flushed and takes the new
    /// handle; when it failed, Target is untouched. Target may be this very object.
    ///
    /// With DUPLICATE_CLOSE_SOURCE the platform closes the handle that this object goes on holding, also when
    /// the duplication fails, so that is for duplicating an object into itself only.
    bool Duplicate(Lib_Handle& Target, Lib_Handle* pSource_Process, Lib_Handle* pTarget_Process,
                   unsigned long dwAccess, bool bInherit, unsigned long dwOptions) const;

    /// The same with plain handles: the caller closes the result. Null stands for the calling process, and
    /// for the result means that none is wanted.
    bool Duplicate(void** phTarget, void* hSource_Process, void* hTarget_Process, unsigned long dwAccess,
                   bool bInherit, unsigned long dwOptions) const;

    /// The handle's flags (HANDLE_FLAG_INHERIT, HANDLE_FLAG_PROTECT_FROM_CLOSE); untouched on failure.
    bool Get_Information(unsigned long& dwFlags);

    /// Sets those flags of the handle that the mask names.
    bool Set_Information(unsigned long dwMask, unsigned long dwFlags);

protected:
    /// Gives up everything that the object stands for: here, closes the handle.
    virtual void flush();

    void* m_hHandle = nullptr; ///< owned; null for an empty object
};

#endif
