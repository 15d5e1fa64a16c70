#include "platform/kernel/named_words.h"

#include "platform/kernel/named_futex.h"
#include "platform/kernel/named_object.h"

namespace qn_platform::kernel
{

namespace
{

constexpr auto CHANGED = std::memory_order_acq_rel;
constexpr auto LOOKED = std::memory_order_acquire;

} // namespace

void Wake_Everybody(State_Word& word)
{
    Change_And_Wake(word, WAKE_ALL, word, Word_Change::Clear_Bit, WAITERS_BIT);
}

// ---- Events that stay set --------------------------------------------------------------------------------

namespace
{

/// The state with one change more counted; the count runs around below WAITERS.
std::uint32_t count_On(std::uint32_t state, std::uint32_t changes)
{
    return (state & WAITERS) | ((state + changes) & ~WAITERS);
}

void set_Manual(State_Word& word)
{
    std::uint32_t nState = word.load(LOOKED);
    while ((nState & WAITERS) == 0)
    {
        if (word.compare_exchange_weak(nState, nState | 1, CHANGED, LOOKED))
        {
            return;
        }
    }
    if (Change_And_Wake(word, WAKE_ALL, word, Word_Change::Or, 1) == 0)
    {
        Wake_Everybody(word);
    }
}

void reset_Manual(State_Word& word)
{
    std::uint32_t nState = word.load(LOOKED);
    while (Is_Set(nState) && !word.compare_exchange_weak(nState, count_On(nState, 1), CHANGED, LOOKED))
    {
    }
}

void pulse_Manual(State_Word& word)
{
    std::uint32_t nState = word.load(LOOKED);
    while ((nState & WAITERS) == 0)
    {
        if (word.compare_exchange_weak(nState, count_On(nState, Is_Set(nState) ? 1 : 2), CHANGED, LOOKED))
        {
            return;
        }
    }
    // Should the count run around here it clears WAITERS, which is right where all are woken.
    if (Change_And_Wake(word, WAKE_ALL, word, Word_Change::Add, 2) == 0)
    {
        Wake_Everybody(word);
    }
    reset_Manual(word);
}

} // namespace

// ---- Events that reset themselves ------------------------------------------------------------------------

bool Take_Signal(Named_Page& page)
{
    std::uint32_t nState = page.state.load(LOOKED);
    while (Has_Signal(nState))
    {
        if (page.state.compare_exchange_weak(nState, nState & WAITERS, CHANGED, LOOKED))
        {
            return true;
        }
    }
    return false;
}

bool Take_Ticket(Named_Page& page)
{
    std::uint32_t nTickets = page.tickets.load(LOOKED);
    while (Handed_Out(nTickets) != (nTickets & TICKETS_MASK))
    {
        const std::uint32_t nNext = (nTickets & ~TICKETS_MASK) | ((nTickets + 1) & TICKETS_MASK);
        if (page.tickets.compare_exchange_weak(nTickets, nNext, CHANGED, LOOKED))
        {
            return true;
        }
    }
    return false;
}

namespace
{

/// Who can sleep on one word only sleeps on the tickets. Where he looked at the state before it changed, and
/// is about to sleep, he finds that they moved on.
void stop_Who_Is_About_To_Sleep(Named_Page& page)
{
    Change_And_Wake(page.tickets, WAKE_ALL, page.tickets, Word_Change::Add_Bit, OFFERS_BIT);
}

} // namespace

void Leave_Signal(Named_Page& page)
{
    Change_And_Wake_Both(page.tickets, page.state, Word_Change::Set_To_Bit, MARK_BIT);
    stop_Who_Is_About_To_Sleep(page);
}

void Offer_Signal(Named_Page& page)
{
    Change_And_Wake_Both(page.tickets, page.state, Word_Change::Clear_Bit, WAITERS_BIT);
    stop_Who_Is_About_To_Sleep(page);
}

namespace
{

/// Gives a signal to a sleeper who would take it. False when there is none.
bool hand_Over(Named_Page& page)
{
    const int nWoken = Change_And_Wake(page.tickets, 1, page.tickets, Word_Change::Add_Bit, HANDED_OUT_BIT);
    // A ticket that is not there any more was taken by somebody who woke for another reason.
    return nWoken != 0 || !Take_Ticket(page);
}

void set_Auto(Named_Page& page)
{
    std::uint32_t nState = page.state.load(LOOKED);
    while ((nState & WAITERS) == 0)
    {
        if (page.state.compare_exchange_weak(nState, MARK, CHANGED, LOOKED))
        {
            return;
        }
    }
    if (!hand_Over(page))
    {
        Leave_Signal(page);
    }
}

/// Erases the claim of a wait for all, too.
void reset_Auto(Named_Page& page)
{
    std::uint32_t nState = page.state.load(LOOKED);
    while ((nState & ~WAITERS) != 0 &&
           !page.state.compare_exchange_weak(nState, nState & WAITERS, CHANGED, LOOKED))
    {
    }
}

void pulse_Auto(Named_Page& page)
{
    if ((page.state.load(LOOKED) & WAITERS) != 0)
    {
        hand_Over(page);
    }
    reset_Auto(page);
}

} // namespace

void Set_Named(Named_Object& object, Thread_Record&)
{
    object.manual_reset ? set_Manual(object.Page().manual_state) : set_Auto(object.Page());
}

void Reset_Named(Named_Object& object, Thread_Record&)
{
    object.manual_reset ? reset_Manual(object.Page().manual_state) : reset_Auto(object.Page());
}

void Pulse_Named(Named_Object& object, Thread_Record&)
{
    object.manual_reset ? pulse_Manual(object.Page().manual_state) : pulse_Auto(object.Page());
}

// ---- Mutexes ---------------------------------------------------------------------------------------------

bool Reserve(Named_Object& object, Thread_Record& self)
{
    Thread_Record* pNobody = nullptr;
    return !object.exposed || object.owner.compare_exchange_strong(pNobody, &self, CHANGED, LOOKED);
}

void Unreserve(Named_Object& object)
{
    if (object.exposed)
    {
        object.owner.store(nullptr, std::memory_order_release);
    }
}

bool Take_State(Named_Object& object, Thread_Record& self, std::uint32_t& before)
{
    State_Word& word = object.Page().state;
    before = word.load(std::memory_order_relaxed);
    while (Has_No_Owner(before))
    {
        if (word.compare_exchange_weak(before, self.id | (before & WAITERS), CHANGED, LOOKED))
        {
            return true;
        }
    }
    return false;
}

void Note_Ownership(Named_Object& object, Thread_Record& self)
{
    object.owner.store(&self, std::memory_order_relaxed);
    object.recursion = 1;
    object.previous_owned = nullptr;
    object.next_owned = self.owned_named;
    if (object.next_owned != nullptr)
    {
        object.next_owned->previous_owned = &object;
    }
    self.owned_named = &object;
}

bool Judge_Abandoned(Named_Page& page, std::uint32_t before)
{
    if ((before & MARK) == 0)
    {
        return false;
    }
    // A claim that the kernel marked is one of a wait for all that died before it had the mutex.
    const std::uint32_t nClaim = page.claim.load(std::memory_order_relaxed);
    page.claim.store(0, std::memory_order_relaxed);
    return nClaim != MARK;
}

bool Try_Lock(Named_Object& object, Thread_Record& self, bool& abandoned)
{
    abandoned = false;
    if (object.owner.load(std::memory_order_relaxed) == &self)
    {
        const bool bCounts = object.recursion < MOST_RECURSION;
        object.recursion += bCounts ? 1 : 0;
        return bCounts;
    }
    Named_Page& page = object.Page();
    if (!Has_No_Owner(page.state.load(std::memory_order_relaxed)) || !Reserve(object, self))
    {
        return false;
    }
    Robust_Head& head = Get_Robust_Head(self);
    Set_Pending(head, page.state_node);
    std::uint32_t nBefore;
    const bool bTaken = Take_State(object, self, nBefore);
    if (bTaken)
    {
        object.exposed ? Link_Last(head, page.state_node) : Link_First(head, page.state_node);
        Note_Ownership(object, self);
        abandoned = Judge_Abandoned(page, nBefore);
    }
    else
    {
        Unreserve(object);
    }
    Clear_Pending(head);
    return bTaken;
}

void Free_State(Named_Object& object, std::uint32_t left)
{
    // Before the word: a thread that is woken by it must find the record free.
    object.owner.store(nullptr, std::memory_order_release);
    State_Word& word = object.Page().state;
    std::uint32_t nState = word.load(std::memory_order_relaxed);
    while ((nState & WAITERS) == 0)
    {
        if (word.compare_exchange_weak(nState, left, CHANGED, LOOKED))
        {
            return;
        }
    }
    const bool bMark = left != 0;
    Change_And_Wake(word, WAKE_ALL, word, bMark ? Word_Change::Set_To_Bit : Word_Change::Set_To,
                    bMark ? MARK_BIT : 0);
}

void Give_Up(Named_Object& object, Thread_Record& self, std::uint32_t left)
{
    Named_Page& page = object.Page();
    Robust_Head& head = Get_Robust_Head(self);
    Set_Pending(head, page.state_node);
    Unlink(page.state_node);
    (object.previous_owned != nullptr ? object.previous_owned->next_owned : self.owned_named) =
        object.next_owned;
    if (object.next_owned != nullptr)
    {
        object.next_owned->previous_owned = object.previous_owned;
    }
    Free_State(object, left);
    Clear_Pending(head);
}

bool Release_Named_Mutex(Named_Object& object, Thread_Record& self)
{
    if (object.owner.load(std::memory_order_relaxed) != &self)
    {
        return false;
    }
    if (object.recursion > 1)
    {
        --object.recursion;
        return true;
    }
    Give_Up(object, self, 0);
    return true;
}

bool Try_Take_Named(Named_Object& object, Thread_Record& self, bool& abandoned)
{
    if (object.Is_Mutex())
    {
        return Try_Lock(object, self, abandoned);
    }
    abandoned = false;
    return object.manual_reset ? Is_Set(object.Page().manual_state.load(LOOKED)) : Take_Signal(object.Page());
}

} // namespace qn_platform::kernel
