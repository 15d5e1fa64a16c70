// The allocator of this program, and on Linux thereby of the library in it: memory is wiped when it is
// released. The library wipes nothing of its own accord, so a program whose plain secrets must not outlive
// their use does it, here once for all strings and buffers that a PIN passes through.

#include <cstddef>
#include <cstdlib>
#include <new>

#include <malloc.h>
#include <string.h>

namespace
{

void release(void* pBlock) noexcept
{
    if (pBlock != nullptr)
        explicit_bzero(pBlock, malloc_usable_size(pBlock));
    std::free(pBlock);
}

void* allocate(std::size_t nSize) noexcept { return std::malloc(nSize != 0 ? nSize : 1); }

void* allocate_Or_Throw(std::size_t nSize)
{
    void* pBlock = allocate(nSize);
    if (pBlock == nullptr)
        throw std::bad_alloc();
    return pBlock;
}

} // namespace

void* operator new(std::size_t nSize) { return allocate_Or_Throw(nSize); }
void* operator new[](std::size_t nSize) { return allocate_Or_Throw(nSize); }
void* operator new(std::size_t nSize, const std::nothrow_t&) noexcept { return allocate(nSize); }
void* operator new[](std::size_t nSize, const std::nothrow_t&) noexcept { return allocate(nSize); }
void operator delete(void* pBlock) noexcept { release(pBlock); }
void operator delete[](void* pBlock) noexcept { release(pBlock); }
void operator delete(void* pBlock, std::size_t) noexcept { release(pBlock); }
void operator delete[](void* pBlock, std::size_t) noexcept { release(pBlock); }
void operator delete(void* pBlock, const std::nothrow_t&) noexcept { release(pBlock); }
void operator delete[](void* pBlock, const std::nothrow_t&) noexcept { release(pBlock); }
