#ifndef QNLIB_TEST_NAMED_TEST_OBJECTS_H
#define QNLIB_TEST_NAMED_TEST_OBJECTS_H

#include "lib_services.h"
#include "platform/kernel/named_calls.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <filesystem>
#include <string>
#include <utility>
#include <vector>

#include <unistd.h>

// Named objects for tests of several processes, and a look at their files.

namespace test_support
{

using qn_platform::kernel::named_calls;
using qn_platform::kernel::Named_Calls;

inline constexpr auto TIMED_OUT = static_cast<DWORD>(WAIT_TIMEOUT);
inline constexpr DWORD PATIENCE = 10000;

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
    return std::vector<wchar_t>(text.c_str(), text.c_str() + text.size() + 1);
}

/// A name of this run; `tail` is letters and digits.
inline std::string Own_Name(const std::string& tail)
{
    return "qntest-" + std::to_string(getpid()) + "-" + tail;
}

/// The files of objects whose name contains the text.
inline std::vector<std::string> Find_Files(const std::string& part_of_name)
{
    std::vector<std::string> files;
    for (const auto& entry : std::filesystem::directory_iterator("/dev/shm"))
    {
        if (entry.path().native().find(part_of_name) != std::string::npos)
        {
            files.push_back(entry.path().native());
        }
    }
    return files;
}

/// The file of an object that its test leaves behind. A sweep of leftovers, which any process may begin,
/// takes no file of two names; so this one is there until the test itself removes it.
class Leftover
{
public:
    explicit Leftover(const std::string& name)
        : m_File(Find_Files(name).at(0)), m_Other("/dev/shm/kept-" + name)
    {
        std::filesystem::create_hard_link(m_File, m_Other);
    }
    ~Leftover() { std::filesystem::remove(m_Other); }

    Leftover(const Leftover&) = delete;
    Leftover& operator=(const Leftover&) = delete;

    [[nodiscard]] bool Is_There() const { return std::filesystem::exists(m_File); }

private:
    std::filesystem::path m_File;
    std::filesystem::path m_Other;
};

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
inline Handle Public_Event(const std::string& name)
{
    return Handle(CreateEventW(Lib_Get_Public_Security_Attributes(), FALSE, FALSE, Wide(name).data()));
}
inline Handle Public_Mutex(const std::string& name)
{
    return Handle(CreateMutexW(Lib_Get_Public_Security_Attributes(), FALSE, Wide(name).data()));
}

/// Puts the record of system calls back at its end.
class Kept_Calls
{
public:
    ~Kept_Calls() { named_calls = m_Former; }

private:
    Named_Calls m_Former = named_calls;
};

} // namespace test_support

#endif
