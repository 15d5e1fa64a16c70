#include "platform/kernel.h"
#include "platform/kernel/creation.h"
#include "platform/kernel/local_state.h"
#include "platform/kernel/named_object.h"
#include "platform/kernel/named_use.h"
#include "platform/modules.h"

namespace qn_platform
{

using namespace kernel;

namespace
{

DWORD release_Named(Look look, Thread_Record* self)
{
    if (self == nullptr)
    {
        return ERROR_NOT_OWNER;
    }
    const Named_Use use(look, *self);
    if (!use)
    {
        return ERROR_INVALID_HANDLE;
    }
    return Release_Named_Mutex(*use, *self) ? ERROR_SUCCESS : ERROR_NOT_OWNER;
}

/// What was not released quickly.
[[gnu::noinline]] BOOL release(Look look)
{
    DWORD dwError = Check_Look(look, Kind::Mutex, 0);
    if (dwError == ERROR_SUCCESS)
    {
        const bool bNamed = (look.grant & TRAIT_NAMED) != 0;
        dwError = bNamed ? release_Named(look, g_pCurrent_Thread) : Release_Seen(look, g_pCurrent_Thread);
    }
    return dwError == ERROR_SUCCESS || Fail(dwError);
}

} // namespace

HANDLE CreateMutexW(LPSECURITY_ATTRIBUTES attributes, BOOL initial_owner, LPCWSTR name)
{
    return Create_Object({Kind::Mutex, name, false, false, initial_owner != 0}, attributes);
}

HANDLE OpenMutexW(DWORD access, BOOL inherit, LPCWSTR name)
{
    return Open_Object(Kind::Mutex, access, inherit, name);
}

BOOL ReleaseMutex(HANDLE mutex)
{
    const Look look = Look_Up(mutex);
    Thread_Record* const pSelf = g_pCurrent_Thread;
    const bool bQuick =
        (look.grant & (TRAIT_KIND | TRAIT_NAMED)) == Get_Traits(Kind::Mutex) && pSelf != nullptr;
    return (bQuick && Release_Quickly(look, *pSelf)) || release(look);
}

} // namespace qn_platform
