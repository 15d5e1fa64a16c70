#include "foundation/buffer.h"

#include "foundation/alloc.h"
#include "foundation/copy_bytes.h"
#include "lib_platform.h"

#include <algorithm>
#include <cstring>
#include <limits>

namespace
{

/// memcmp over memory that may be absent when there is nothing to compare.
int compare_Bytes(const void* pLeft, const void* pRight, unsigned long long nSize)
{
    return nSize == 0 ? 0 : std::memcmp(pLeft, pRight, nSize);
}

} // namespace

Lib_Buffer::Lib_Buffer(unsigned long long nSize) noexcept { Set_Size(nSize); }

Lib_Buffer::Lib_Buffer(unsigned long long nSize, void* pData, bool bCopy) noexcept
{
    if (bCopy)
    {
        Attach_Copy(pData, nSize);
    }
    else
    {
        Attach(pData, nSize);
    }
}

Lib_Buffer::Lib_Buffer(const Lib_Buffer& Source) noexcept { Attach_Copy(Source.m_pData, Source.m_nSize); }

Lib_Buffer::Lib_Buffer(const std::vector<unsigned char>& Source) noexcept
{
    Attach_Copy(Source.data(), Source.size());
}

Lib_Buffer::~Lib_Buffer() { flush(); }

Lib_Buffer& Lib_Buffer::operator=(const Lib_Buffer& Source) noexcept
{
    if (this != &Source)
    {
        Attach_Copy(Source.m_pData, Source.m_nSize);
    }
    return *this;
}

bool Lib_Buffer::operator==(const Lib_Buffer& Other) const noexcept
{
    return Is_Equals(Other.m_pData, Other.m_nSize);
}

bool Lib_Buffer::operator<(const Lib_Buffer& Other) const noexcept
{
    if (m_nSize != Other.m_nSize)
    {
        return m_nSize < Other.m_nSize;
    }
    return compare_Bytes(m_pData, Other.m_pData, m_nSize) > 0;
}

bool Lib_Buffer::Is_Equals(const void* pData, unsigned long long nSize) const noexcept
{
    return m_nSize == nSize && compare_Bytes(m_pData, pData, nSize) == 0;
}

void Lib_Buffer::Set_Size(unsigned long long nSize) noexcept
{
    if (nSize == m_nSize)
    {
        return;
    }
    unsigned char* pNew = static_cast<unsigned char*>(Lib_Alloc(false, nSize));
    if (pNew == nullptr && nSize != 0)
    {
        return;
    }
    const unsigned long long nKept = std::min(m_nSize, nSize);
    copy_Bytes(pNew, m_pData, nKept);
    if (nSize > nKept)
    {
        std::memset(pNew + nKept, 0, nSize - nKept);
    }
    Attach(pNew, nSize);
}

void Lib_Buffer::Append(const Lib_Buffer& Source) noexcept { Append(Source.m_pData, Source.m_nSize); }

void Lib_Buffer::Append(const void* pData, unsigned long long nSize) noexcept
{
    if (m_nSize == 0)
    {
        Attach_Copy(pData, nSize);
        return;
    }
    if (nSize > std::numeric_limits<unsigned long long>::max() - m_nSize)
    {
        return;
    }
    unsigned char* pNew = static_cast<unsigned char*>(Lib_Alloc(false, m_nSize + nSize));
    if (pNew == nullptr)
    {
        return;
    }
    copy_Bytes(pNew, m_pData, m_nSize);
    copy_Bytes(pNew + m_nSize, pData, nSize);
    Attach(pNew, m_nSize + nSize);
}

void Lib_Buffer::Attach(void* pData, unsigned long long nSize) noexcept
{
    flush();
    m_nSize = nSize;
    m_pData = pData;
}

void Lib_Buffer::Attach_Copy(const void* pData, unsigned long long nSize) noexcept
{
    if (nSize == 0)
    {
        flush();
        return;
    }
    void* pNew = Lib_Alloc(false, nSize);
    if (pNew != nullptr)
    {
        copy_Bytes(pNew, pData, nSize);
        Attach(pNew, nSize);
    }
}

void Lib_Buffer::Detach(void** ppData, unsigned long long* pnSize) noexcept
{
    if (ppData != nullptr && pnSize != nullptr)
    {
        Get(ppData, pnSize);
    }
    init();
}

void Lib_Buffer::Flush() noexcept { flush(); }

void Lib_Buffer::Make_Reverse() noexcept
{
    unsigned char* pNew = static_cast<unsigned char*>(Lib_Alloc(false, m_nSize));
    if (pNew != nullptr)
    {
        const unsigned char* pOld = static_cast<const unsigned char*>(m_pData);
        std::reverse_copy(pOld, pOld + m_nSize, pNew);
        Attach(pNew, m_nSize);
    }
}

void* Lib_Buffer::alloc(unsigned long long nSize) const noexcept { return Lib_Alloc(true, nSize); }

void Lib_Buffer::free(void* pBlock) const noexcept { Lib_Free(pBlock); }

void Lib_Buffer::flush() noexcept
{
    if (m_nSize != 0)
    {
        free(m_pData);
    }
    init();
}

void Lib_Buffer::init() noexcept
{
    m_nSize = 0;
    m_pData = nullptr;
}

void* Lib_Buffer::st_Spare_Bytes(unsigned long long nSize) noexcept
{
    // Memory of each thread's own would have to be allocated, on some systems.
    constexpr DWORD nElements = 61;
    alignas(__STDCPP_DEFAULT_NEW_ALIGNMENT__) static unsigned char aBytes[nElements][Max_Spare_Bytes];
    unsigned char* pElement = aBytes[GetCurrentThreadId() % nElements];
    std::memset(pElement, 0, std::min(nSize, Max_Spare_Bytes));
    return pElement;
}
