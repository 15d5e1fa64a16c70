#ifndef QNLIB_FOUNDATION_TYPED_BUFFER_H
#define QNLIB_FOUNDATION_TYPED_BUFFER_H

#include "foundation/buffer.h"

#include <limits>
#include <type_traits>

/// A Lib_Buffer that is counted in elements of T, which must be a plain type: elements are moved and zeroed
/// as bytes. New elements are 0. It has no field of its own, and no spare room either: every Add copies the
/// whole content once.
///
/// When memory is exhausted, or the size in bytes is too large to be counted, the buffer stays as it is; see
/// operator[] for what it then refers to.
template <typename T>
class LibT_Buffer : public Lib_Buffer
{
public:
    LibT_Buffer() noexcept = default;
    explicit LibT_Buffer(unsigned long long nCount) noexcept;
    LibT_Buffer(const LibT_Buffer& Source) noexcept = default;
    ~LibT_Buffer() override = default;
    LibT_Buffer& operator=(const LibT_Buffer& Source) noexcept = default;

    /// The number of whole elements in the buffer.
    unsigned long long Get_Num_Elements() const noexcept { return Get_Size() / sizeof(T); }

    /// The element at nIndex; a buffer that ends before it, is grown up to it. The reference is good until
    /// the next change of size. If the buffer cannot grow, the reference is to a spare element outside of it:
    /// 0 at first, and good until the thread meets such a failure again. There are 61 for all threads.
    T& operator[](unsigned long long nIndex) noexcept;

    /// Puts one element behind the others.
    void Add(T Value) noexcept;

    /// Puts nCount elements of 0 behind the others; 0 changes nothing.
    void Add_Elements(unsigned long long nCount) noexcept;

private:
    bool grow(unsigned long long nCount) noexcept;
};

template <typename T>
LibT_Buffer<T>::LibT_Buffer(unsigned long long nCount) noexcept
{
    grow(nCount);
}

template <typename T>
T& LibT_Buffer<T>::operator[](unsigned long long nIndex) noexcept
{
    const unsigned long long nCount = Get_Num_Elements();
    if (nIndex >= nCount)
    {
        // The largest index has no count that holds it.
        if (nIndex == std::numeric_limits<unsigned long long>::max() || !grow(nIndex - nCount + 1))
        {
            return *static_cast<T*>(st_Spare_Bytes(sizeof(T)));
        }
    }
    return static_cast<T*>(Get_Ptr())[nIndex];
}

template <typename T>
void LibT_Buffer<T>::Add(T Value) noexcept
{
    if (grow(1))
    {
        static_cast<T*>(Get_Ptr())[Get_Num_Elements() - 1] = Value;
    }
}

template <typename T>
void LibT_Buffer<T>::Add_Elements(unsigned long long nCount) noexcept
{
    grow(nCount);
}

/// Adds nCount elements of 0; false, with nothing changed, if that cannot be done.
template <typename T>
bool LibT_Buffer<T>::grow(unsigned long long nCount) noexcept
{
    static_assert(std::is_trivially_copyable_v<T> && alignof(T) <= __STDCPP_DEFAULT_NEW_ALIGNMENT__ &&
                  sizeof(T) <= Lib_Buffer::Max_Spare_Bytes);

    const unsigned long long nOld_Size = Get_Size();
    if (nCount > (std::numeric_limits<unsigned long long>::max() - nOld_Size) / sizeof(T))
    {
        return false;
    }
    const unsigned long long nNew_Size = nOld_Size + nCount * sizeof(T);
    Set_Size(nNew_Size);
    return Get_Size() == nNew_Size;
}

#endif
