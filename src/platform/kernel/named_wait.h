#ifndef QNLIB_SRC_PLATFORM_KERNEL_NAMED_WAIT_H
#define QNLIB_SRC_PLATFORM_KERNEL_NAMED_WAIT_H

#include "platform/kernel/local_objects.h"
#include "platform/kernel/named_object.h"

// Waits with named objects among their objects, local ones as well.

namespace qn_platform::kernel
{

inline constexpr std::size_t MOST_WAIT_OBJECTS = 64;

/// Empty after the deadline.
Taken Wait_For_Any_Named(std::span<Object* const> objects, Thread_Record& self, Deadline& deadline);

/// 0, or the lowest index of an abandoned mutex; empty after the deadline.
Taken Wait_For_All_Named(std::span<Object* const> objects, Thread_Record& self, Deadline& deadline);

} // namespace qn_platform::kernel

#endif
