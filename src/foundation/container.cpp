#include "foundation/container.h"

#include <cstddef>
#include <limits>
#include <new>

Lib_Container::Lib_Container() = default;

Lib_Container::Lib_Container(const Lib_Container&) : Lib_Container() {}

Lib_Container::~Lib_Container() = default;

Lib_Container& Lib_Container::operator=(const Lib_Container&) { return *this; }

void Lib_Container::Clear() {}

unsigned long long Lib_Container::Get_Num_Elements() const { return 0; }

void* Lib_Container::Alloc_Buffer(unsigned long long nSize)
{
    if (nSize == std::numeric_limits<unsigned long long>::max())
    {
        throw std::bad_array_new_length();
    }
    return ::operator new[](static_cast<std::size_t>(nSize));
}

void Lib_Container::Free_Buffer(void* pBlock) { ::operator delete[](pBlock); }
