#include "kernel/lib_synchro.h"

#include "foundation/typed_buffer.h"
#include "services/lib_guid.h"

#include <algorithm>

Lib_Synchro::Lib_Synchro(void* const& hSource, const wchar_t* pName) : Lib_Handle(hSource), m_strName(pName)
{
}

Lib_Synchro::Lib_Synchro(const Lib_Synchro& Source) : Lib_Synchro() { *this = Source; }

Lib_Synchro::~Lib_Synchro() { Lib_Synchro::flush(); }

Lib_Synchro& Lib_Synchro::operator=(const Lib_Synchro& Source)
{
    if (this != &Source)
    {
        m_strName = Source.m_strName;
        Lib_Handle::operator=(Source);
    }
    return *this;
}

// The text is copied before the old name goes: it may be part of it, and memory may be short.
void Lib_Synchro::Set_Name(const wchar_t* pName) { m_strName = Lib_String(pName); }

Lib_String Lib_Synchro::Set_Unique_Name(bool bGlobal)
{
    const Lib_String strGuid = Lib_Guid().Get_Text_Registry_Format();
    m_strName = bGlobal ? L"Global\\" + strGuid : strGuid;
    return m_strName;
}

unsigned long Lib_Synchro::Wait(unsigned long dwMilliseconds)
{
    return WaitForSingleObject(m_hHandle, static_cast<DWORD>(dwMilliseconds));
}

bool Lib_Synchro::Wait_Until_Object_0(unsigned long dwMilliseconds)
{
    return Wait(dwMilliseconds) == WAIT_OBJECT_0;
}

unsigned long Lib_Synchro::Wait_Multiple(LibT_Array<Lib_Synchro*, 4>* pObjects, bool bWait_All,
                                         unsigned long dwMilliseconds)
{
    const unsigned long long nCount = pObjects != nullptr ? pObjects->Get_Num_Elements() : 0;
    LibT_Buffer<void*> Handles(nCount);
    if (Handles.Get_Num_Elements() != nCount)
    {
        SetLastError(ERROR_NOT_ENOUGH_MEMORY);
        return WAIT_FAILED;
    }
    auto* pHandles = static_cast<HANDLE*>(Handles.Get_Ptr());
    for (unsigned long long i = 0; i < nCount; ++i)
    {
        const Lib_Synchro* pObject = (*pObjects)[i];
        pHandles[i] = pObject != nullptr ? pObject->m_hHandle : nullptr;
    }
    // A number that needs more than 32 bits must not be taken for a small one.
    const auto nPlatform_Count = static_cast<DWORD>(std::min(nCount, 0xFFFFFFFFULL));
    return WaitForMultipleObjects(nPlatform_Count, pHandles, bWait_All, static_cast<DWORD>(dwMilliseconds));
}

bool Lib_Synchro::Release() { return false; }

void Lib_Synchro::flush()
{
    m_strName.Empty();
    Lib_Handle::flush();
}

void Lib_Synchro::flush_To_Name(const wchar_t* pName)
{
    const Lib_String strName(pName);
    flush();
    m_strName = strName;
}

bool Lib_Synchro::prepare_To_Open(const wchar_t* pName)
{
    const Lib_String strName(pName);
    Close();
    if (pName != nullptr)
        m_strName = strName;
    return !m_strName.Is_Empty();
}

bool Lib_Synchro::take_Handle(void* hNew)
{
    m_hHandle = hNew;
    return hNew != nullptr;
}
