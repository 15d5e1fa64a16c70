#ifndef QNLIB_TEST_NAMED_TEST_OBJECTS_H
#define QNLIB_TEST_NAMED_TEST_OBJECTS_H

#include "lib_platform.h"
#include "platform/kernel/named_calls.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

// Named objects for tests of several processes, and a look at their files.

namespace test_support
{

using qn_platform::kernel::named_calls;
using qn_platform::kernel::Named_Calls;

class Handle
{
public:
    Handle() = default;
    explicit Handle(HANDLE handle) : m_hHandle(handle) {}
    Handle(Handle&& other) noexcept : m_hHandle(std::exchange(other.m_hHandle, nullptr)) {}
    Handle& operator=(Handle&& other) noexcept
    {
        std::swap(m_hHandle, other.m_hHandle);
        return *this;
    }
    ~Handle() { Close(); }

    void Close()
    {
        if (m_hHandle != nullptr)
        {
            CloseHandle(std::exchange(m_hHandle, nullptr));
        }
    }

    operator HANDLE() const { return m_hHandle; }

private:
    HANDLE m_hHandle = nullptr;
};

/// A text of 16-bit units, ended by a NUL.
inline std::vector<wchar_t> Wide(const std::string& text)
{
    std::vector<wchar_t> units(text.begin(), text.end());
    units.push_back(0);
    return units;
}

/// A name of this run; `tail` is letters and digits.
std::string Own_Name(const std::string& tail);

/// The files of objects whose name contains the text.
std::vector<std::string> Find_Files(const std::string& part_of_name);

inline Handle Event(const std::string& name, bool manual = false, bool set = false)
{
    return Handle(CreateEventW(nullptr, manual, set, Wide(name).data()));
}
inline Handle Mutex(const std::string& name, bool owned = false)
{
    return Handle(CreateMutexW(nullptr, owned, Wide(name).data()));
}
inline Handle Open_Event(const std::string& name)
{
    return Handle(OpenEventW(EVENT_ALL_ACCESS, FALSE, Wide(name).data()));
}
inline Handle Open_Mutex(const std::string& name)
{
    return Handle(OpenMutexW(MUTEX_ALL_ACCESS, FALSE, Wide(name).data()));
}

/// A descriptor that lets everybody in: its access list is there, and null.
struct Public_Attributes
{
    struct
    {
        unsigned char revision = 1;
        unsigned char unused = 0;
        unsigned short control = 4;
        void* parts[4] = {};
    } descriptor;
    SECURITY_ATTRIBUTES attributes{sizeof(SECURITY_ATTRIBUTES), &descriptor, FALSE};
};

inline Handle Public_Event(const std::string& name)
{
    Public_Attributes all;
    return Handle(CreateEventW(&all.attributes, FALSE, FALSE, Wide(name).data()));
}

inline Handle Public_Mutex(const std::string& name)
{
    Public_Attributes all;
    return Handle(CreateMutexW(&all.attributes, FALSE, Wide(name).data()));
}

/// Puts the record of system calls back at its end.
class Kept_Calls
{
public:
    ~Kept_Calls() { named_calls = m_Former; }

private:
    Named_Calls m_Former = named_calls;
};

/// As where the kernel lacks the call that sleeps on several words.
void Do_Without_Futex_Waitv();

} // namespace test_support

#endif
