#ifndef QNLIB_SRC_PLATFORM_KERNEL_NAMED_REGISTRY_H
#define QNLIB_SRC_PLATFORM_KERNEL_NAMED_REGISTRY_H

#include "platform/kernel/named_state.h"

// The process's list of named objects: one record and one mapping for each name.

namespace qn_platform::kernel
{

/// The newest of all records ever made, for use in a signal handler: `next` leads to the others.
const Named_Object* First_Named_Object();

// Around a fork, so that the child finds the list in order.
void Lock_Named_Objects();
void Unlock_Named_Objects();

} // namespace qn_platform::kernel

#endif
