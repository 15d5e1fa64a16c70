#ifndef QNLIB_BENCH_KERNEL_ROWS_H
#define QNLIB_BENCH_KERNEL_ROWS_H

#include "row.h"

/// The rows of events, mutexes and waits, to which each peer adds its works from a file of its own: some of
/// them declare the same names as the platform's door.
struct Kernel_Rows
{
    Row m_SetWait{"set and wait, event that resets itself", 0};
    Row m_SetWaitNamed{"set and wait, named event", 0};
    Row m_Lock{"lock and unlock a mutex", 0};
    Row m_LockNamed{"lock and unlock a named mutex", 0};
    Row m_MakeEvent{"create and close an event", 0};
    Row m_MakeEventNamed{"create and close a named event", 0};
    Row m_MakeMutex{"create and close a mutex", 0};
    Row m_MakeMutexNamed{"create and close a named mutex", 0};
    Row m_Threads{"ping-pong of two threads, events", 0, Row::Time::Clock};
    Row m_ThreadsNamed{"ping-pong of two threads, named events", 0, Row::Time::Clock};
    Row m_Processes{"ping-pong of two processes, named events", 0, Row::Time::Clock};

    struct Wait_Rows
    {
        unsigned int m_nCount;
        Row m_Local;
        Row m_Named;
    };
    Wait_Rows m_WaitAny[3] = {make_Wait_Rows(2), make_Wait_Rows(8), make_Wait_Rows(64)};

private:
    static Wait_Rows make_Wait_Rows(unsigned int nCount)
    {
        const std::string strName = "wait for any of " + std::to_string(nCount) + ", the last set";
        return {nCount, Row(strName, 1.0), Row(strName + ", named", 1.0)};
    }
};

void Add_Winpr(const Kernel_Rows& rows);
void Add_Boost(const Kernel_Rows& rows);
void Add_Poco(const Kernel_Rows& rows);
void Add_Posix(const Kernel_Rows& rows);

#endif
