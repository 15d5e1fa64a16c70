#include "platform/kernel/ranked_lock.h"

#ifndef NDEBUG

#include <cstdio>
#include <cstdlib>

namespace qn_platform::kernel
{

namespace
{

/// One bit for each rank that the thread holds.
constinit thread_local unsigned int g_nHeld = 0;

unsigned int get_Bit(Lock_Rank rank) { return 1u << static_cast<unsigned int>(rank); }

} // namespace

void Ranked_Lock::st_Note_Taken(Lock_Rank rank)
{
    if (g_nHeld >= get_Bit(rank))
    {
        std::fprintf(stderr, "qnLib: the lock of rank %u is taken while locks 0x%X are held\n",
                     static_cast<unsigned int>(rank), g_nHeld);
        std::abort();
    }
    g_nHeld |= get_Bit(rank);
}

void Ranked_Lock::st_Note_Released(Lock_Rank rank) { g_nHeld &= ~get_Bit(rank); }

} // namespace qn_platform::kernel

#endif
