#include "platform/kernel.h"
#include "platform/kernel/object_layout.h"
#include "platform/kernel/thread_record.h"
#include "platform/kernel/thread_state.h"
#include "platform/kernel/token.h"
#include "platform/tokens.h"

#include <utility>

// Tokens that threads bear.

namespace qn_platform
{

using namespace kernel;

namespace
{

/// The token to be borne, or none for a null handle. False with the last error.
bool find_Wanted(HANDLE handle, Object_Reference& token)
{
    if (handle == nullptr)
    {
        return true;
    }
    token = Find_Object(handle, Kind::Token, TOKEN_IMPERSONATE);
    return token && (Get_Token(*token).Can_Be_Borne() || Fail(ERROR_BAD_TOKEN_TYPE));
}

/// The token that the thread behind a handle bears, empty if it bears none. False, with the last error, if
/// the handle does not let that be asked.
bool get_Borne(HANDLE thread, Object_Reference& borne)
{
    const Look look = Look_Up(thread);
    const Thread_Record* const pSelf = g_pCurrent_Thread;
    if (look.object != nullptr && pSelf != nullptr && look.object == pSelf->object)
    {
        // A running thread keeps its own object.
        borne = Get_Own_Token();
        return (look.grant & THREAD_QUERY_INFORMATION) != 0 || Fail(ERROR_ACCESS_DENIED);
    }
    const Object_Reference object = Find_Object(thread, Kind::Thread, THREAD_QUERY_INFORMATION);
    if (object)
    {
        borne = Get_Thread_State(*object).Get_Token();
    }
    return static_cast<bool>(object);
}

} // namespace

BOOL OpenThreadToken(HANDLE thread, DWORD access, BOOL as_self, PHANDLE token)
{
    Object_Reference borne;
    if (!get_Borne(thread, borne))
    {
        return FALSE;
    }
    if (token == nullptr)
    {
        return Fail(ERROR_INVALID_PARAMETER);
    }
    if (!borne)
    {
        return Fail(ERROR_NO_TOKEN);
    }
    const HANDLE opened =
        Open_Token(std::move(borne), access, as_self != FALSE ? ~DWORD{0} : Get_Own_Grant());
    if (opened == nullptr)
    {
        return FALSE;
    }
    *token = opened;
    return TRUE;
}

BOOL SetThreadToken(PHANDLE thread, HANDLE token)
{
    const Object_Reference object =
        Find_Object(thread != nullptr ? *thread : GetCurrentThread(), Kind::Thread, THREAD_SET_THREAD_TOKEN);
    Object_Reference wanted;
    if (!object || !find_Wanted(token, wanted))
    {
        return FALSE;
    }
    return Get_Thread_State(*object).Set_Token(std::move(wanted)) || Fail(ERROR_ACCESS_DENIED);
}

BOOL RevertToSelf()
{
    const Thread_Record* const pSelf = g_pCurrent_Thread;
    if (pSelf != nullptr && pSelf->object != nullptr)
    {
        Get_Thread_State(*pSelf->object).Set_Token({});
    }
    return TRUE;
}

} // namespace qn_platform
