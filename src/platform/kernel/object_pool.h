#ifndef QNLIB_SRC_PLATFORM_KERNEL_OBJECT_POOL_H
#define QNLIB_SRC_PLATFORM_KERNEL_OBJECT_POOL_H

#include "platform/kernel/object_layout.h"

// Objects are born, counted and set free here; what their states mean is told elsewhere.

namespace qn_platform::kernel
{

/// A new object with one reference. Empty, last error 8, when memory is short.
Object_Reference New_Object(std::uint32_t traits, std::uint32_t state);

/// A reference of one's own to an object on which one is held already.
Object_Reference Share(Object& object);

/// A reference to the object that a look found; empty if it is gone by now.
Object_Reference Get_Reference(Look look);

void Release(Object& object);

/// Sets an object's memory free, which no reference stands for any more.
void Free_Object(Object& object);

/// In a forked child: no object is in use any more.
void Forget_Objects();

} // namespace qn_platform::kernel

#endif
