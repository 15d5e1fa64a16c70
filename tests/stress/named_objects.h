#ifndef QNLIB_TEST_STRESS_NAMED_OBJECTS_H
#define QNLIB_TEST_STRESS_NAMED_OBJECTS_H

// Named events and mutexes under names of this test program's own.

#include "lib_platform.h"

#include <string>
#include <utility>

namespace stress
{

inline constexpr DWORD Forever = INFINITE;

/// A handle, closed with its owner.
class Object
{
public:
    Object() = default;
    explicit Object(HANDLE handle) : m_Handle(handle) {}
    Object(Object&& other) noexcept : m_Handle(std::exchange(other.m_Handle, nullptr)) {}
    Object& operator=(Object&& other) noexcept
    {
        std::swap(m_Handle, other.m_Handle);
        return *this;
    }
    ~Object() { Close(); }

    void Close()
    {
        if (m_Handle != nullptr)
            CloseHandle(std::exchange(m_Handle, nullptr));
    }

    HANDLE get() const { return m_Handle; }
    explicit operator bool() const { return m_Handle != nullptr; }

    DWORD Wait(DWORD nMilliseconds = Forever) const { return WaitForSingleObject(m_Handle, nMilliseconds); }
    /// Takes it if it is signalled.
    bool Take() const { return Wait(0) == WAIT_OBJECT_0; }

private:
    HANDLE m_Handle = nullptr;
};

/// What all names of this program's run begin with, and their files' names have in them.
std::string Token();

/// A name that no other object of the run had.
std::u16string New_Name();

Object Event(const std::u16string& strName, bool bManual = false, bool bSet = false);
Object Mutex(const std::u16string& strName, bool bOwned = false);
/// A mutex that exists; the handle is null if there is none.
Object Open_Mutex(const std::u16string& strName);

template <class... Objects>
DWORD Wait_For_Any(DWORD nMilliseconds, const Objects&... objects)
{
    const HANDLE handles[] = {objects.get()...};
    return WaitForMultipleObjects(sizeof...(objects), handles, FALSE, nMilliseconds);
}

template <class... Objects>
DWORD Wait_For_All(DWORD nMilliseconds, const Objects&... objects)
{
    const HANDLE handles[] = {objects.get()...};
    return WaitForMultipleObjects(sizeof...(objects), handles, TRUE, nMilliseconds);
}

/// Files of the run's named objects that exist now.
unsigned int Count_Files();

/// That the name is gone, can be made afresh, and goes again.
void Expect_Name_Is_Free(const std::u16string& strName);

} // namespace stress

#endif
