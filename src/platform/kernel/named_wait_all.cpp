#include "platform/kernel/named_claims.h"
#include "platform/kernel/named_sleep.h"
#include "platform/kernel/named_wait.h"
#include "platform/kernel/named_words.h"

#include <sched.h>

namespace qn_platform::kernel
{

namespace
{

/// One wait for all: nothing is taken before all can be had; until then the thread sleeps on one object that
/// is missing.
class All_Wait
{
public:
    All_Wait(std::span<Object* const> objects, Thread_Record& self, Deadline& deadline);

    Taken Run();

private:
    /// What a look at all objects came to.
    enum class Outcome
    {
        Taken_All,
        Missing_Local,
        Overtaken // a named object was gone
    };

    Named_Object* find_Missing_Named() const;
    void sleep_On_Named(Named_Object& object);
    Outcome take_All();
    bool take_Held();
    Taken tell_Abandoned(const Claims& claims) const;

    std::span<Object* const> get_Locals() const { return {m_Locals, m_nLocals}; }

    std::span<Object* const> m_Objects;
    Thread_Record& m_Self;
    Deadline& m_Deadline;
    Taken m_Taken;
    Object* m_pMissing_Local = nullptr;
    std::size_t m_nLocals = 0;
    std::size_t m_nNamed = 0;
    Object* m_Locals[MOST_WAIT_OBJECTS]; // no values but in the first m_nLocals; no object comes twice
    Named_Object* m_Named[MOST_WAIT_OBJECTS];
    bool m_Abandoned[MOST_WAIT_OBJECTS]; // as m_Locals
};

All_Wait::All_Wait(std::span<Object* const> objects, Thread_Record& self, Deadline& deadline)
    : m_Objects(objects), m_Self(self), m_Deadline(deadline)
{
    for (Object* const pObject : objects)
    {
        if (Named_Object* const pNamed = Get_Named(*pObject))
        {
            m_Named[m_nNamed++] = pNamed;
        }
        else
        {
            m_Locals[m_nLocals++] = pObject;
        }
    }
}

Taken All_Wait::Run()
{
    for (;;)
    {
        if (Named_Object* const pMissing = find_Missing_Named())
        {
            if (m_Deadline.Has_Passed())
            {
                return {};
            }
            sleep_On_Named(*pMissing);
            continue;
        }
        switch (take_All())
        {
        case Outcome::Taken_All:
            return m_Taken;
        case Outcome::Missing_Local:
            if (!Wait_Until_Available(*m_pMissing_Local, m_Self, m_Deadline))
            {
                return {};
            }
            break;
        case Outcome::Overtaken:
            if (m_Deadline.Has_Passed())
            {
                return {};
            }
            sched_yield();
            break;
        }
    }
}

/// An event counts as available only while it is set: what a pulse releases is not there for all.
Place make_Place(Named_Object& object)
{
    Place place;
    Begin_Place(place, object, false);
    return place;
}

Named_Object* All_Wait::find_Missing_Named() const
{
    for (std::size_t i = 0; i < m_nNamed; ++i)
    {
        if (!Looks_Available(make_Place(*m_Named[i]), m_Self))
        {
            return m_Named[i];
        }
    }
    return nullptr;
}

/// What the sleep brought is passed on at once, for nothing is taken yet: everybody is woken then, and all
/// compete for it.
void All_Wait::sleep_On_Named(Named_Object& object)
{
    Place place = make_Place(object);
    const Awake awake = Sleep_On({&place, 1}, nullptr, m_Self, m_Deadline);
    Pass_On(place, awake);
    End_Duties(m_Self);
}

All_Wait::Outcome All_Wait::take_All()
{
    const Dispatcher_Lock lock;
    for (Object* const pLocal : get_Locals())
    {
        Hold(*pLocal);
    }
    Outcome outcome = Outcome::Taken_All;
    for (Object* const pLocal : get_Locals())
    {
        if (!Can_Take(*pLocal, m_Self))
        {
            m_pMissing_Local = pLocal;
            outcome = Outcome::Missing_Local;
        }
    }
    if (outcome == Outcome::Taken_All && !take_Held())
    {
        outcome = Outcome::Overtaken;
    }
    for (Object* const pLocal : get_Locals())
    {
        Let_Go(*pLocal);
    }
    return outcome;
}

bool All_Wait::take_Held()
{
    Claims claims(m_Self);
    for (std::size_t i = 0; i < m_nNamed; ++i)
    {
        claims.Add(*m_Named[i]);
    }
    if (!claims.Take_All())
    {
        return false;
    }
    claims.Commit();
    for (std::size_t i = 0; i < m_nLocals; ++i)
    {
        m_Abandoned[i] = Take(*m_Locals[i], m_Self);
    }
    m_Taken = tell_Abandoned(claims);
    return true;
}

Taken All_Wait::tell_Abandoned(const Claims& claims) const
{
    for (std::size_t i = 0; i < m_Objects.size(); ++i)
    {
        const Named_Object* const pNamed = Get_Named(*m_Objects[i]);
        bool bAbandoned = pNamed != nullptr && claims.Was_Abandoned(*pNamed);
        for (std::size_t j = 0; j < m_nLocals && pNamed == nullptr; ++j)
        {
            bAbandoned = bAbandoned || (m_Locals[j] == m_Objects[i] && m_Abandoned[j]);
        }
        if (bAbandoned)
        {
            return {static_cast<int>(i), true};
        }
    }
    return {0, false};
}

} // namespace

Taken Wait_For_All_Named(std::span<Object* const> objects, Thread_Record& self, Deadline& deadline)
{
    return All_Wait(objects, self, deadline).Run();
}

} // namespace qn_platform::kernel
