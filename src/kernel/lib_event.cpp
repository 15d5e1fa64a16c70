#include "kernel/lib_event.h"

#include "services/security.h"

Lib_Event::Lib_Event(void* const& hSource, const wchar_t* pName) : Lib_Synchro(hSource, pName) {}

Lib_Event::Lib_Event(const Lib_Event& Source) = default;

Lib_Event::~Lib_Event() { Lib_Event::flush(); }

Lib_Event& Lib_Event::operator=(const Lib_Event& Source) = default;

bool Lib_Event::Create(_SECURITY_ATTRIBUTES* pAttributes, bool bManual_Reset, bool bInitial_State)
{
    Close();
    return take_Handle(CreateEventW(pAttributes, bManual_Reset, bInitial_State, m_strName));
}

bool Lib_Event::Create(_SECURITY_ATTRIBUTES* pAttributes, bool bManual_Reset, bool bInitial_State,
                       const wchar_t* pName)
{
    flush_To_Name(pName);
    return Create(pAttributes, bManual_Reset, bInitial_State);
}

bool Lib_Event::Create_Public_With_Unique_Name(bool bGlobal, bool bManual_Reset, bool bInitial_State)
{
    flush();
    Set_Unique_Name(bGlobal);
    return Create(Lib_Get_Public_Security_Attributes(), bManual_Reset, bInitial_State);
}

bool Lib_Event::Open(const wchar_t* pName, unsigned long dwAccess, bool bInherit)
{
    return prepare_To_Open(pName) &&
           take_Handle(OpenEventW(static_cast<DWORD>(dwAccess), bInherit, m_strName));
}

bool Lib_Event::Set() const { return m_hHandle != nullptr && SetEvent(m_hHandle); }

bool Lib_Event::Reset() const { return m_hHandle != nullptr && ResetEvent(m_hHandle); }

bool Lib_Event::Pulse() const { return m_hHandle != nullptr && PulseEvent(m_hHandle); }

void Lib_Event::flush() { Lib_Synchro::flush(); }
