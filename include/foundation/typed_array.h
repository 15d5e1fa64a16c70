#ifndef QNLIB_FOUNDATION_TYPED_ARRAY_H
#define QNLIB_FOUNDATION_TYPED_ARRAY_H

#include "foundation/container.h"

#include <algorithm>
#include <type_traits>

/// A small growing array of plain elements, as it is handed to Lib_Synchro::Wait_Multiple:
///
///     LibT_Array<Lib_Synchro*, 4> objects;
///     objects.Add(&event);
///     objects.Add(&mutex);
///
/// N is the room, in elements, that the first Add makes; each time the room is used up, it doubles. What
/// pointer elements point to stays the caller's.
template <typename T, unsigned int N>
class LibT_Array : public Lib_Container
{
    static_assert(N > 0 && std::is_trivially_copyable_v<T> && alignof(T) <= __STDCPP_DEFAULT_NEW_ALIGNMENT__);

public:
    LibT_Array() = default;
    LibT_Array(const LibT_Array& Source) : LibT_Array() { *this = Source; }
    ~LibT_Array() override { LibT_Array::Clear(); }

    /// A copy of the elements. Throws std::bad_alloc, with nothing changed, when memory is exhausted.
    LibT_Array& operator=(const LibT_Array& Source);

    /// Removes all elements and releases their memory.
    void Clear() override;

    unsigned long long Get_Num_Elements() const override { return m_nCount; }

    /// Puts one element behind the others. Throws std::bad_alloc, with nothing changed, when memory is
    /// exhausted.
    void Add(T Value);

    /// The element at nIndex, which must be there. Good until the next Add, Clear or assignment.
    T& operator[](unsigned long long nIndex) { return m_pElements[nIndex]; }
    const T& operator[](unsigned long long nIndex) const { return m_pElements[nIndex]; }

protected:
    T* m_pElements = nullptr; ///< one after the other; NULL while there is no room
    unsigned long long m_nCount = 0;
    unsigned long long m_nRoom = 0;

private:
    void move_To(T* pElements, unsigned long long nRoom);
};

template <typename T, unsigned int N>
void LibT_Array<T, N>::move_To(T* pElements, unsigned long long nRoom)
{
    Free_Buffer(m_pElements);
    m_pElements = pElements;
    m_nRoom = nRoom;
}

template <typename T, unsigned int N>
LibT_Array<T, N>& LibT_Array<T, N>::operator=(const LibT_Array& Source)
{
    if (this != &Source)
    {
        const unsigned long long nCount = Source.m_nCount;
        T* const pElements = nCount == 0 ? nullptr : static_cast<T*>(Alloc_Buffer(nCount * sizeof(T)));
        std::copy_n(Source.m_pElements, nCount, pElements);
        move_To(pElements, nCount);
        m_nCount = nCount;
    }
    return *this;
}

template <typename T, unsigned int N>
void LibT_Array<T, N>::Clear()
{
    move_To(nullptr, 0);
    m_nCount = 0;
}

template <typename T, unsigned int N>
void LibT_Array<T, N>::Add(T Value)
{
    if (m_nCount == m_nRoom)
    {
        const unsigned long long nRoom = m_nRoom == 0 ? N : 2 * m_nRoom;
        T* const pElements = static_cast<T*>(Alloc_Buffer(nRoom * sizeof(T)));
        std::copy_n(m_pElements, m_nCount, pElements);
        move_To(pElements, nRoom);
    }
    m_pElements[m_nCount++] = Value;
}

#endif
