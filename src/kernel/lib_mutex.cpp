#include "kernel/lib_mutex.h"

#include "services/security.h"

Lib_Mutex::Lib_Mutex(void* const& hSource, const wchar_t* pName) : Lib_Synchro(hSource, pName) {}

Lib_Mutex::Lib_Mutex(const Lib_Mutex& Source) = default;

Lib_Mutex::~Lib_Mutex() { Lib_Mutex::flush(); }

Lib_Mutex& Lib_Mutex::operator=(const Lib_Mutex& Source) = default;

bool Lib_Mutex::Create(_SECURITY_ATTRIBUTES* pAttributes, bool bInitial_Owner)
{
    Close();
    return take_Handle(CreateMutexW(pAttributes, bInitial_Owner, m_strName));
}

bool Lib_Mutex::Create(_SECURITY_ATTRIBUTES* pAttributes, bool bInitial_Owner, const wchar_t* pName)
{
    flush_To_Name(pName);
    return Create(pAttributes, bInitial_Owner);
}

bool Lib_Mutex::Create_Public_With_Unique_Name(bool bGlobal, bool bInitial_Owner)
{
    flush();
    Set_Unique_Name(bGlobal);
    return Create(Lib_Get_Public_Security_Attributes(), bInitial_Owner);
}

bool Lib_Mutex::Open(const wchar_t* pName, unsigned long dwAccess, bool bInherit)
{
    return prepare_To_Open(pName) &&
           take_Handle(OpenMutexW(static_cast<DWORD>(dwAccess), bInherit, m_strName));
}

bool Lib_Mutex::Release() { return m_hHandle != nullptr && ReleaseMutex(m_hHandle); }

void Lib_Mutex::flush() { Lib_Synchro::flush(); }
