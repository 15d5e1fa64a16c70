#include "platform/kernel/creation.h"

#include "platform/kernel/access_rights.h"
#include "platform/kernel/attributes.h"
#include "platform/kernel/handle_table.h"
#include "platform/kernel/local_state.h"
#include "platform/kernel/object_pool.h"
#include "platform/modules.h"

#include <utility>

namespace qn_platform::kernel
{

namespace
{

HANDLE fail_With(DWORD code)
{
    SetLastError(code);
    return nullptr;
}

std::uint32_t get_State(const Named_Request& request, const Thread_Record& self)
{
    if (!request.initial)
    {
        return 0;
    }
    return request.kind == Kind::Mutex ? self.id : STATE_SET;
}

HANDLE create_Unnamed(const Named_Request& request, Thread_Record& self, bool inherit)
{
    const std::uint32_t nManual = request.manual_reset ? TRAIT_MANUAL : 0;
    Object_Reference object = New_Object(Get_Traits(request.kind) | nManual, get_State(request, self));
    if (!object)
    {
        return nullptr;
    }
    if (request.kind == Kind::Mutex && request.initial)
    {
        Link_Owned(*object, self);
    }
    const HANDLE handle = Open_Handle(std::move(object), Get_All_Access(request.kind), inherit);
    return handle == nullptr ? nullptr : (SetLastError(ERROR_SUCCESS), handle);
}

/// A handle to what was made or opened, whose reference it takes over.
HANDLE open_Named_Handle(Kind kind, const Named_Answer& answer, DWORD access, bool inherit)
{
    if (answer.object == nullptr)
    {
        return fail_With(answer.error);
    }
    Object_Reference object = New_Object(Get_Traits(kind) | TRAIT_NAMED, 0);
    if (!object)
    {
        Release_Reference(*answer.object);
        return fail_With(ERROR_NOT_ENOUGH_MEMORY);
    }
    object->record.store(answer.object, std::memory_order_release);
    return Open_Handle(std::move(object), access, inherit);
}

} // namespace

HANDLE Create_Object(Named_Request request, const SECURITY_ATTRIBUTES* attributes)
{
    bool bInherit;
    const DWORD dwError = Read_Attributes(attributes, request.open_to_all, bInherit);
    if (dwError != ERROR_SUCCESS)
    {
        return fail_With(dwError);
    }
    Thread_Record* const pSelf = Current_Thread();
    if (pSelf == nullptr)
    {
        return fail_With(ERROR_NOT_ENOUGH_MEMORY);
    }
    if (request.name == nullptr || *request.name == 0)
    {
        return create_Unnamed(request, *pSelf, bInherit);
    }
    const Named_Answer answer = Create_Named(request, *pSelf);
    const HANDLE handle = open_Named_Handle(request.kind, answer, Get_All_Access(request.kind), bInherit);
    return handle == nullptr ? nullptr : (SetLastError(answer.error), handle);
}

HANDLE Open_Object(Kind kind, DWORD access, BOOL inherit, LPCWSTR name)
{
    if (name == nullptr)
    {
        return fail_With(ERROR_INVALID_PARAMETER);
    }
    return open_Named_Handle(kind, Open_Named(kind, name), Map_Access(kind, access), inherit != 0);
}

} // namespace qn_platform::kernel
