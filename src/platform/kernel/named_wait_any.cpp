#include "platform/kernel.h"
#include "platform/kernel/named_sleep.h"
#include "platform/kernel/named_wait.h"
#include "platform/kernel/named_words.h"
#include "platform/kernel/page_guard.h"
#include "platform/modules.h"

#include <algorithm>
#include <optional>

namespace qn_platform::kernel
{

namespace
{

/// One wait for any. The entries of a local object have no place, those of a named one nothing in m_Locals.
class Any_Wait
{
public:
    Any_Wait(std::span<Object* const> objects, Thread_Record& self, Deadline& deadline);

    Taken Run();

private:
    Taken try_Once(Awake awake);
    bool try_Entry(std::size_t index, Awake awake, bool& abandoned);
    bool try_Mutex(Place& place, Awake awake, bool& abandoned);
    Taken sleep_Once();

    std::span<Place> get_Places() { return {m_Places, m_nCount}; }

    Thread_Record& m_Self;
    Deadline& m_Deadline;
    std::size_t m_nCount;
    bool m_bHas_Locals = false;
    Place m_Places[MOST_WAIT_OBJECTS]; // no values but in the first m_nCount; nor these
    Object* m_Locals[MOST_WAIT_OBJECTS];
};

Any_Wait::Any_Wait(std::span<Object* const> objects, Thread_Record& self, Deadline& deadline)
    : m_Self(self), m_Deadline(deadline), m_nCount(objects.size())
{
    for (std::size_t i = 0; i < m_nCount; ++i)
    {
        Named_Object* const pNamed = Get_Named(*objects[i]);
        m_Locals[i] = pNamed == nullptr ? objects[i] : nullptr;
        m_bHas_Locals = m_bHas_Locals || pNamed == nullptr;
        m_Places[i].object = nullptr;
        if (pNamed != nullptr)
        {
            Begin_Place(m_Places[i], *pNamed, i < MOST_TAKERS);
        }
    }
}

Taken Any_Wait::Run()
{
    Taken taken = try_Once(Awake::Did_Not_Sleep);
    while (!taken && !m_Deadline.Has_Passed())
    {
        taken = sleep_Once();
    }
    return taken;
}

/// Takes the first object that can be had, and passes on what the others gave.
Taken Any_Wait::try_Once(Awake awake)
{
    for (std::size_t i = 0; i < m_nCount; ++i)
    {
        bool bAbandoned = false;
        if (try_Entry(i, awake, bAbandoned))
        {
            return {static_cast<int>(i), bAbandoned};
        }
    }
    return {};
}

bool Any_Wait::try_Entry(std::size_t index, Awake awake, bool& abandoned)
{
    Place& place = m_Places[index];
    if (place.object != nullptr && place.object->Is_Mutex())
    {
        return try_Mutex(place, awake, abandoned);
    }
    const bool bTaken =
        place.object == nullptr ? Try_Take(*m_Locals[index], m_Self, abandoned) : Take_Event(place, awake);
    if (bTaken)
    {
        Pass_On_All(get_Places(), &place, awake);
    }
    return bTaken;
}

/// The pending mark, which looks after the duties until now, is needed to take the mutex: so first the
/// duties.
bool Any_Wait::try_Mutex(Place& place, Awake awake, bool& abandoned)
{
    if (!Looks_Available(place, m_Self))
    {
        return false;
    }
    Pass_On_All(get_Places(), &place, awake);
    return Try_Lock(*place.object, m_Self, abandoned);
}

Taken Any_Wait::sleep_Once()
{
    std::optional<Local_Queue_Places> locals;
    std::uint32_t nBell = 0;
    if (m_bHas_Locals)
    {
        locals.emplace(m_Self, std::span<Object* const>(m_Locals, m_nCount));
        if (const Taken taken = locals->Enter())
        {
            return taken;
        }
        nBell = locals->Get_Bell_Value();
    }
    const Awake awake = Sleep_On(get_Places(), m_bHas_Locals ? &nBell : nullptr, m_Self, m_Deadline);
    Taken taken;
    if (m_bHas_Locals && (taken = locals->Leave()))
    {
        Pass_On_All(get_Places(), nullptr, awake);
    }
    else
    {
        taken = try_Once(awake);
    }
    End_Duties(m_Self);
    return taken;
}

} // namespace

Taken Wait_For_Any_Named(std::span<Object* const> objects, Thread_Record& self, Deadline& deadline)
{
    return Any_Wait(objects, self, deadline).Run();
}

namespace
{

bool counts_No_Further(const Object& object, const Thread_Record& self)
{
    const Named_Object* const pNamed = Get_Named(object);
    return pNamed != nullptr && pNamed->owner.load(std::memory_order_relaxed) == &self &&
           pNamed->recursion >= MOST_RECURSION;
}

bool is_Exposed(const Object* object)
{
    const Named_Object* const pNamed = Get_Named(*object);
    return pNamed != nullptr && pNamed->exposed;
}

} // namespace

DWORD Wait_With_Named(std::span<Object* const> objects, bool all, Deadline& deadline, Thread_Record& self)
{
    if (std::any_of(objects.begin(), objects.end(),
                    [&](const Object* object) { return counts_No_Further(*object, self); }))
    {
        SetLastError(ERROR_TOO_MANY_POSTS);
        return WAIT_FAILED;
    }
    if (std::any_of(objects.begin(), objects.end(), is_Exposed))
    {
        Let_Faults_Through(self);
    }
    const Taken taken =
        all ? Wait_For_All_Named(objects, self, deadline) : Wait_For_Any_Named(objects, self, deadline);
    if (!taken)
    {
        return WAIT_TIMEOUT;
    }
    return (taken.abandoned ? WAIT_ABANDONED_0 : WAIT_OBJECT_0) + static_cast<DWORD>(taken.index);
}

} // namespace qn_platform::kernel
