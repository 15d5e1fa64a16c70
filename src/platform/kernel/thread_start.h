#ifndef QNLIB_SRC_PLATFORM_KERNEL_THREAD_START_H
#define QNLIB_SRC_PLATFORM_KERNEL_THREAD_START_H

#include "platform/kernel/object.h"

#include <cstddef>

namespace qn_platform::kernel
{

/// What a new thread is to do.
struct Thread_Work
{
    unsigned int (*procedure)(void* argument);
    void* argument;
    bool suspended;
    std::size_t stack_size; // 0: the system's default
    bool stack_may_be_less; // than that default
};

/// Makes the thread for which `object` is to stand, fresh from New_Thread_Object. 0, or the system's error;
/// then the object stands for nothing and has no reference of a thread's.
int Start_Thread(Object& object, const Thread_Work& work);

} // namespace qn_platform::kernel

#endif
