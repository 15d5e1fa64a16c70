#ifndef QNLIB_KERNEL_LIB_SYNCHRO_H
#define QNLIB_KERNEL_LIB_SYNCHRO_H

#include "foundation/typed_array.h"
#include "kernel/lib_handle.h"
#include "strings/lib_string.h"

/// A handle that can be waited on, and the name of what is behind it. The base of Lib_Event and Lib_Mutex.
///
/// The name is a note: it is what the next creation or opening without a name of its own uses, and changing
/// it does nothing to a kernel object that is open. It survives Close, and creation and opening by it; it
/// goes with flush(), and so with Attach, with Duplicate into the object, with creation under another name,
/// and with the object.
///
/// Waiting and signalling only read the object, so many threads may do so on one object that nobody changes.
/// Everything else that is not const needs the object to itself.
///
/// Failures are told as in Lib_Handle; the time-outs and answers of the waits are those of the platform, 32
/// bits each. std::bad_alloc comes from the names alone, before the object has changed but for
/// Create_Public_With_Unique_Name, which leaves it empty then.
class LIB_API Lib_Synchro : public Lib_Handle
{
public:
    Lib_Synchro() noexcept = default;

    /// A duplicate of the handle, which stays the caller's, and a name; null is an empty name.
    Lib_Synchro(void* const& hSource, const wchar_t* pName);

    /// The same name and a handle of its own to the same kernel object; an empty handle if the duplication
    /// fails.
    Lib_Synchro(const Lib_Synchro& Source);

    ~Lib_Synchro() override;

    /// Takes the source's name, closes the handle held and duplicates the source's.
    Lib_Synchro& operator=(const Lib_Synchro& Source);

    /// Compare the names alone, exactly: two objects without a name are equal whatever they hold.
    bool operator==(const Lib_Synchro& Other) const { return m_strName.Compare(Other.m_strName) == 0; }
    bool operator!=(const Lib_Synchro& Other) const { return !(*this == Other); }

    Lib_String Get_Name() const { return m_strName; }

    /// Replaces the name; null empties it. The text may be the object's own.
    void Set_Name(const wchar_t* pName);

    /// Makes up a name that no other object has: a GUID in upper case with braces (38 units), behind
    /// "Global\" if asked (45 units). The result is the new name.
    Lib_String Set_Unique_Name(bool bGlobal);

    /// WaitForSingleObject on the handle: 0, 0x80 for an abandoned mutex, which is the caller's now, 258
    /// after the time, 0xFFFFFFFF on failure, an empty object's among them. 0xFFFFFFFF waits without end.
    unsigned long Wait(unsigned long dwMilliseconds);

    /// Whether that wait answered 0. An abandoned mutex gives false, although the caller owns it now.
    bool Wait_Until_Object_0(unsigned long dwMilliseconds);

    /// WaitForMultipleObjects on the objects in their order; the answer is the platform's, also for a number
    /// of objects that it refuses. An empty object, or a null pointer in the array, is waited on as a null
    /// handle; a null array counts as an empty one. 0xFFFFFFFF with the last error 8 when memory is short.
    static unsigned long Wait_Multiple(LibT_Array<Lib_Synchro*, 4>* pObjects, bool bWait_All,
                                       unsigned long dwMilliseconds);

    /// Gives back what a wait has taken, where the kind of object knows that: here always false.
    virtual bool Release();

protected:
    /// Empties the name and closes the handle.
    void flush() override;

    /// What creation under a name begins with: flush(), then the name, which may be the object's own text.
    void flush_To_Name(const wchar_t* pName);

    /// What opening begins with: the handle is closed, and a name that is not null replaces the present one.
    /// Whether there is a name to open by.
    bool prepare_To_Open(const wchar_t* pName);

    /// Stores the result of creation or opening: whether it is a handle.
    bool take_Handle(void* hNew);

    Lib_String m_strName; ///< empty for an object without a name
};

#endif
