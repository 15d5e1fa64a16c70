// Processes of two threads make, open, lock and close mutexes of a few names, and are killed meanwhile.

#include "child.h"
#include "named_objects.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstdio>
#include <thread>
#include <vector>

#include <unistd.h>

namespace stress
{

namespace
{

constexpr unsigned int nNames = 3;
constexpr unsigned int nMostProcesses = 0x10000;

struct Storm
{
    std::atomic<unsigned int> m_Holders[nNames]; ///< twice the process's number and the thread's, 0 for none
    std::atomic<bool> m_Killed[nMostProcesses];  ///< or about to be
    std::atomic<unsigned int> m_nLocks;
    std::atomic<unsigned int> m_nTwoInside;
    std::atomic<unsigned int> m_nLastFault; ///< the answer or code of something that failed
};

void hold(Storm& storm, unsigned int nName, unsigned int nHolder)
{
    const unsigned int nBefore = storm.m_Holders[nName].exchange(nHolder);
    if (nBefore != 0 && !storm.m_Killed[nBefore / 2])
        ++storm.m_nTwoInside;
    for (unsigned int i = Random_Below(200); i > 0; --i)
        std::atomic_signal_fence(std::memory_order_seq_cst);
    if (storm.m_Holders[nName].exchange(0) != nHolder)
        ++storm.m_nTwoInside;
    ++storm.m_nLocks;
}

void make_Lock_And_Close(Storm& storm, const std::vector<std::u16string>& names, unsigned int nHolder)
{
    const unsigned int nName = Random_Below(nNames);
    const bool bOwned = Random_Below(2) == 0;
    const Object mutex = Mutex(names[nName], bOwned);
    const DWORD nCode = GetLastError();
    if (!mutex)
    {
        storm.m_nLastFault = nCode;
        return;
    }
    if (!bOwned || nCode != 0)
    {
        const DWORD nResult = mutex.Wait(5000);
        if (nResult != WAIT_OBJECT_0 && nResult != WAIT_ABANDONED)
        {
            storm.m_nLastFault = nResult;
            return;
        }
    }
    hold(storm, nName, nHolder);
    if (!ReleaseMutex(mutex.get()))
        storm.m_nLastFault = GetLastError();
}

Child start_Process(Storm& storm, const std::vector<std::u16string>& names, unsigned int nProcess)
{
    return Child(
        [&storm, &names, nProcess]() -> unsigned int
        {
            const auto work = [&](unsigned int nHolder)
            {
                for (;;)
                    make_Lock_And_Close(storm, names, nHolder);
            };
            std::thread second(work, nProcess * 2 + 1);
            work(nProcess * 2);
            return 0;
        });
}

} // namespace

TEST(Name_Storm, Never_Has_Two_Objects_Of_A_Name_And_Leaves_Nothing)
{
    const unsigned int nKills = std::min(Rounds(100), nMostProcesses - 8);
    const std::vector<std::u16string> names = {New_Name(), New_Name(), New_Name()};
    Shared<Storm> storm;
    unsigned int nProcess = 1;
    struct Running
    {
        unsigned int m_nProcess;
        Child m_Child;
    };
    std::vector<Running> running;
    for (; nProcess <= 4; ++nProcess)
        running.push_back({nProcess, start_Process(*storm, names, nProcess)});
    const auto kill = [&](Running& victim)
    {
        storm->m_Killed[victim.m_nProcess] = true;
        victim.m_Child.Kill();
    };
    for (unsigned int nKill = 0; nKill < nKills; ++nKill)
    {
        usleep(Random_Below(4000));
        Running& victim = running[Random_Below(4)];
        EXPECT_EQ(Child::Still_There, victim.m_Child.Get_Result(milliseconds(0)));
        kill(victim);
        victim = {nProcess, start_Process(*storm, names, nProcess)};
        ++nProcess;
    }
    for (Running& last : running)
        kill(last);
    EXPECT_EQ(0U, storm->m_nTwoInside);
    EXPECT_EQ(0U, storm->m_nLastFault);
    EXPECT_GT(storm->m_nLocks, nKills);
    for (const std::u16string& strName : names)
        Expect_Name_Is_Free(strName);
    EXPECT_EQ(0U, Count_Files());
    std::printf("name storm: %u kills of processes, %u locks\n", nKills, storm->m_nLocks.load());
}

} // namespace stress
