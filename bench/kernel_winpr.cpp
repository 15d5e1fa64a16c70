// winpr, which has the same names as the layer; its named objects are private to a process.

#include "kernel_rows.h"

#if defined(QNLIB_BENCH_WINPR)
#include "ping_pong.h"

#include <vector>

#include <winpr/handle.h>
#include <winpr/synch.h>

namespace
{

class Owned_Handle
{
public:
    explicit Owned_Handle(HANDLE handle) : m_Handle(handle) {}
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

Owned_Handle make_Event() { return Owned_Handle(CreateEventA(nullptr, FALSE, FALSE, nullptr)); }
Owned_Handle make_Mutex() { return Owned_Handle(CreateMutexA(nullptr, FALSE, nullptr)); }

auto set_And_Wait()
{
    return [event = make_Event()]
    {
        event.Set();
        return event.Wait();
    };
}

auto lock_And_Unlock()
{
    return [mutex = make_Mutex()]
    {
        mutex.Wait();
        return ReleaseMutex(mutex.get());
    };
}

auto wait_For_Last(unsigned int nCount)
{
    std::vector<Owned_Handle> events;
    std::vector<HANDLE> handles;
    for (unsigned int i = 0; i < nCount; ++i)
    {
        events.push_back(make_Event());
        handles.push_back(events.back().get());
    }
    return [events = std::move(events), handles = std::move(handles)]
    {
        events.back().Set();
        return WaitForMultipleObjects(static_cast<DWORD>(handles.size()), handles.data(), FALSE, INFINITE);
    };
}

} // namespace

void Add_Winpr(const Kernel_Rows& rows)
{
    rows.m_SetWait.Add("winpr", set_And_Wait());
    rows.m_SetWaitNamed.Add("winpr", set_And_Wait());
    rows.m_Lock.Add("winpr", lock_And_Unlock());
    rows.m_LockNamed.Add("winpr", lock_And_Unlock());
    rows.m_MakeEvent.Add("winpr", [] { return make_Event(); });
    rows.m_MakeMutex.Add("winpr", [] { return make_Mutex(); });
    rows.m_Threads.Add("winpr", ping_pong::Work<ping_pong::Thread_Partner>(
                                    [] { return std::pair(make_Event(), make_Event()); }));
    for (const auto& [nCount, local, named] : rows.m_WaitAny)
    {
        local.Add("winpr", wait_For_Last(nCount));
        named.Add("winpr", wait_For_Last(nCount));
    }
}
#else
void Add_Winpr(const Kernel_Rows&) {}
#endif
