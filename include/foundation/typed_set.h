#ifndef QNLIB_FOUNDATION_TYPED_SET_H
#define QNLIB_FOUNDATION_TYPED_SET_H

#include "foundation/container.h"
#include "foundation/typed_buffer.h"

#include <functional>
#include <new>
#include <type_traits>
#include <utility>

/// A set of elements that are each stored once, ordered by the element's own < (pointers by their unsigned
/// address). It is a plain binary search tree: nothing is balanced and nothing counted, so depth and cost
/// follow from the order of arrival. What looks for an element by anything but its order walks the set with
/// an Iterator.
///
/// The set owns its nodes and the storage of the elements, but never runs an element's destructor: what a
/// pointer element points to stays the caller's, and T should be a plain type. No lock: the owner keeps
/// threads apart.
template <typename T>
class LibT_Set : public Lib_Container
{
public:
    /// One element and the two subtrees below it. Both the node and the storage behind m_pValue are blocks of
    /// Alloc_Buffer.
    struct Node
    {
        Node* m_pGreater; ///< elements greater than this one; NULL if none
        Node* m_pLesser;  ///< elements less than this one; NULL if none
        T* m_pValue;      ///< never NULL in a node of the tree
    };

    class Iterator;

    LibT_Set() = default;
    /// Not copied: two sets would own the same nodes.
    LibT_Set(const LibT_Set&) = delete;
    LibT_Set& operator=(const LibT_Set&) = delete;
    ~LibT_Set() override { LibT_Set::Clear(); }

    /// Takes neither stack nor memory by the tree's depth.
    void Clear() override;

    /// Walks the whole tree and counts. Takes stack for the nodes on its way down that have two subtrees.
    unsigned long long Get_Num_Elements() const override { return count(m_pRoot); }

    /// Puts the element in its place unless an equal one is there. Throws std::bad_alloc when memory is
    /// exhausted, and what T's copying throws; the set is then as it was.
    void Insert(T Value);

    /// Takes the element that equals this one out of the set, if there is one. Value may be the set's own.
    void Remove(const T& Value);

protected:
    Node* m_pRoot = nullptr;

private:
    struct Link
    {
        Node** m_ppNode;
        bool m_bLesser; // whether it is its node's m_pLesser
    };

    Link find(const T& Value);
    static bool less(const T& Left, const T& Right);
    static Node* new_Node(T& Value);
    static Node* join(Node* pTop, Node* pRest, Node* Node::*pLink);
    static unsigned long long count(const Node* pNode);
};

/// A walk over a set: a node, then what is less than it, then what is greater. That is not the sorted order,
/// and it begins at the root. It holds nothing of the set and is good only until the set changes.
///
///     LibT_Set<T>::Iterator walk;
///     for (walk.Start(set); !walk.Is_End(); walk.Next())
///         use(*walk.m_pNode->m_pValue);
template <typename T>
class LibT_Set<T>::Iterator
{
public:
    /// Stands at the end, as after Clear.
    Iterator() = default;
    /// Not copied: a walk is for one to go.
    Iterator(const Iterator&) = delete;
    Iterator& operator=(const Iterator&) = delete;
    virtual ~Iterator() { Iterator::Clear(); }

    /// Begins a walk at the set's root; at the end at once if the set is empty.
    virtual void Start(const LibT_Set& Set);

    virtual bool Is_End() const { return m_pNode == nullptr; }

    /// Moves on; false at the end, where it stays. Throws std::bad_alloc if there is no memory to note a
    /// subtree for later: the iterator is then where it was, no element is skipped, and Next may be tried
    /// again.
    virtual bool Next();

    /// Moves to the end and releases the memory of the walk.
    virtual void Clear();

    /// Moves to the end; the memory of the walk stays until the next Start, Clear or destruction.
    virtual void Stop() { m_pNode = nullptr; }

    Node* m_pNode = nullptr;           ///< the current node; NULL at the end
    LibT_Buffer<Node*> m_Pending;      ///< subtrees still to be walked, the top last
    unsigned long long m_nPending = 0; ///< how many they are

private:
    void push(Node* pSubtree);
    Node* pop();
};

template <typename T>
bool LibT_Set<T>::less(const T& Left, const T& Right)
{
    if constexpr (std::is_pointer_v<T>)
    {
        return std::less<T>()(Left, Right);
    }
    else
    {
        return Left < Right;
    }
}

/// A node with no subtrees that holds the value.
template <typename T>
typename LibT_Set<T>::Node* LibT_Set<T>::new_Node(T& Value)
{
    static_assert(alignof(T) <= __STDCPP_DEFAULT_NEW_ALIGNMENT__);

    void* const pNode = Alloc_Buffer(sizeof(Node));
    void* pStorage = nullptr;
    try
    {
        pStorage = Alloc_Buffer(sizeof(T));
        return ::new (pNode) Node{nullptr, nullptr, ::new (pStorage) T(std::move(Value))};
    }
    catch (...)
    {
        Free_Buffer(pStorage);
        Free_Buffer(pNode);
        throw;
    }
}

