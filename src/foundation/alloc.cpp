#include "foundation/alloc.h"

#include <cstddef>
#include <cstring>
#include <new>

void* Lib_Alloc(bool bZero, unsigned long long nSize)
{
    if (nSize == 0)
    {
        return nullptr;
    }
    void* pBlock = ::operator new(static_cast<std::size_t>(nSize), std::nothrow);
    if (bZero && pBlock != nullptr)
    {
        std::memset(pBlock, 0, static_cast<std::size_t>(nSize));
    }
    return pBlock;
}

void Lib_Free(void* pBlock) { ::operator delete(pBlock); }

bool Lib_Is_x64_OS() { return true; }
