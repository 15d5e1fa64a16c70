#include "platform/kernel/named_sleep.h"

#include "platform/kernel/futex.h"
#include "platform/kernel/named_calls.h"
#include "platform/kernel/named_futex.h"
#include "platform/kernel/named_words.h"

#include <cerrno>

namespace qn_platform::kernel
{

namespace
{

constexpr auto LOOKED = std::memory_order_acquire;

/// Waking for such an object is a duty: no other sleeper was woken with this one.
bool brings_Duty(const Named_Object& object) { return !object.manual_reset; }

State_Word& get_Word(const Place& place)
{
    Named_Page& page = place.object->Page();
    return place.object->manual_reset ? page.manual_state : page.state;
}

bool is_Available(const Place& place, const Thread_Record& self, std::uint32_t state)
{
    const Named_Object& object = *place.object;
    if (object.manual_reset)
    {
        return Is_Released(state, place.seen);
    }
    if (!object.Is_Mutex())
    {
        return Has_Signal(state);
    }
    const Thread_Record* const pOwner = object.owner.load(std::memory_order_relaxed);
    return pOwner == &self || (Has_No_Owner(state) && (!object.exposed || pOwner == nullptr));
}

/// Marks the word as slept on. False when the object is available.
bool raise_Waiters(Place& place, const Thread_Record& self)
{
    State_Word& word = get_Word(place);
    if (!place.object->manual_reset)
    {
        place.seen = place.object->Page().tickets.load(LOOKED);
    }
    std::uint32_t nState = word.load(LOOKED);
    do
    {
        if (is_Available(place, self, nState))
        {
            return false;
        }
        place.expected = nState | WAITERS;
    } while ((nState & WAITERS) == 0 &&
             !word.compare_exchange_weak(nState, place.expected, std::memory_order_acq_rel, LOOKED));
    return true;
}

/// The words of one sleep, for the call that sleeps on many.
class Word_List
{
public:
    void Add(const std::atomic<std::uint32_t>& word, std::uint32_t expected, unsigned int flags)
    {
        m_Words[m_nCount++] = {expected, reinterpret_cast<std::uintptr_t>(&word), flags, 0};
    }

    void Add(const Place& place);

    /// The highest index that was woken, or a negative error number.
    int Sleep(const timespec* time) { return Wait_Many(m_Words, m_nCount, time); }

    int Get_Last_Index() const { return static_cast<int>(m_nCount) - 1; }

private:
    static constexpr unsigned int MOST_WORDS = 64 + MOST_TAKERS + 3; // behind the objects a bell and the gate
    static_assert(MOST_WORDS <= FUTEX_WAITV_MAX);

