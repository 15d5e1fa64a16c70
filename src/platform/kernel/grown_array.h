#ifndef QNLIB_SRC_PLATFORM_KERNEL_GROWN_ARRAY_H
#define QNLIB_SRC_PLATFORM_KERNEL_GROWN_ARRAY_H

#include "platform/system_calls.h"

#include <atomic>
#include <cstddef>

#include <sys/mman.h>

namespace qn_platform::kernel
{

/// An array that grows in place up to a fixed number of elements and never shrinks: its address space is
/// reserved when it is first grown, its memory (of zeros) is asked for piece by piece. Readers need no lock;
/// only one thread at a time may grow it.
template <class Element, std::size_t MOST, std::size_t PIECE>
class Grown_Array
{
public:
    /// Elements below this number may be touched.
    std::size_t Get_Count() const { return m_nCount.load(std::memory_order_acquire); }

    Element& operator[](std::size_t index) const { return m_pElements[index]; }

    /// The element that begins so many bytes behind the first one.
    Element& At_Byte(std::size_t offset) const
    {
        return *reinterpret_cast<Element*>(reinterpret_cast<char*>(m_pElements) + offset);
    }

    std::size_t Get_Index(const Element& element) const
    {
        return static_cast<std::size_t>(&element - m_pElements);
    }

    bool Is_Full() const { return Get_Count() == MOST; }

    /// False when memory is short.
    bool Grow()
    {
        static_assert(MOST % PIECE == 0 && PIECE * sizeof(Element) % 4096 == 0);
        if (m_pElements == nullptr && !reserve())
        {
            return false;
        }
        const std::size_t nCount = Get_Count();
        if (system_calls.protect_memory(m_pElements + nCount, PIECE * sizeof(Element),
                                        PROT_READ | PROT_WRITE) != 0)
        {
            return false;
        }
        m_nCount.store(nCount + PIECE, std::memory_order_release);
        return true;
    }

private:
    bool reserve()
    {
        void* const pMemory = system_calls.map_memory(nullptr, MOST * sizeof(Element), PROT_NONE,
                                                      MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
        if (pMemory == MAP_FAILED)
        {
            return false;
        }
        m_pElements = static_cast<Element*>(pMemory);
        return true;
    }

    Element* m_pElements = nullptr;
    std::atomic<std::size_t> m_nCount{0};
};

} // namespace qn_platform::kernel

#endif
