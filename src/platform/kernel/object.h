#ifndef QNLIB_SRC_PLATFORM_KERNEL_OBJECT_H
#define QNLIB_SRC_PLATFORM_KERNEL_OBJECT_H

#include "platform/types.h"

#include <atomic>
#include <cstdint>
#include <utility>

// What a handle stands for, and how handles and objects find one another.

namespace qn_platform::kernel
{

class Named_Object;

enum class Kind : std::uint8_t
{
    Free,
    Event,
    Mutex,
    Thread,
    Process,
    Token,
    Any // for Find_Object only
};

/// One object of this process. Its memory is used again but never given back to the system, so a stale look
/// at it is harmless. The rest of its fields is private to local_objects.cpp and handle_table.cpp.
struct Object;

Kind Get_Kind(const Object& object);

/// The named object behind this one; null for a local object.
Named_Object* Get_Named(const Object& object);

/// What New_Record was given.
void* Get_Record(const Object& object);

/// A counted reference to an object, for as long as the caller works with it.
class Object_Reference
{
public:
    Object_Reference() = default;
    explicit Object_Reference(Object* adopted) : m_pObject(adopted) {}
    Object_Reference(Object_Reference&& other) noexcept : m_pObject(other.Detach()) {}
    Object_Reference& operator=(Object_Reference&& other) noexcept
    {
        std::swap(m_pObject, other.m_pObject);
        return *this;
    }
    ~Object_Reference()
    {
        if (m_pObject != nullptr)
        {
            st_Release(*m_pObject);
        }
    }

    /// The reference is the caller's from now on.
    Object* Detach() { return std::exchange(m_pObject, nullptr); }

    Object* get() const { return m_pObject; }
    Object& operator*() const { return *m_pObject; }
    Object* operator->() const { return m_pObject; }
    explicit operator bool() const { return m_pObject != nullptr; }

private:
    static void st_Release(Object& object);

    Object* m_pObject = nullptr;
};

/// The object behind a handle. Empty, with the last error 6 or 5, if the value is no handle, the object is of
/// another kind, or the handle's mask lacks a bit of `access`. Knows the pseudo handles.
Object_Reference Find_Object(HANDLE handle, Kind kind, DWORD access);

/// The same for callers who need no more than to know it.
bool Check_Handle(HANDLE handle, Kind kind, DWORD access);

/// A local object that is a record of its maker's (a token): `destroy` is called with it when the last
/// reference goes. Empty, last error 8, when memory is short; `destroy` has been called then.
Object_Reference New_Record(Kind kind, void* record, void (*destroy)(void* record));

/// A new handle to the object. Null, last error 8 or 4, when there is no room.
HANDLE New_Handle(Object_Reference object, DWORD access, bool inherit);

} // namespace qn_platform::kernel

#endif
