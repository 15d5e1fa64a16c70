#ifndef QNLIB_SRC_PLATFORM_KERNEL_ROBUST_LIST_H
#define QNLIB_SRC_PLATFORM_KERNEL_ROBUST_LIST_H

#include "platform/kernel/thread_record.h"

#include <atomic>
#include <cstddef>
#include <cstdint>

// The list of words by which the kernel learns, when a thread dies, what that thread owned. A thread has one
// such list, the C library's own, and its robust mutexes are on it too; so nodes are linked as the C library
// links its own, and only by the thread whose list it is. A node is known by its link, the field `next`; the
// lowest bit of a pointer to a link is the C library's. The kernel follows the pointers `next` alone and
// looks at a word a fixed distance before the link; it writes to the word only if that holds the number of
// the dying thread.

namespace qn_platform::kernel
{

/// From a word to the link of its node; Find_Robust_Head holds the C library against it.
inline constexpr std::ptrdiff_t ROBUST_DISTANCE = 32;

struct Robust_Node
{
    void* previous; // the link of the node before it, the head's included
    void* next;     // the link of the node behind it
};

/// The head, as the kernel knows it; the C library has its `previous` just before it.
struct Robust_Head
{
    void* next;
    long distance;
    void* pending; // the link of a node whose word is about to be changed, or null
};

/// The calling thread's head; null if there is none of the known form.
Robust_Head* Find_Robust_Head();

inline Robust_Head& Get_Robust_Head(Thread_Record& self)
{
    if (self.robust_head == nullptr)
    {
        self.robust_head = Find_Robust_Head();
    }
    return *static_cast<Robust_Head*>(self.robust_head);
}

// The stores that the kernel may have to make sense of at any instruction are ordered for this thread alone,
// in whose context the kernel looks at them.

inline void Store_Link(void*& link, void* value)
{
    std::atomic_ref(link).store(value, std::memory_order_release);
}

/// The node that a pointer to its link means; of the head, what the C library keeps around it.
inline Robust_Node* Node_Of_Link(void* link)
{
    constexpr std::uintptr_t OTHERS_BIT = 1;
    const std::uintptr_t nLink = reinterpret_cast<std::uintptr_t>(link) & ~OTHERS_BIT;
    return reinterpret_cast<Robust_Node*>(nLink - offsetof(Robust_Node, next));
}

/// From before a word is changed until the list says the same as the word.
inline void Set_Pending(Robust_Head& head, Robust_Node& node) { Store_Link(head.pending, &node.next); }
inline void Clear_Pending(Robust_Head& head) { Store_Link(head.pending, nullptr); }

/// Puts the node behind the one that the link belongs to.
inline void Link_Behind(void*& link, Robust_Node& node)
{
    node.previous = &link;
    node.next = link;
    Store_Link(Node_Of_Link(link)->previous, &node.next);
    Store_Link(link, &node.next);
}

inline void Link_First(Robust_Head& head, Robust_Node& node) { Link_Behind(head.next, node); }

/// Where the kernel comes last: it gives up at a word that it cannot read, and with it all those behind it.
inline void Link_Last(Robust_Head& head, Robust_Node& node)
{
    Robust_Node* const pHead = Node_Of_Link(&head.next);
    const bool bEmpty = Node_Of_Link(head.next) == pHead;
    Link_Behind(bEmpty ? head.next : Node_Of_Link(pHead->previous)->next, node);
}

inline void Unlink(Robust_Node& node)
{
    Store_Link(Node_Of_Link(node.next)->previous, node.previous);
    Store_Link(Node_Of_Link(node.previous)->next, node.next);
}

} // namespace qn_platform::kernel

#endif