    unsigned int m_nCount = 0;
    struct futex_waitv m_Words[MOST_WORDS]; // no values but in the first m_nCount
};

constexpr unsigned int SHARED_WORD = 2;        // of 32 bits
constexpr unsigned int PRIVATE_WORD = 2 | 128; // the same, of this process alone

void Word_List::Add(const Place& place)
{
    Add(get_Word(place), place.expected, SHARED_WORD);
    if (place.takes)
    {
        Add(place.object->Page().tickets, place.seen, SHARED_WORD);
    }
}

int sleep_On_Words(std::span<Place> places, const std::uint32_t* bell, Thread_Record& self, const Gate* gate,
                   const timespec* time)
{
    Word_List words;
    for (const Place& place : places)
    {
        if (place.object != nullptr)
        {
            words.Add(place);
        }
    }
    if (bell != nullptr)
    {
        words.Add(self.bell, *bell, PRIVATE_WORD);
    }
    if (gate == nullptr)
    {
        return words.Sleep(time);
    }
    words.Add(*gate->all, gate->all->load(std::memory_order_relaxed), SHARED_WORD);
    words.Add(*gate->alarm, 0, SHARED_WORD);
    const int nResult = words.Sleep(time);
    if (nResult == words.Get_Last_Index())
    {
        Wake_Shared(*gate->all, WAKE_ALL);
    }
    return nResult;
}

// ---- Where the kernel cannot sleep on many words ----------------------------------------------------------

Place* get_Only_Place(std::span<Place> places)
{
    Place* pOnly = nullptr;
    for (Place& place : places)
    {
        if (place.object == nullptr)
        {
            continue;
        }
        if (pOnly != nullptr)
        {
            return nullptr;
        }
        pOnly = &place;
    }
    return pOnly;
}

/// A sleep on one word; the death of the sleeper wakes the next one on the state.
void sleep_On_One(const Place& place, Thread_Record& self, Deadline& deadline)
{
    Named_Page& page = place.object->Page();
    if (brings_Duty(*place.object))
    {
        Set_Pending(Get_Robust_Head(self), page.state_node);
    }
    if (place.takes)
    {
        Wait_Shared(page.tickets, place.seen, deadline.Get_Time());
    }
    else
    {
        Wait_Shared(get_Word(place), place.expected, deadline.Get_Time());
    }
}

timespec add_Milliseconds(timespec time, long milliseconds)
{
    constexpr long SECOND = 1000000000;
    time.tv_nsec += milliseconds * 1000000;
    if (time.tv_nsec >= SECOND)
    {
        time.tv_nsec -= SECOND;
        ++time.tv_sec;
    }
    return time;
}

bool is_Earlier(const timespec& left, const timespec& right)
{
    return left.tv_sec != right.tv_sec ? left.tv_sec < right.tv_sec : left.tv_nsec < right.tv_nsec;
}

/// Sleeps on the bell alone for ever longer slices, until an object looks available.
void sleep_In_Slices(std::span<Place> places, const std::uint32_t* bell, Thread_Record& self,
                     Deadline& deadline)
{
    constexpr long LONGEST_SLICE = 16;
    const std::uint32_t nBell = bell != nullptr ? *bell : self.bell.load(LOOKED);
    for (long nSlice = 1; self.bell.load(LOOKED) == nBell;
         nSlice = nSlice < LONGEST_SLICE ? 2 * nSlice : nSlice)
    {
        for (const Place& place : places)
        {
            if (place.object != nullptr && is_Available(place, self, get_Word(place).load(LOOKED)))
            {
                return;
            }
        }
        timespec now = {};
        clock_gettime(CLOCK_MONOTONIC, &now);
        const timespec end = add_Milliseconds(now, nSlice);
        const timespec* const pDeadline = deadline.Get_Time();
        if (pDeadline != nullptr && !is_Earlier(now, *pDeadline))
        {
            return;
        }
        Futex_Wait(self.bell, nBell, pDeadline != nullptr && is_Earlier(*pDeadline, end) ? pDeadline : &end);
    }
}

Awake sleep_Without_Many(std::span<Place> places, const std::uint32_t* bell, Thread_Record& self,
                         Deadline& deadline)
{
    Place* const pOnly = get_Only_Place(places);
    if (pOnly != nullptr && bell == nullptr)
    {
        sleep_On_One(*pOnly, self, deadline);
        return Awake::Perhaps_Woken;
    }
    End_Duties(self);
    sleep_In_Slices(places, bell, self, deadline);
    return Awake::Sliced;
}

} // namespace

void Begin_Place(Place& place, Named_Object& object, bool takes)
{
    place.object = &object;
    place.takes = takes && !object.manual_reset && !object.Is_Mutex();
    place.seen = object.manual_reset ? object.Page().manual_state.load(LOOKED) : 0;
}

bool Looks_Available(const Place& place, const Thread_Record& self)
{
    return is_Available(place, self, get_Word(place).load(LOOKED));
}

Awake Sleep_On(std::span<Place> places, const std::uint32_t* bell, Thread_Record& self, Deadline& deadline)
{
    bool bDuties = false;
    for (Place& place : places)
    {
        if (place.object == nullptr)
        {
            continue;
        }
        if (!raise_Waiters(place, self))
        {
            return Awake::Did_Not_Sleep;
        }
        bDuties = bDuties || brings_Duty(*place.object);
    }
    const Gate* const pGate = bDuties ? Find_Gate() : nullptr;
    if (pGate != nullptr)
    {
        char* const pWord = reinterpret_cast<char*>(const_cast<std::atomic<std::uint32_t>*>(pGate->alarm));
        Store_Link(Get_Robust_Head(self).pending, pWord + ROBUST_DISTANCE);
    }
    const int nResult = sleep_On_Words(places, bell, self, pGate, deadline.Get_Time());
    const bool bMissing = nResult == -ENOSYS || nResult == -EPERM;
    return bMissing ? sleep_Without_Many(places, bell, self, deadline) : Awake::Perhaps_Woken;
}

void End_Duties(Thread_Record& self) { Clear_Pending(Get_Robust_Head(self)); }

namespace
{

/// Only those have a right to a ticket who were asleep when it was handed out.
bool may_Have_Ticket(const Place& place, Awake awake)
{
    return place.takes && awake == Awake::Perhaps_Woken &&
           Handed_Out(place.object->Page().tickets.load(LOOKED)) != Handed_Out(place.seen);
}

/// A free mutex, or an event that is set, on which somebody may sleep.
void pass_On_State(const Named_Object& object)
{
    Named_Page& page = object.Page();
    const std::uint32_t nState = page.state.load(LOOKED);
    if ((nState & WAITERS) == 0)
    {
        return;
    }
    if (!object.Is_Mutex() && Has_Signal(nState))
    {
        Offer_Signal(page);
    }
    else if (object.Is_Mutex() && Has_No_Owner(nState))
    {
        Wake_Everybody(page.state);
    }
}

} // namespace

bool Take_Event(Place& place, Awake awake)
{
    Named_Page& page = place.object->Page();
    if (place.object->manual_reset)
    {
        return Is_Released(page.manual_state.load(LOOKED), place.seen);
    }
    return (may_Have_Ticket(place, awake) && Take_Ticket(page)) || Take_Signal(page);
}

void Pass_On(Place& place, Awake awake)
{
    if (awake != Awake::Perhaps_Woken || place.object == nullptr || !brings_Duty(*place.object))
    {
        return;
    }
    if (may_Have_Ticket(place, awake) && Take_Ticket(place.object->Page()))
    {
        Leave_Signal(place.object->Page());
    }
    else
    {
        pass_On_State(*place.object);
    }
}

void Pass_On_All(std::span<Place> places, const Place* but, Awake awake)
{
    for (Place& place : places)
    {
        if (&place != but)
        {
            Pass_On(place, awake);
        }
    }
}

} // namespace qn_platform::kernel
