#include "platform/kernel.h"
#include "platform/kernel/access_rights.h"
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

void change_Named(Named_Object& event, Signal signal, Thread_Record& self)
{
    switch (signal)
    {
    case Signal::Set:
        return Set_Named(event, self);
    case Signal::Reset:
        return Reset_Named(event, self);
    default:
        return Pulse_Named(event, self);
    }
}

BOOL change_Named(Look look, Signal signal)
{
    Thread_Record* const pSelf = Current_Thread();
    if (pSelf == nullptr)
    {
        return Fail(ERROR_NOT_ENOUGH_MEMORY);
    }
    const Named_Use use(look, *pSelf);
    if (!use)
    {
        return Fail(ERROR_INVALID_HANDLE);
    }
    change_Named(*use, signal, *pSelf);
    return TRUE;
}

/// What change_Quickly could not do.
[[gnu::noinline]] BOOL change(Look look, Signal signal)
{
    const DWORD dwError = Check_Look(look, Kind::Event, EVENT_MODIFY_STATE);
    if (dwError != ERROR_SUCCESS)
    {
        return Fail(dwError);
    }
    if ((look.grant & TRAIT_NAMED) != 0)
    {
        return change_Named(look, signal);
    }
    return Change_Signal_Seen(look, signal) || Fail(ERROR_INVALID_HANDLE);
}

/// Sets or resets an unnamed event on which nobody queues, if its state was the other one.
inline bool change_Quickly(Look look, Signal signal)
{
    constexpr std::uint32_t MUST_BE = EVENT_MODIFY_STATE | Get_Traits(Kind::Event);
    const bool bSet = signal == Signal::Set;
    return (look.grant & (EVENT_MODIFY_STATE | TRAIT_KIND | TRAIT_NAMED)) == MUST_BE &&
           Exchange_Quickly(look, bSet ? 0 : STATE_SET, bSet ? STATE_SET : 0);
}

} // namespace

HANDLE CreateEventW(LPSECURITY_ATTRIBUTES attributes, BOOL manual_reset, BOOL initial_state, LPCWSTR name)
{
    return Create_Object({Kind::Event, name, false, manual_reset != 0, initial_state != 0}, attributes);
}

HANDLE OpenEventW(DWORD access, BOOL inherit, LPCWSTR name)
{
    return Open_Object(Kind::Event, access, inherit, name);
}

BOOL SetEvent(HANDLE event)
{
    const Look look = Look_Up(event);
    return change_Quickly(look, Signal::Set) || change(look, Signal::Set);
}

BOOL ResetEvent(HANDLE event)
{
    const Look look = Look_Up(event);
    return change_Quickly(look, Signal::Reset) || change(look, Signal::Reset);
}

BOOL PulseEvent(HANDLE event) { return change(Look_Up(event), Signal::Pulse); }

} // namespace qn_platform
