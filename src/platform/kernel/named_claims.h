#ifndef QNLIB_SRC_PLATFORM_KERNEL_NAMED_CLAIMS_H
#define QNLIB_SRC_PLATFORM_KERNEL_NAMED_CLAIMS_H

#include "platform/kernel/named_state.h"

#include <span>

// Taking several named objects at once, so that a death leaves either all of them taken or none. Each event
// that resets itself, and each mutex, is claimed first: marked with the thread's number and put on its robust
// list, the claims as one chain at the list's head. Whoever dies then gives all back by the kernel's hand.
// Cutting the chain off, one store, is what makes the claims good.
//
// Used with the dispatcher locked: the nodes of claims belong to one thread of the process at a time.

namespace qn_platform::kernel
{

class Claims
{
public:
    explicit Claims(Thread_Record& self) : m_Self(self), m_Head(Get_Robust_Head(self)) {}
    Claims(const Claims&) = delete;
    Claims& operator=(const Claims&) = delete;

    /// An object to be taken; each once.
    void Add(Named_Object& object);

    /// Claims all, and looks that the events that stay set are set, all at one moment. False, with nothing
    /// claimed any more, if one can't be had.
    bool Take_All();

    /// After Take_All: the objects are the thread's.
    void Commit();

    /// After Commit.
    bool Was_Abandoned(const Named_Object& object) const;

private:
    struct Claim
    {
        Named_Object* object;
        Robust_Node* node;  // in the chain; null for what needs no claim
        std::uint32_t seen; // event that stays set
        bool taken;
        bool abandoned; // a mutex that was
    };

    static constexpr unsigned int MOST_CLAIMS = 64;

    std::span<Claim> get_Claims() { return {m_Claims, m_nCount}; }
    void build_Chain();
    void cut_Chain();
    bool take(Claim& claim);
    bool take_Mutex(Claim& claim);
    bool is_Kept(const Claim& claim) const;
    void back_Out();
    void move_To_End(Robust_Node& node);
    void give_Back_Event(Named_Page& page);
    void give_Back_Mutex(Claim& claim);

    Thread_Record& m_Self;
    Robust_Head& m_Head;
    Robust_Node* m_pLast = nullptr; // of the chain; null if nothing needs a claim
    unsigned int m_nCount = 0;
    Claim m_Claims[MOST_CLAIMS]; // no values but in the first m_nCount
};

} // namespace qn_platform::kernel

#endif
