// Events, mutexes and waits. Marks against one peer are the aims: a lock at most 1.2 of a plain pthread
// mutex, a named one at most 4 of it, a named mutex made within 1.5 of Boost's.

#include <lib_platform.h>

#include "kernel_rows.h"

#include "ping_pong.h"

#include <stdexcept>
#include <string>
#include <vector>

namespace
{

/// An object of the layer, closed with its owner.
class Owned_Handle
{
public:
    explicit Owned_Handle(HANDLE handle) : m_Handle(handle)
    {
        if (handle == nullptr)
            throw std::runtime_error("no kernel object: error " + std::to_string(GetLastError()));
    }
    Owned_Handle(Owned_Handle&& other) noexcept : m_Handle(std::exchange(other.m_Handle, nullptr)) {}
    ~Owned_Handle()
    {
        if (m_Handle != nullptr)
            CloseHandle(m_Handle);
    }

    HANDLE get() const { return m_Handle; }
    BOOL Set() const { return SetEvent(m_Handle); }
    DWORD Wait() const { return WaitForSingleObject(m_Handle, INFINITE); }

private:
    HANDLE m_Handle;
};

std::u16string unique_Name(const std::string& strName)
{
    const std::string strText = "Local\\qnlib-bench-" + std::to_string(getpid()) + strName;
    return std::u16string(strText.begin(), strText.end());
}

Owned_Handle make_Event(const std::u16string& strName = {})
{
    return Owned_Handle(CreateEventW(nullptr, FALSE, FALSE, reinterpret_cast<LPCWSTR>(strName.c_str())));
}

Owned_Handle make_Mutex(const std::u16string& strName = {})
{
    return Owned_Handle(CreateMutexW(nullptr, FALSE, reinterpret_cast<LPCWSTR>(strName.c_str())));
}

auto set_And_Wait(Owned_Handle event)
{
    return [event = std::move(event)]
    {
        event.Set();
        return event.Wait();
    };
}

auto lock_And_Unlock(Owned_Handle mutex)
{
    return [mutex = std::move(mutex)]
    {
        mutex.Wait();
        return ReleaseMutex(mutex.get());
    };
}

auto make_Pair(const char* pName)
{
    return [strPing = unique_Name(std::string("-ping") + pName),
            strPong = unique_Name(std::string("-pong") + pName)]
    { return std::pair(make_Event(strPing), make_Event(strPong)); };
}

auto wait_For_Last(unsigned int nCount, bool bNamed)
{
    std::vector<Owned_Handle> events;
    std::vector<HANDLE> handles;
    for (unsigned int i = 0; i < nCount; ++i)
    {
        const std::string strNumber = std::to_string(nCount) + '-' + std::to_string(i);
        events.push_back(make_Event(bNamed ? unique_Name(strNumber) : std::u16string()));
        handles.push_back(events.back().get());
    }
    return [events = std::move(events), handles = std::move(handles)]
    {
        events.back().Set();
        return WaitForMultipleObjects(static_cast<DWORD>(handles.size()), handles.data(), FALSE, INFINITE);
    };
}

void add_Ours(const Kernel_Rows& rows)
{
    rows.m_SetWait.Add(Row::Ours, set_And_Wait(make_Event()));
    rows.m_SetWaitNamed.Add(Row::Ours, set_And_Wait(make_Event(unique_Name("-set"))));
    rows.m_Lock.Add(Row::Ours, lock_And_Unlock(make_Mutex()));
    rows.m_LockNamed.Add(Row::Ours, lock_And_Unlock(make_Mutex(unique_Name("-lock"))));
    rows.m_MakeEvent.Add(Row::Ours, [] { return make_Event(); });
    rows.m_MakeEventNamed.Add(Row::Ours, [strName = unique_Name("-event")] { return make_Event(strName); });
    rows.m_MakeMutex.Add(Row::Ours, [] { return make_Mutex(); });
    rows.m_MakeMutexNamed.Add(Row::Ours, [strName = unique_Name("-mutex")] { return make_Mutex(strName); });
    rows.m_Threads.Add(Row::Ours, ping_pong::Work<ping_pong::Thread_Partner>(
                                      [] { return std::pair(make_Event(), make_Event()); }));
    rows.m_ThreadsNamed.Add(Row::Ours, ping_pong::Work<ping_pong::Thread_Partner>(make_Pair("-threads")));
    rows.m_Processes.Add(Row::Ours, ping_pong::Work<ping_pong::Process_Partner>(make_Pair("-processes")));
    for (const auto& [nCount, local, named] : rows.m_WaitAny)
    {
        local.Add(Row::Ours, wait_For_Last(nCount, false));
        named.Add(Row::Ours, wait_For_Last(nCount, true));
    }
}

void add_Marks(const Kernel_Rows& rows)
{
    rows.m_SetWait.Mark_Against("pthread", 1).Mark_Against("eventfd", 10).Mark_Against("winpr", 10);
    rows.m_SetWaitNamed.Mark_Against("eventfd", 10).Mark_Against("winpr", 10);
    rows.m_Lock.Mark_Against("pthread", 1 / 1.2).Mark_Against("winpr", 1.5).Mark_Against("eventfd", 10);
    rows.m_LockNamed.Mark_Against("pthread", 1 / 4.0).Mark_Against("eventfd", 10);
    rows.m_MakeEvent.Mark_Against("eventfd", 10).Mark_Against("winpr", 10);
    rows.m_MakeMutexNamed.Mark_Against("Boost", 1 / 1.5);
    rows.m_Threads.Mark_Against("eventfd", 1);
}

} // namespace

void Add_Kernel_Rows()
{
    const Kernel_Rows rows;
    add_Ours(rows);
    add_Marks(rows);
    Add_Posix(rows);
    Add_Winpr(rows);
    Add_Boost(rows);
    Add_Poco(rows);
}
