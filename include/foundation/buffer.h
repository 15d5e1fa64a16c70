#ifndef QNLIB_FOUNDATION_BUFFER_H
#define QNLIB_FOUNDATION_BUFFER_H

#include "lib_api.h"

#include <vector>

/// One owned block of bytes: a size and a pointer, nothing shared, no spare room and no terminator. Every
/// change of size moves the content to a block of exactly the new size, so the pointer of Get_Ptr is good
/// until the next operation that changes the buffer.
///
/// The buffer owns its block exactly when its size is not 0. Blocks come from Lib_Alloc and are released with
/// Lib_Free; a block that is handed in must come from Lib_Alloc too. A pointer that is handed in with a size
/// of 0 stays the caller's: Get_Ptr tells it, nothing reads or releases it.
///
/// When memory is exhausted, or a size is too large to be counted, the operation has no effect: the buffer
/// keeps its size, block and content, and a constructor makes an empty buffer. Nothing else reports it, and
/// nothing is ever thrown. A caller for whom it matters compares Get_Size with what he asked for.
///
/// A pointer that is given with a size is readable for that size; null goes with 0.
///
/// Several threads may read one buffer; who changes it needs it alone.
class LIB_API Lib_Buffer
{
public:
    Lib_Buffer() noexcept {}

    /// nSize bytes of 0.
    explicit Lib_Buffer(unsigned long long nSize) noexcept;

    /// With bCopy a copy of the nSize bytes at pData, which stay the caller's; without it the buffer takes
    /// the block at pData over as it is.
    Lib_Buffer(unsigned long long nSize, void* pData, bool bCopy) noexcept;

    /// A copy with a block of its own.
    Lib_Buffer(const Lib_Buffer& Source) noexcept;

    /// A copy of the vector's bytes.
    Lib_Buffer(const std::vector<unsigned char>& Source) noexcept;

    virtual ~Lib_Buffer();

    Lib_Buffer& operator=(const Lib_Buffer& Source) noexcept;

    /// Same size and same bytes.
    bool operator==(const Lib_Buffer& Other) const noexcept;

    /// A total order for lookups, not the alphabet's: the smaller size is the lesser, and of two buffers of
    /// one size that with the greater bytes (unsigned, the first difference decides).
    bool operator<(const Lib_Buffer& Other) const noexcept;

    /// As operator== against nSize bytes at pData, which are not read when the sizes differ.
    bool Is_Equals(const void* pData, unsigned long long nSize) const noexcept;

    void* Get_Ptr() const noexcept { return m_pData; }
    unsigned long long Get_Size() const noexcept { return m_nSize; }

    /// Pointer and size at once. Neither argument may be NULL.
    void Get(void** ppData, unsigned long long* pnSize) const noexcept
    {
        *ppData = m_pData;
        *pnSize = m_nSize;
    }

    /// Keeps the leading bytes, cut or followed by bytes of 0. The present size changes nothing; 0 empties.
    void Set_Size(unsigned long long nSize) noexcept;

    /// Puts a copy of the source behind the content. The source may be the buffer itself.
    void Append(const Lib_Buffer& Source) noexcept;

    /// The same with nSize bytes at pData, which may lie in the buffer's own block.
    void Append(const void* pData, unsigned long long nSize) noexcept;

    /// Releases the content and takes over the block at pData, which must not lie in the present one.
    void Attach(void* pData, unsigned long long nSize) noexcept;

    /// Replaces the content by a copy of nSize bytes at pData, which may lie in the buffer's own block; a
    /// size of 0 empties the buffer.
    void Attach_Copy(const void* pData, unsigned long long nSize) noexcept;

    /// Hands the block out, to be released with Lib_Free, and leaves the buffer empty. If either argument is
    /// NULL, neither is written and the block is let go without release all the same.
    void Detach(void** ppData, unsigned long long* pnSize) noexcept;

    /// Releases the content.
    void Flush() noexcept;

    /// Reverses the order of the bytes, in a new block.
    void Make_Reverse() noexcept;

protected:
    /// A zero-filled block of nSize bytes; NULL for 0 and when memory is exhausted.
    void* alloc(unsigned long long nSize) const noexcept;

    /// Releases a block of alloc or Lib_Alloc.
    void free(void* pBlock) const noexcept;

    /// Releases the content and leaves the buffer empty.
    void flush() noexcept;

    /// Leaves the buffer empty and releases nothing: for a derived class whose block has gone elsewhere.
    void init() noexcept;

    /// What stands in for an element that there is no memory for: nSize bytes of 0, the calling thread's own
    /// until that thread asks again.
    static constexpr unsigned long long Max_Spare_Bytes = 64;
    static void* st_Spare_Bytes(unsigned long long nSize) noexcept;

private:
    unsigned long long m_nSize = 0;
    void* m_pData = nullptr;
};

#endif
