#include "platform/kernel/ranked_lock.h"

#ifndef NDEBUG
#include <cstdio>
#include <cstdlib>
#endif

namespace qn_platform::kernel
{

#ifndef NDEBUG

namespace
{

/// One bit for each rank that the thread holds.
constinit thread_local unsigned int g_nHeld = 0;

unsigned int get_Bit(Lock_Rank rank) { return 1u << static_cast<unsigned int>(rank); }

void note_Taken(Lock_Rank rank)
{
    if (g_nHeld >= get_Bit(rank))
    {
        std::fprintf(stderr, "qnLib: the lock of rank %u is taken while locks 0x%X are held\n",
                     static_cast<unsigned int>(rank), g_nHeld);
        std::abort();
    }
    g_nHeld |= get_Bit(rank);
}

void note_Released(Lock_Rank rank) { g_nHeld &= ~get_Bit(rank); }

} // namespace

#else

namespace
{

void note_Taken(Lock_Rank) {}
void note_Released(Lock_Rank) {}

} // namespace

#endif

void Ranked_Lock::lock()
{
    note_Taken(m_Rank);
    m_Mutex.lock();
}

void Ranked_Lock::unlock()
{
    m_Mutex.unlock();
    note_Released(m_Rank);
}

} // namespace qn_platform::kernel
