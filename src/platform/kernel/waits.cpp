#include "platform/kernel.h"
#include "platform/kernel/find_object.h"
#include "platform/kernel/local_objects.h"
#include "platform/kernel/local_state.h"
#include "platform/kernel/named_object.h"
#include "platform/kernel/named_use.h"
#include "platform/kernel/object_pool.h"
#include "platform/modules.h"

#include <algorithm>
#include <span>
#include <utility>

namespace qn_platform
{

using namespace kernel;

namespace
{

DWORD fail_Wait(DWORD code)
{
    SetLastError(code);
    return WAIT_FAILED;
}

bool is_Named(const Object& object) { return Get_Named(object) != nullptr; }

/// The error of a wait on an object of this kind through a handle with this mask; 0 if there is none.
DWORD check_Waitable(Kind kind, DWORD access)
{
    if (kind == Kind::Token)
    {
        return ERROR_INVALID_HANDLE;
    }
    return (access & SYNCHRONIZE) != 0 ? ERROR_SUCCESS : ERROR_ACCESS_DENIED;
}

/// The objects of a wait, with references.
class Waited_Objects
{
public:
    /// 0, or the error for which there is no wait.
    DWORD Add(HANDLE handle);

    std::span<Object* const> Get() const { return {m_Objects, m_nCount}; }

