#include "platform/memory.h"

#include "platform/modules.h"

#include <cstring>
#include <new>

namespace qn_platform
{

HLOCAL LocalAlloc(UINT flags, SIZE_T size)
{
    if (flags != LMEM_FIXED && flags != LPTR)
    {
        SetLastError(ERROR_INVALID_PARAMETER);
        return nullptr;
    }
    void* const block = ::operator new(size, std::nothrow);
    if (block == nullptr)
    {
        SetLastError(ERROR_NOT_ENOUGH_MEMORY);
    }
    else if (flags == LPTR)
    {
        std::memset(block, 0, size);
    }
    return block;
}

HLOCAL LocalFree(HLOCAL block)
{
    ::operator delete(block);
    return nullptr;
}

} // namespace qn_platform
