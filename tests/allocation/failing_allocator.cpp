#include "failing_allocator.h"

#include <atomic>
#include <cstddef>
#include <cstdlib>
#include <new>

namespace
{

std::atomic<unsigned long long> s_nCount{0};
std::atomic<long long> s_nOutstanding{0};
std::atomic<long long> s_nUntil_Failure{0}; // 0 or less: none is to fail

// In front of each block stands its size, in as much room as keeps the block aligned.
constexpr std::size_t s_nHeader = __STDCPP_DEFAULT_NEW_ALIGNMENT__;

void* allocate(std::size_t nSize) noexcept
{
    if (s_nUntil_Failure.fetch_sub(1) == 1 || nSize > static_cast<std::size_t>(-1) - s_nHeader)
    {
        return nullptr;
    }
    void* pRaw = std::malloc(nSize + s_nHeader);
    if (pRaw == nullptr)
    {
        return nullptr;
    }
    *static_cast<std::size_t*>(pRaw) = nSize;
    ++s_nCount;
    s_nOutstanding += static_cast<long long>(nSize);
    return static_cast<char*>(pRaw) + s_nHeader;
}

void release(void* pBlock) noexcept
{
    if (pBlock != nullptr)
    {
        void* pRaw = static_cast<char*>(pBlock) - s_nHeader;
        s_nOutstanding -= static_cast<long long>(*static_cast<std::size_t*>(pRaw));
        std::free(pRaw);
    }
}

void* allocate_Or_Throw(std::size_t nSize)
{
    void* pBlock = allocate(nSize);
    if (pBlock == nullptr)
    {
        throw std::bad_alloc();
    }
    return pBlock;
}

} // namespace

namespace test_support
{

unsigned long long Allocation_Count() { return s_nCount; }

long long Outstanding_Bytes() { return s_nOutstanding; }

Failing_Allocation::Failing_Allocation(unsigned int nNth) { s_nUntil_Failure = nNth; }

Failing_Allocation::~Failing_Allocation() { s_nUntil_Failure = 0; }

bool Failing_Allocation::Has_Failed() const { return s_nUntil_Failure <= 0; }

} // namespace test_support

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
