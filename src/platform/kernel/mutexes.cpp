#include "platform/kernel.h"
#include "platform/kernel/creation.h"
#include "platform/kernel/local_state.h"
#include "platform/kernel/named_object.h"
#include "platform/kernel/object_pool.h"
#include "platform/modules.h"

namespace qn_platform
{

using namespace kernel;

namespace
{

[[gnu::noinline]] DWORD release_Named(const Look& look, Thread_Record* self)
{
    const Object_Reference object = Get_Reference(look);
    if (!object)
    {
        return ERROR_INVALID_HANDLE;
    }
    const bool bReleased = self != nullptr && Release_Named_Mutex(*Get_Named(*object), *self);
    return bReleased ? ERROR_SUCCESS : ERROR_NOT_OWNER;
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
    Look look;
    if (!Look_Up_For(mutex, Kind::Mutex, 0, look))
    {
        return FALSE;
    }
    Thread_Record* const pSelf = g_pCurrent_Thread;
    const bool bNamed = (look.grant & TRAIT_NAMED) != 0;
    const DWORD dwError = bNamed ? release_Named(look, pSelf) : Release_Seen(look, pSelf);
    return dwError == ERROR_SUCCESS || Fail(dwError);
}

} // namespace qn_platform
