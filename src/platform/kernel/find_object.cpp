#include "platform/kernel/find_object.h"

#include "platform/kernel.h"
#include "platform/kernel/access_rights.h"
#include "platform/kernel/object_pool.h"

#include <atomic>
#include <utility>

namespace qn_platform::kernel
{

namespace
{

/// What handles to this process stand for; it is never set. Made at first need, and kept.
constinit std::atomic<Object*> g_pProcess{nullptr};

Object_Reference get_Process_Object()
{
    Object* pProcess = g_pProcess.load(std::memory_order_acquire);
    if (pProcess == nullptr)
    {
        Object_Reference made = New_Object(Get_Traits(Kind::Process), 0);
        if (!made)
        {
            return made;
        }
        if (g_pProcess.compare_exchange_strong(pProcess, made.get(), std::memory_order_acq_rel))
        {
            pProcess = made.Detach();
        }
    }
    return Share(*pProcess);
}

Object_Reference get_Own_Thread_Object()
{
    Thread_Record* const pSelf = Current_Thread();
    if (pSelf == nullptr)
    {
        Fail(ERROR_NOT_ENOUGH_MEMORY);
        return {};
    }
    return Get_Thread_Object(*pSelf);
}

/// Find_Object for a handle of the table.
Object_Reference find_By_Value(HANDLE handle, Kind kind, DWORD access)
{
    const Look look = Look_Up(handle);
    const DWORD dwError = Check_Look(look, kind, access);
    if (dwError != ERROR_SUCCESS)
    {
        Fail(dwError);
        return {};
    }
    Object_Reference object = Get_Reference(look);
    if (!object)
    {
        Fail(ERROR_INVALID_HANDLE);
    }
    return object;
}

} // namespace

bool Check_Handle(HANDLE handle, Kind kind, DWORD access)
{
    if (Is_Pseudo(handle))
    {
        return static_cast<bool>(Find_Object(handle, kind, access));
    }
    const DWORD dwError = Check_Look(Look_Up(handle), kind, access);
    return dwError == ERROR_SUCCESS || Fail(dwError);
}

Found Find_Any(HANDLE handle)
{
    if (Is_Pseudo(handle))
    {
        return reinterpret_cast<std::uintptr_t>(handle) == THIS_PROCESS
                   ? Found{get_Process_Object(), Get_All_Access(Kind::Process)}
                   : Found{get_Own_Thread_Object(), Get_All_Access(Kind::Thread)};
    }
    Found found;
    if (const Look look = Look_Up(handle); look.object != nullptr)
    {
        found = {Get_Reference(look), look.grant & ACCESS_BITS};
    }
    if (!found.object)
    {
        Fail(ERROR_INVALID_HANDLE);
    }
    return found;
}

Object_Reference Find_Object(HANDLE handle, Kind kind, DWORD access)
{
    if (!Is_Pseudo(handle) && kind != Kind::Any)
    {
        return find_By_Value(handle, kind, access);
    }
    Found found = Find_Any(handle);
    if (!found.object)
    {
        return {};
    }
    if (kind != Kind::Any && Get_Kind(*found.object) != kind)
    {
        Fail(ERROR_INVALID_HANDLE);
        return {};
    }
    if ((access & ~found.access) != 0)
    {
        Fail(ERROR_ACCESS_DENIED);
        return {};
    }
    return std::move(found.object);
}

void Forget_Process() { g_pProcess.store(nullptr, std::memory_order_relaxed); }

} // namespace qn_platform::kernel
