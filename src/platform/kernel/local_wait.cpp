#include "platform/kernel/local_objects.h"
#include "platform/kernel/local_state.h"
#include "platform/kernel/object_layout.h"

#include <algorithm>

namespace qn_platform::kernel
{

namespace
{

/// Takes what `objects` let be taken, all at once; nothing if one is missing. They are held.
Taken take_All(std::span<Object* const> objects, Thread_Record& self)
{
    const bool bAll = std::all_of(objects.begin(), objects.end(),
                                  [&](const Object* object) { return Can_Take(*object, self); });
    Taken taken;
    for (std::size_t i = 0; bAll && i < objects.size(); ++i)
    {
        const bool bAbandoned = Take(*objects[i], self);
        taken.index = std::max(taken.index, 0);
        if (bAbandoned && !taken.abandoned)
        {
            taken = {static_cast<int>(i), true};
        }
    }
    return taken;
}

/// Takes all objects or queues on all of them.
Taken enter_For_All(std::span<Object* const> objects, Queued_Wait& wait)
{
    const Dispatcher_Lock lock;
    std::for_each(objects.begin(), objects.end(), [](Object* object) { Hold(*object); });
    const Taken taken = take_All(objects, wait.thread);
    if (taken)
    {
        std::for_each(objects.begin(), objects.end(), [](Object* object) { Let_Go(*object); });
        return taken;
    }
    wait.bell = wait.thread.bell.load(std::memory_order_relaxed);
    for (std::size_t i = 0; i < objects.size(); ++i)
    {
        wait.Queue_On(*objects[i], static_cast<int>(i));
    }
    return taken;
}

/// Holds the object, and takes it if that is possible. Whether it did; then it is held no longer.
bool take_Or_Hold(Object& object, Thread_Record& self, bool& abandoned)
{
    Hold(object);
    if (!Can_Take(object, self))
    {
        return false;
    }
    abandoned = Take(object, self);
    Let_Go(object);
    return true;
}

} // namespace

Local_Queue_Places::Local_Queue_Places(Thread_Record& self, std::span<Object* const> objects)
    : m_Objects(objects), m_Wait(self, Wait_Mode::Any)
{
}

Taken Local_Queue_Places::Enter()
{
    const Dispatcher_Lock lock;
    m_Wait.result = {};
    m_Wait.count = 0;
    m_Wait.bell = m_Wait.thread.bell.load(std::memory_order_relaxed);
    for (std::size_t i = 0; i < m_Objects.size(); ++i)
    {
        Taken taken{static_cast<int>(i), false};
        if (m_Objects[i] == nullptr)
        {
            continue;
        }
        if (take_Or_Hold(*m_Objects[i], m_Wait.thread, taken.abandoned))
        {
            m_Wait.Leave_Queues();
            return taken;
        }
        m_Wait.Queue_On(*m_Objects[i], taken.index);
    }
    return {};
}

Taken Local_Queue_Places::Leave() { return m_Wait.Finish(); }

Taken Local_Queue_Places::Sleep_And_Leave(Deadline& deadline)
{
    m_Wait.Sleep(deadline);
    return Leave();
}

Taken Wait_For_Any_Local(std::span<Object* const> objects, Thread_Record& self, Deadline& deadline)
{
    Local_Queue_Places places(self, objects);
    const Taken taken = places.Enter();
    return taken ? taken : places.Sleep_And_Leave(deadline);
}

Taken Wait_For_All_Local(std::span<Object* const> objects, Thread_Record& self, Deadline& deadline)
{
    Queued_Wait wait(self, Wait_Mode::All);
    const Taken taken = enter_For_All(objects, wait);
    if (taken)
    {
        return taken;
    }
    wait.Sleep(deadline);
    return wait.Finish();
}

bool Wait_Until_Available(Object& object, Thread_Record& self, Deadline& deadline)
{
    Queued_Wait wait(self, Wait_Mode::Look);
    {
        const Dispatcher_Lock lock;
        Hold(object);
        if (Can_Take(object, self))
        {
            Let_Go(object);
            return true;
        }
        wait.bell = self.bell.load(std::memory_order_relaxed);
        wait.Queue_On(object, 0);
    }
    wait.Sleep(deadline);
    return static_cast<bool>(wait.Finish());
}

} // namespace qn_platform::kernel