    ~Waited_Objects();
    Waited_Objects() = default;
    Waited_Objects(const Waited_Objects&) = delete;
    Waited_Objects& operator=(const Waited_Objects&) = delete;

private:
    std::size_t m_nCount = 0;
    Object* m_Objects[MAXIMUM_WAIT_OBJECTS]; // no values but in the first m_nCount
};

DWORD Waited_Objects::Add(HANDLE handle)
{
    Found found = Find_Any(handle);
    if (!found.object)
    {
        return GetLastError();
    }
    const DWORD dwError = check_Waitable(Get_Kind(*found.object), found.access);
    if (dwError == ERROR_SUCCESS)
    {
        m_Objects[m_nCount++] = found.object.Detach();
    }
    return dwError;
}

Waited_Objects::~Waited_Objects()
{
    for (Object* const pObject : Get())
    {
        Release(*pObject);
    }
}

/// The same for whatever stands for one object: what was opened twice by its name is two Objects.
std::uintptr_t get_Identity(const Object* object)
{
    const Named_Object* const pNamed = Get_Named(*object);
    return pNamed != nullptr ? reinterpret_cast<std::uintptr_t>(pNamed)
                             : reinterpret_cast<std::uintptr_t>(object);
}

bool has_Same_Twice(std::span<Object* const> objects)
{
    std::uintptr_t identities[MAXIMUM_WAIT_OBJECTS];
    std::uintptr_t* const pEnd = std::transform(objects.begin(), objects.end(), identities, get_Identity);
    std::sort(identities, pEnd);
    return std::adjacent_find(identities, pEnd) != pEnd;
}

DWORD get_Answer(bool abandoned, unsigned int index)
{
    return (abandoned ? WAIT_ABANDONED_0 : WAIT_OBJECT_0) + index;
}

DWORD wait_For(std::span<Object* const> objects, bool all, DWORD milliseconds, Thread_Record& self)
{
    Deadline deadline(milliseconds);
    if (std::any_of(objects.begin(), objects.end(), [](const Object* object) { return is_Named(*object); }))
    {
        return Wait_With_Named(objects, all, deadline, self);
    }
    const Taken taken =
        all ? Wait_For_All_Local(objects, self, deadline) : Wait_For_Any_Local(objects, self, deadline);
    return taken ? get_Answer(taken.abandoned, static_cast<unsigned int>(taken.index)) : WAIT_TIMEOUT;
}

/// The whole of a wait, for objects of any kinds.
[[gnu::noinline]] DWORD wait_For_Handles(std::span<const HANDLE> handles, bool all, DWORD milliseconds,
                                         Thread_Record& self)
{
    Waited_Objects waited;
    for (const HANDLE handle : handles)
    {
        const DWORD dwError = waited.Add(handle);
        if (dwError != ERROR_SUCCESS)
        {
            return fail_Wait(dwError);
        }
    }
    const std::span<Object* const> objects = waited.Get();
    if (all && has_Same_Twice(objects))
    {
        return fail_Wait(ERROR_INVALID_PARAMETER);
    }
    if (std::any_of(objects.begin(), objects.end(),
                    [&](const Object* object) { return Counts_No_Further(*object, self); }))
    {
        return fail_Wait(ERROR_TOO_MANY_POSTS);
    }
    return wait_For(objects, all, milliseconds, self);
}

/// What a wait got without a reference and without the dispatcher's lock; Took::Stale for objects that need
/// more than that.
struct Quick_Answer
{
    Took took;
    unsigned int index;
};

/// A local object that its handle lets be waited for; no handle to a token has that right.
inline bool is_Local_Waitable(Look look) { return (look.grant & (SYNCHRONIZE | TRAIT_NAMED)) == SYNCHRONIZE; }

Took take_Named(Look look, Thread_Record& self)
{
    const Named_Use use(look, self);
    bool bAbandoned = false;
    if (!use || !Try_Take_Named(*use, self, bAbandoned))
    {
        return use ? Took::Nothing : Took::Stale;
    }
    return bAbandoned ? Took::Abandoned : Took::Plain;
}

/// The first of the objects before `end` that can be taken; `end` if there is none.
std::size_t find_Takeable(std::span<const Look> looks, std::size_t end, const Thread_Record& self)
{
    std::size_t i = 0;
    while (i < end && !Can_Take_Seen(looks[i], self))
    {
        ++i;
    }
    return i;
}

Quick_Answer take_First(std::span<const Look> looks, Thread_Record& self)
{
    for (;;)
    {
        const std::size_t nSeen = find_Takeable(looks, looks.size(), self);
        if (nSeen == looks.size())
        {
            return {Took::Nothing, 0};
        }
        // What was set before the one seen is found now, if it was passed by a moment too early.
        const std::size_t nFirst = find_Takeable(looks, nSeen, self);
        const Took took = Try_Take_Seen(looks[nFirst], self);
        if (took != Took::Nothing)
        {
            return {took, static_cast<unsigned int>(nFirst)};
        }
    }
}

Quick_Answer take_First(std::span<const HANDLE> handles, Thread_Record& self)
{
    Look looks[MAXIMUM_WAIT_OBJECTS];
    for (std::size_t i = 0; i < handles.size(); ++i)
    {
        looks[i] = Look_Up(handles[i]);
        if (!is_Local_Waitable(looks[i]))
        {
            return {Took::Stale, 0};
        }
    }
    return take_First(std::span<const Look>(looks, handles.size()), self);
}

/// The rest of a wait for any that has tried quickly.
DWORD go_On(Quick_Answer quick, std::span<const HANDLE> handles, DWORD milliseconds, Thread_Record& self)
{
    switch (quick.took)
    {
    case Took::Plain:
    case Took::Abandoned:
        return get_Answer(quick.took == Took::Abandoned, quick.index);
    case Took::Too_Often:
        return fail_Wait(ERROR_TOO_MANY_POSTS);
    case Took::Nothing:
        if (milliseconds == 0)
        {
            return WAIT_TIMEOUT;
        }
        [[fallthrough]];
    default:
        return wait_For_Handles(handles, false, milliseconds, self);
    }
}

/// What was not taken quickly.
[[gnu::noinline]] DWORD wait_For_One(HANDLE handle, Look look, DWORD milliseconds)
{
    Thread_Record* const pSelf = Current_Thread();
    if (pSelf == nullptr)
    {
        return fail_Wait(ERROR_NOT_ENOUGH_MEMORY);
    }
    Took took = Took::Stale;
    if (is_Local_Waitable(look))
    {
        took = Try_Take_Seen(look, *pSelf);
    }
    else if ((look.grant & SYNCHRONIZE) != 0)
    {
        took = take_Named(look, *pSelf);
    }
    return go_On({took, 0}, {&handle, 1}, milliseconds, *pSelf);
}

} // namespace

DWORD WaitForSingleObject(HANDLE handle, DWORD milliseconds)
{
    const Look look = Look_Up(handle);
    Thread_Record* const pSelf = g_pCurrent_Thread;
    const bool bQuick = is_Local_Waitable(look) && pSelf != nullptr;
    return bQuick && Take_Quickly(look, *pSelf) ? WAIT_OBJECT_0 : wait_For_One(handle, look, milliseconds);
}

DWORD WaitForMultipleObjects(DWORD count, const HANDLE* handles, BOOL wait_all, DWORD milliseconds)
{
    if (count == 0 || count > MAXIMUM_WAIT_OBJECTS || handles == nullptr)
    {
        return fail_Wait(ERROR_INVALID_PARAMETER);
    }
    Thread_Record* const pSelf = Current_Thread();
    if (pSelf == nullptr)
    {
        return fail_Wait(ERROR_NOT_ENOUGH_MEMORY);
    }
    const std::span<const HANDLE> all(handles, count);
    return wait_all != 0 ? wait_For_Handles(all, true, milliseconds, *pSelf)
                         : go_On(take_First(all, *pSelf), all, milliseconds, *pSelf);
}

} // namespace qn_platform
