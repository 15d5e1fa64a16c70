#ifndef QNLIB_SRC_PLATFORM_KERNEL_ROBUST_LIST_H
#define QNLIB_SRC_PLATFORM_KERNEL_ROBUST_LIST_H

#include "platform/kernel/thread_record.h"

#include <atomic>
#include <cstddef>
#include <cstdint>

// The list of words by which the kernel learns, when a thread dies, what that thread owned. A thread has one
// such list, the C library's own, and its robust mutexes are on it too; so nodes are linked as the C library
// links its own, and only by the thread whose list it is. The kernel follows the pointers `next` alone and
// looks at a word a fixed distance before the node; it writes to the word only if that holds the number of
// the dying thread.

namespace qn_platform::kernel
{

/// From a word to the link of its node; what Is_Robust_List_Usable checks.
inline constexpr std::ptrdiff_t ROBUST_DISTANCE = 32;

struct Robust_Node
{
    void* previous; // the node before it, the head's included
    void* next;     // the link (this field) of the node behind it; the lowest bit is the C library's
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

/// Without the bit that the C library may keep in a pointer.
inline Robust_Node* Plain_Node(void* node)
{
    constexpr std::uintptr_t OTHERS_BIT = 1;
    return reinterpret_cast<Robust_Node*>(reinterpret_cast<std::uintptr_t>(node) & ~OTHERS_BIT);
}

/// The node of which `link` is the `next`; for the head's, what the C library keeps before it.
inline Robust_Node* Node_Of_Link(void* link)
{
    return Plain_Node(static_cast<char*>(link) - offsetof(Robust_Node, next));
}

inline Robust_Node* Node_Of_Head(Robust_Head& head) { return Node_Of_Link(&head.next); }

/// From before a word is changed until the list says the same as the word.
inline void Set_Pending(Robust_Head& head, Robust_Node& node) { Store_Link(head.pending, &node.next); }
inline void Clear_Pending(Robust_Head& head) { Store_Link(head.pending, nullptr); }

/// Puts the node behind `before`.
inline void Link_Behind(Robust_Node& before, Robust_Node& node)
{
    node.previous = &before;
    node.next = before.next;
    Store_Link(Node_Of_Link(before.next)->previous, &node);
    Store_Link(before.next, &node.next);
}

inline void Link_First(Robust_Head& head, Robust_Node& node) { Link_Behind(*Node_Of_Head(head), node); }

/// Where the kernel comes last: it gives up at a word that it cannot read, and with it all those behind it.
inline void Link_Last(Robust_Head& head, Robust_Node& node)
{
    const bool bEmpty = Node_Of_Link(head.next) == Node_Of_Head(head);
    Link_Behind(bEmpty ? *Node_Of_Head(head) : *Plain_Node(Node_Of_Head(head)->previous), node);
}

inline void Unlink(Robust_Node& node)
{
    Store_Link(Node_Of_Link(node.next)->previous, node.previous);
    Store_Link(Plain_Node(node.previous)->next, node.next);
}

} // namespace qn_platform::kernel

#endif
