#include "platform/threads.h"
#include "platform/kernel/access_rights.h"
#include "platform/kernel/attributes.h"
#include "platform/kernel/find_object.h"
#include "platform/kernel/handle_table.h"
#include "platform/kernel/object_pool.h"
#include "platform/kernel/thread_start.h"
#include "platform/kernel/thread_state.h"
#include "platform/modules.h"

#include <cerrno>

namespace qn_platform
{

using namespace kernel;

namespace
{

constexpr DWORD FAILED = 0xFFFFFFFF;

std::uintptr_t fail_Creation(DWORD code, int error)
{
    SetLastError(code);
    errno = error;
    return 0;
}

/// A handle to a new thread, with which it ends if it is suspended.
std::uintptr_t create_Thread(const Thread_Work& work, bool inherit, unsigned int* id)
{
    const Object_Reference object = New_Thread_Object(0);
    const HANDLE handle =
        object ? New_Handle(Share(*object), Get_All_Access(Kind::Thread), inherit) : nullptr;
    if (handle == nullptr)
    {
        return fail_Creation(GetLastError(), EACCES);
    }
    const int nError = Start_Thread(*object, work);
    if (nError != 0)
    {
        Close_Handle(handle);
        return fail_Creation(ERROR_NOT_ENOUGH_MEMORY, nError == ENOMEM ? EACCES : EAGAIN);
    }
    if (id != nullptr)
    {
        *id = Get_Thread_State(*object).Get_Id();
    }
    return reinterpret_cast<std::uintptr_t>(handle);
}

/// A thread that may be asked about.
Object_Reference find_For_Query(HANDLE thread)
{
    Found found = Find_Any(thread);
    if (!found.object)
    {
        return {};
    }
    const bool bThread = Get_Kind(*found.object) == Kind::Thread;
    if (!bThread || (found.access & (THREAD_QUERY_INFORMATION | THREAD_QUERY_LIMITED_INFORMATION)) == 0)
    {
        Fail(bThread ? ERROR_ACCESS_DENIED : ERROR_INVALID_HANDLE);
        return {};
    }
    return std::move(found.object);
}

} // namespace

std::uintptr_t _beginthreadex(void* attributes, unsigned int stack_size,
                              unsigned int (*procedure)(void* argument), void* argument, unsigned int flags,
                              unsigned int* id)
{
    if (procedure == nullptr || (flags & ~(CREATE_SUSPENDED | STACK_SIZE_PARAM_IS_A_RESERVATION)) != 0)
    {
        return fail_Creation(ERROR_INVALID_PARAMETER, EINVAL);
    }
    bool bOpen_To_All;
    bool bInherit;
    const DWORD dwError =
        Read_Attributes(static_cast<const SECURITY_ATTRIBUTES*>(attributes), bOpen_To_All, bInherit);
    if (dwError != ERROR_SUCCESS)
    {
        return fail_Creation(dwError, EINVAL);
    }
    const bool bLess = (flags & STACK_SIZE_PARAM_IS_A_RESERVATION) != 0;
    return create_Thread({procedure, argument, (flags & CREATE_SUSPENDED) != 0, stack_size, bLess}, bInherit,
                         id);
}

DWORD ResumeThread(HANDLE thread)
{
    const Object_Reference object = Find_Object(thread, Kind::Thread, THREAD_SUSPEND_RESUME);
    if (!object)
    {
        return FAILED;
    }
    return Get_Thread_State(*object).Release(*object) ? 1 : 0;
}

BOOL GetExitCodeThread(HANDLE thread, LPDWORD code)
{
    const Object_Reference object = find_For_Query(thread);
    if (!object)
    {
        return FALSE;
    }
    if (code == nullptr)
    {
        return Fail(ERROR_INVALID_PARAMETER);
    }
    *code = Get_Thread_State(*object).Get_Exit_Code();
    return TRUE;
}

DWORD GetThreadId(HANDLE thread)
{
    const Object_Reference object = find_For_Query(thread);
    return object ? Get_Thread_State(*object).Get_Id() : 0;
}

BOOL TerminateThread(HANDLE thread, DWORD code)
{
    const Object_Reference object = Find_Object(thread, Kind::Thread, THREAD_TERMINATE);
    if (!object)
    {
        return FALSE;
    }
    Thread_State& state = Get_Thread_State(*object);
    return state.Cancel(*object, code) || Fail(state.Is_Ending() ? ERROR_ACCESS_DENIED : ERROR_NOT_SUPPORTED);
}

} // namespace qn_platform
