#include "platform/kernel/fork.h"

#include "platform/kernel/find_object.h"
#include "platform/kernel/handle_table.h"
#include "platform/kernel/local_state.h"
#include "platform/kernel/named_object.h"
#include "platform/kernel/named_registry.h"
#include "platform/kernel/object_pool.h"
#include "platform/kernel/token.h"

#include <pthread.h>

namespace qn_platform::kernel
{

extern Ranked_Lock g_Records_Lock;

namespace
{

// The locks are held across the fork, so the child finds all in order whatever other threads were at.

void before_Fork()
{
    Lock_Named_Objects();
    g_Dispatcher.lock();
    g_Records_Lock.lock();
    g_Table_Lock.lock();
    g_Privileges_Lock.lock();
}

void after_Fork()
{
    g_Privileges_Lock.unlock();
    g_Table_Lock.unlock();
    g_Records_Lock.unlock();
    g_Dispatcher.unlock();
    Unlock_Named_Objects();
}

void after_Fork_In_Child()
{
    Forget_Named_Objects();
    Forget_Process();
    Forget_Process_Token();
    Forget_Threads();
    Forget_Handles();
    Forget_Objects();
    after_Fork();
}

} // namespace

bool Watch_Forks()
{
    static const int nError = pthread_atfork(before_Fork, after_Fork, after_Fork_In_Child);
    return nError == 0;
}

} // namespace qn_platform::kernel
