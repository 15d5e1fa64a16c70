#include "platform/kernel/named_claims.h"

#include "platform/kernel/named_futex.h"
#include "platform/kernel/named_words.h"

#include <algorithm>

namespace qn_platform::kernel
{

namespace
{

constexpr auto CHANGED = std::memory_order_acq_rel;
constexpr auto LOOKED = std::memory_order_acquire;

bool claim_Event(Named_Page& page, std::uint32_t id)
{
    std::uint32_t nState = page.state.load(LOOKED);
    while (Has_Signal(nState))
    {
        if (page.state.compare_exchange_weak(nState, id | (nState & WAITERS), CHANGED, LOOKED))
        {
            return true;
        }
    }
    return false;
}

/// Takes the thread's number out of an event, if it is still there.
bool replace_Claim(State_Word& word, std::uint32_t id, std::uint32_t mark)
{
    std::uint32_t nState = word.load(LOOKED);
    while ((nState & OWNER_MASK) == id)
    {
        if (word.compare_exchange_weak(nState, mark | (nState & WAITERS), CHANGED, LOOKED))
        {
            return true;
        }
    }
    return false;
}

} // namespace

void Claims::Add(Named_Object& object) { m_Claims[m_nCount++] = {&object, nullptr, 0, false, false}; }

/// In the order of the files: of two waits for the same objects one gets ahead.
bool Claims::Take_All()
{
    std::sort(get_Claims().begin(), get_Claims().end(),
              [](const Claim& left, const Claim& right) { return left.object->inode < right.object->inode; });
    build_Chain();
    const bool bAll =
        std::all_of(get_Claims().begin(), get_Claims().end(), [this](Claim& claim) { return take(claim); }) &&
        std::all_of(get_Claims().begin(), get_Claims().end(),
                    [this](const Claim& claim) { return is_Kept(claim); });
    if (!bAll)
    {
        back_Out();
    }
    return bAll;
}

void Claims::build_Chain()
{
    void* pNext = m_Head.next;
    for (Claim& claim : get_Claims())
    {
        Named_Object& object = *claim.object;
        if (object.manual_reset ||
            (object.Is_Mutex() && object.owner.load(std::memory_order_relaxed) == &m_Self))
        {
            continue;
        }
        claim.node = object.Is_Mutex() ? &object.Page().claim_node : &object.Page().state_node;
        claim.node->next = pNext;
        pNext = &claim.node->next;
        m_pLast = m_pLast == nullptr ? claim.node : m_pLast;
    }
    Store_Link(m_Head.next, pNext);
}

void Claims::cut_Chain()
{
    if (m_pLast != nullptr)
    {
        Store_Link(m_Head.next, m_pLast->next);
    }
}

bool Claims::take(Claim& claim)
{
    Named_Object& object = *claim.object;
    if (object.manual_reset)
    {
        claim.seen = object.Page().manual_state.load(LOOKED);
        return Is_Set(claim.seen);
    }
    if (claim.node == nullptr)
    {
        return true;
    }
    claim.taken = object.Is_Mutex() ? take_Mutex(claim) : claim_Event(object.Page(), m_Self.id);
    return claim.taken;
}

/// A mutex is owned from here on, as far as others can see. Its own node goes behind the chain, and its claim
/// tells whoever finds it after this thread's death that nobody had it.
bool Claims::take_Mutex(Claim& claim)
{
    Named_Object& object = *claim.object;
    Named_Page& page = object.Page();
    if (!Reserve(object, m_Self))
    {
        return false;
    }
    Set_Pending(m_Head, page.state_node);
    std::uint32_t nBefore;
    const bool bTaken = Take_State(object, m_Self, nBefore);
    if (bTaken)
    {
        claim.abandoned = Judge_Abandoned(page, nBefore);
        page.claim.store(m_Self.id | (claim.abandoned ? WAITERS : 0), std::memory_order_release);
        Link_Behind(m_pLast->next, page.state_node);
        page.state_node.previous = &m_Head.next; // as it will be when the chain is cut off
    }
    else
    {
        Unreserve(object);
    }
    Clear_Pending(m_Head);
    return bTaken;
}

/// Whether the claim holds at a moment after all were made.
bool Claims::is_Kept(const Claim& claim) const
{
    const Named_Page& page = claim.object->Page();
    if (claim.object->manual_reset)
    {
        return ((page.manual_state.load(LOOKED) ^ claim.seen) & ~WAITERS) == 0;
    }
    return claim.object->Is_Mutex() || (page.state.load(LOOKED) & OWNER_MASK) == m_Self.id;
}

void Claims::Commit()
{
    cut_Chain();
    for (Claim& claim : get_Claims())
    {
        Named_Object& object = *claim.object;
        if (object.Is_Mutex() && claim.node == nullptr)
        {
            ++object.recursion;
        }
        else if (object.Is_Mutex())
        {
            object.Page().claim.store(0, std::memory_order_relaxed);
            Note_Ownership(object, m_Self);
            if (object.exposed)
            {
                move_To_End(object.Page().state_node);
            }
        }
        else if (claim.node != nullptr)
        {
            replace_Claim(object.Page().state, m_Self.id, 0);
        }
    }
}

/// As a mutex that is locked alone: what others can take away from the kernel's eyes hides nothing behind it.
void Claims::move_To_End(Robust_Node& node)
{
    Set_Pending(m_Head, node);
    Unlink(node);
    Link_Last(m_Head, node);
    Clear_Pending(m_Head);
}

/// The mutexes in the opposite order: the last one taken is the first behind the chain.
void Claims::back_Out()
{
    for (unsigned int i = m_nCount; i-- > 0;)
    {
        Claim& claim = m_Claims[i];
        if (claim.taken)
        {
            claim.object->Is_Mutex() ? give_Back_Mutex(claim) : give_Back_Event(claim.object->Page());
        }
    }
    cut_Chain();
    m_pLast = nullptr;
}

/// Pending: should this thread die after the store, the kernel wakes a sleeper.
void Claims::give_Back_Event(Named_Page& page)
{
    Set_Pending(m_Head, page.state_node);
    if (replace_Claim(page.state, m_Self.id, MARK) && (page.state.load(LOOKED) & WAITERS) != 0)
    {
        Offer_Signal(page);
    }
    Clear_Pending(m_Head);
}

void Claims::give_Back_Mutex(Claim& claim)
{
    Named_Page& page = claim.object->Page();
    page.claim.store(0, std::memory_order_release);
    Set_Pending(m_Head, page.state_node);
    Store_Link(Node_Of_Link(page.state_node.next)->previous, &m_Head.next);
    Store_Link(m_pLast->next, page.state_node.next);
    Free_State(*claim.object, claim.abandoned ? MARK : 0);
    Clear_Pending(m_Head);
}

bool Claims::Was_Abandoned(const Named_Object& object) const
{
    for (unsigned int i = 0; i < m_nCount; ++i)
    {
        if (m_Claims[i].object == &object)
        {
            return m_Claims[i].abandoned;
        }
    }
    return false;
}

} // namespace qn_platform::kernel
