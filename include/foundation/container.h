#ifndef QNLIB_FOUNDATION_CONTAINER_H
#define QNLIB_FOUNDATION_CONTAINER_H

#include "lib_api.h"

/// The base of the library's containers: what every container can be asked, and the throwing allocator that
/// containers take their nodes from. It has no state; for itself it is a container that is always empty, and
/// copying it copies nothing.
class LIB_API Lib_Container
{
public:
    Lib_Container();
    Lib_Container(const Lib_Container& Source);
    virtual ~Lib_Container();
    Lib_Container& operator=(const Lib_Container& Source);

    /// Removes all elements.
    virtual void Clear();
    virtual unsigned long long Get_Num_Elements() const;

    /// A block of nSize bytes with undefined content, never NULL, also for a size of 0. Throws
    /// std::bad_alloc when memory is exhausted and std::bad_array_new_length for the largest size of all.
    /// The caller owns the block and gives it back to Free_Buffer.
    static void* Alloc_Buffer(unsigned long long nSize);

    /// Releases a block of Alloc_Buffer. NULL is accepted.
    static void Free_Buffer(void* pBlock);
};

#endif
