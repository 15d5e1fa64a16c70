#include "platform/kernel/named_use.h"

#include "platform/kernel/named_calls.h"

#include <linux/membarrier.h>
#include <sched.h>
#include <unistd.h>

namespace qn_platform::kernel
{

constinit std::atomic<bool> g_bMarks_Will_Do{false};

void Prepare_Uses()
{
    [[maybe_unused]] static const bool bAsked = []
    {
        const bool bRegistered = named_calls.barrier(MEMBARRIER_CMD_REGISTER_PRIVATE_EXPEDITED) == 0;
        g_bMarks_Will_Do.store(bRegistered, std::memory_order_relaxed);
        return true;
    }();
}

namespace
{

void make_Marks_Visible()
{
    if (named_calls.barrier(MEMBARRIER_CMD_PRIVATE_EXPEDITED) == 0)
    {
        return;
    }
    // Taken away meanwhile, by a filter of system calls. A processor lets go of a store within nanoseconds.
    g_bMarks_Will_Do.store(false, std::memory_order_relaxed);
    ::usleep(1000);
}

} // namespace

bool Wait_For_Uses(const Object& object)
{
    make_Marks_Visible();
    for (const Thread_Record* pRecord = First_Thread_Record(); pRecord != nullptr; pRecord = pRecord->next)
    {
        while (pRecord->in_use.load(std::memory_order_acquire) == &object)
        {
            if (pRecord == g_pCurrent_Thread)
            {
                return false;
            }
            sched_yield();
        }
    }
    return true;
}

} // namespace qn_platform::kernel