/// The link at which an element that equals Value hangs, or else the one at which it would have to be hung.
template <typename T>
typename LibT_Set<T>::Link LibT_Set<T>::find(const T& Value)
{
    Link Here{&m_pRoot, false};
    while (*Here.m_ppNode != nullptr)
    {
        Node* const pNode = *Here.m_ppNode;
        if (less(*pNode->m_pValue, Value))
        {
            Here = {&pNode->m_pGreater, false};
        }
        else if (less(Value, *pNode->m_pValue))
        {
            Here = {&pNode->m_pLesser, true};
        }
        else
        {
            break;
        }
    }
    return Here;
}

template <typename T>
void LibT_Set<T>::Insert(T Value)
{
    const Link Place = find(Value);
    if (*Place.m_ppNode == nullptr)
    {
        *Place.m_ppNode = new_Node(Value);
    }
}

/// A lesser child is replaced by its own lesser child if it has one, every other node by its greater child;
/// what hung on the other side, goes to the far end of the replacement.
template <typename T>
void LibT_Set<T>::Remove(const T& Value)
{
    const Link Place = find(Value);
    Node* const pNode = *Place.m_ppNode;
    if (pNode == nullptr)
    {
        return;
    }
    *Place.m_ppNode = Place.m_bLesser ? join(pNode->m_pLesser, pNode->m_pGreater, &Node::m_pGreater)
                                      : join(pNode->m_pGreater, pNode->m_pLesser, &Node::m_pLesser);
    Free_Buffer(pNode->m_pValue);
    Free_Buffer(pNode);
}

/// Hangs pRest at the far end of pTop along the link; one of them alone is the answer itself.
template <typename T>
typename LibT_Set<T>::Node* LibT_Set<T>::join(Node* pTop, Node* pRest, Node* Node::*pLink)
{
    if (pTop == nullptr)
    {
        return pRest;
    }
    Node* pEnd = pTop;
    while (pEnd->*pLink != nullptr)
    {
        pEnd = pEnd->*pLink;
    }
    pEnd->*pLink = pRest;
    return pTop;
}

/// Calls itself only at a node with two subtrees, so a tree that degenerated to a list needs no stack.
template <typename T>
unsigned long long LibT_Set<T>::count(const Node* pNode)
{
    unsigned long long nCount = 0;
    while (pNode != nullptr)
    {
        ++nCount;
        if (pNode->m_pLesser != nullptr && pNode->m_pGreater != nullptr)
        {
            nCount += count(pNode->m_pLesser);
        }
        pNode = pNode->m_pGreater != nullptr ? pNode->m_pGreater : pNode->m_pLesser;
    }
    return nCount;
}

/// Each node's value goes first, then its lesser subtree, its greater one, and the node itself. A node that
/// waits for its subtrees remembers its parent in m_pLesser, whose subtree has been taken over by then.
template <typename T>
void LibT_Set<T>::Clear()
{
    Node* pParent = nullptr;
    Node* pNode = std::exchange(m_pRoot, nullptr);
    while (pNode != nullptr)
    {
        Free_Buffer(pNode->m_pValue);
        Node* pNext = std::exchange(pNode->m_pLesser, pParent);
        while (pNext == nullptr && pNode != nullptr)
        {
            pNext = std::exchange(pNode->m_pGreater, nullptr);
            if (pNext == nullptr)
            {
                Free_Buffer(std::exchange(pNode, pNode->m_pLesser));
            }
        }
        pParent = pNode;
        pNode = pNext;
    }
}

template <typename T>
void LibT_Set<T>::Iterator::Start(const LibT_Set& Set)
{
    m_Pending.Flush();
    m_pNode = Set.m_pRoot;
    m_nPending = 0;
}

template <typename T>
bool LibT_Set<T>::Iterator::Next()
{
    if (Is_End())
    {
        return false;
    }
    if (m_pNode->m_pLesser != nullptr)
    {
        if (m_pNode->m_pGreater != nullptr)
        {
            push(m_pNode->m_pGreater);
        }
        m_pNode = m_pNode->m_pLesser;
    }
    else
    {
        m_pNode = m_pNode->m_pGreater != nullptr ? m_pNode->m_pGreater : pop();
    }
    return m_pNode != nullptr;
}

template <typename T>
void LibT_Set<T>::Iterator::Clear()
{
    m_pNode = nullptr;
    m_Pending.Flush();
    m_nPending = 0;
}

template <typename T>
void LibT_Set<T>::Iterator::push(Node* pSubtree)
{
    // The buffer has room already only if an earlier pop found no memory for the smaller one.
    if (m_nPending == m_Pending.Get_Num_Elements())
    {
        m_Pending.Add_Elements(1);
        if (m_nPending == m_Pending.Get_Num_Elements())
        {
            throw std::bad_alloc();
        }
    }
    m_Pending[m_nPending++] = pSubtree;
}

/// NULL if there is nothing left.
template <typename T>
typename LibT_Set<T>::Node* LibT_Set<T>::Iterator::pop()
{
    if (m_nPending == 0)
    {
        return nullptr;
    }
    Node* const pTop = m_Pending[--m_nPending];
    m_Pending.Set_Size(m_nPending * sizeof(Node*));
    return pTop;
}

#endif
