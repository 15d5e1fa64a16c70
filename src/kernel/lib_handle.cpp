#include "kernel/lib_handle.h"

namespace
{

HANDLE process_Or_Own(HANDLE hProcess) { return hProcess != nullptr ? hProcess : GetCurrentProcess(); }

} // namespace

Lib_Handle::Lib_Handle(void* const& hSource) { *this = hSource; }

Lib_Handle::Lib_Handle(const Lib_Handle& Source) { *this = Source.m_hHandle; }

Lib_Handle::~Lib_Handle() { Close(); }

Lib_Handle& Lib_Handle::operator=(void* const& hSource)
{
    if (hSource == m_hHandle)
        return *this;
    Close();
    if (hSource != nullptr && !DuplicateHandle(GetCurrentProcess(), hSource, GetCurrentProcess(), &m_hHandle,
                                               0, TRUE, DUPLICATE_SAME_ACCESS))
    {
        m_hHandle = nullptr;
    }
    return *this;
}

Lib_Handle& Lib_Handle::operator=(const Lib_Handle& Source) { return *this = Source.m_hHandle; }

bool Lib_Handle::Attach(void* const hHandle)
{
    flush();
    m_hHandle = hHandle;
    return true;
}

bool Lib_Handle::Close()
{
    if (m_hHandle == nullptr)
        return true;
    const bool bClosed = CloseHandle(m_hHandle) != 0;
    m_hHandle = nullptr;
    return bClosed;
}

bool Lib_Handle::Duplicate(Lib_Handle& Target, Lib_Handle* pSource_Process, Lib_Handle* pTarget_Process,
                           unsigned long dwAccess, bool bInherit, unsigned long dwOptions) const
{
    void* hSource_Process = pSource_Process != nullptr ? pSource_Process->m_hHandle : nullptr;
    void* hTarget_Process = pTarget_Process != nullptr ? pTarget_Process->m_hHandle : nullptr;
    void* hNew = nullptr;
    if (!Duplicate(&hNew, hSource_Process, hTarget_Process, dwAccess, bInherit, dwOptions))
        return false;
    if (&Target == this && (dwOptions & DUPLICATE_CLOSE_SOURCE) != 0)
        Target.m_hHandle = nullptr; // closed by now, and the new handle may have its value
    Target.flush();
    Target.m_hHandle = hNew;
    return true;
}

bool Lib_Handle::Duplicate(void** phTarget, void* hSource_Process, void* hTarget_Process,
                           unsigned long dwAccess, bool bInherit, unsigned long dwOptions) const
{
    return DuplicateHandle(process_Or_Own(hSource_Process), m_hHandle, process_Or_Own(hTarget_Process),
                           phTarget, static_cast<DWORD>(dwAccess), bInherit,
                           static_cast<DWORD>(dwOptions)) != 0;
}

bool Lib_Handle::Get_Information(unsigned long& dwFlags)
{
    DWORD dwValue = 0;
    if (!GetHandleInformation(m_hHandle, &dwValue))
        return false;
    dwFlags = dwValue;
    return true;
}

bool Lib_Handle::Set_Information(unsigned long dwMask, unsigned long dwFlags)
{
    return SetHandleInformation(m_hHandle, static_cast<DWORD>(dwMask), static_cast<DWORD>(dwFlags)) != 0;
}

void Lib_Handle::flush() { Close(); }
