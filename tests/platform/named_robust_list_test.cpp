#include "named_test_objects.h"

#include "platform/kernel/robust_list.h"

#include <algorithm>

#include <pthread.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace test_support;
using qn_platform::kernel::Find_Robust_Head;
using qn_platform::kernel::ROBUST_DISTANCE;

// A thread has one robust list, on which the program's robust mutexes and the named ones stand side by side.

namespace
{

constexpr DWORD PATIENCE = 10000;

/// A robust mutex of the C library, with words around it that nobody should write to.
struct Guarded
{
    Guarded()
    {
        pthread_mutexattr_t attributes;
        pthread_mutexattr_init(&attributes);
        pthread_mutexattr_setrobust(&attributes, PTHREAD_MUTEX_ROBUST);
        pthread_mutex_init(&mutex, &attributes);
    }

    bool Is_Untouched() const
    {
        const auto is_Zero = [](long value) { return value == 0; };
        return std::all_of(before, std::end(before), is_Zero) && std::all_of(after, std::end(after), is_Zero);
    }

    long before[4] = {};
    pthread_mutex_t mutex;
    long after[4] = {};
};

/// A thread's robust and named mutexes, taken and released in an order that a text gives: R and S, r and s
/// for the program's, N and M, n and m for named ones, A and a for both named ones by one wait.
class Mixed_Mutexes
{
public:
    explicit Mixed_Mutexes(const std::string& base) : m_First(Mutex(base + "n")), m_Second(Mutex(base + "m"))
    {
    }

    bool Do(const char* steps)
    {
        return std::all_of(steps, steps + std::string(steps).size(),
                           [this](char step) { return do_Step(step); });
    }

    bool Are_Untouched() const { return m_Robust[0].Is_Untouched() && m_Robust[1].Is_Untouched(); }

private:
    bool do_Step(char step)
    {
        const HANDLE both[] = {m_First, m_Second};
        switch (step)
        {
        case 'R':
        case 'S':
            return pthread_mutex_lock(&m_Robust[step - 'R'].mutex) == 0;
        case 'r':
        case 's':
            return pthread_mutex_unlock(&m_Robust[step - 'r'].mutex) == 0;
        case 'N':
        case 'M':
            return WaitForSingleObject(step == 'N' ? m_First : m_Second, 0) == WAIT_OBJECT_0;
        case 'n':
        case 'm':
            return ReleaseMutex(step == 'n' ? m_First : m_Second);
        case 'A':
            return WaitForMultipleObjects(2, both, TRUE, 0) == WAIT_OBJECT_0;
        default:
            return ReleaseMutex(m_First) && ReleaseMutex(m_Second);
        }
    }

    Guarded m_Robust[2];
    Handle m_First;
    Handle m_Second;
};

} // namespace

TEST(Named_Robust_List, Goes_Together_With_Robust_Mutexes_Of_The_Program_In_Every_Order)
{
    const std::string strBase = Own_Name("mixed");
    const Handle first = Mutex(strBase + "n"), second = Mutex(strBase + "m");
    for (const char* const pLeft : {"NR", "RN", "RNSM", "NRMS", "RAS"})
    {
        SCOPED_TRACE(pLeft);
        const pid_t nOwner = fork();
        if (nOwner == 0)
        {
            Mixed_Mutexes mutexes(strBase);
            auto& head = *Find_Robust_Head();
            for (const char* const pSteps : {"NRrn", "NRnr", "RNrn", "RNnr", "RNSMnrms", "NRMSsnmr",
                                             "RSNMrmsn", "RASras", "ARar", "RAra"})
            {
                if (!mutexes.Do(pSteps) || head.next != &head.next || head.distance != -ROBUST_DISTANCE)
                {
                    _exit(1);
                }
            }
            if (mutexes.Do(pLeft) && mutexes.Are_Untouched())
            {
                kill(getpid(), SIGKILL);
            }
            _exit(2);
        }
        int nStatus = 0;
        waitpid(nOwner, &nStatus, 0);
        EXPECT_TRUE(WIFSIGNALED(nStatus)) << WEXITSTATUS(nStatus);
        EXPECT_EQ(WAIT_ABANDONED, WaitForSingleObject(first, PATIENCE));
        EXPECT_TRUE(ReleaseMutex(first));
        const bool bSecond = std::string(pLeft).find_first_of("MA") != std::string::npos;
        EXPECT_EQ(bSecond ? WAIT_ABANDONED : WAIT_OBJECT_0, WaitForSingleObject(second, PATIENCE));
        EXPECT_TRUE(ReleaseMutex(second));
    }
}

TEST(Named_Robust_List, A_Truncated_Object_Keeps_No_Other_Mutex_From_Being_Given_Back)
{
    const std::string strBase = Own_Name("order");
    const Handle mutex = Mutex(strBase + "own");
    for (const bool bAll : {false, true})
    {
        SCOPED_TRACE(bAll);
        const pid_t nOwner = fork();
        if (nOwner == 0)
        {
            const Handle own = Mutex(strBase + "own");
            const Handle other = Public_Mutex(strBase + "public");
            const HANDLE all[] = {other, own};
            if (bAll)
            {
                WaitForMultipleObjects(2, all, TRUE, PATIENCE);
            }
            else
            {
                WaitForSingleObject(own, PATIENCE);
                WaitForSingleObject(other, PATIENCE);
            }
            const bool bCut = truncate(Find_Files(strBase + "public").at(0).c_str(), 0) == 0;
            kill(getpid(), bCut ? SIGKILL : SIGTERM);
        }
        int nStatus = 0;
        waitpid(nOwner, &nStatus, 0);
        EXPECT_EQ(SIGKILL, WTERMSIG(nStatus));
        EXPECT_EQ(WAIT_ABANDONED, WaitForSingleObject(mutex, PATIENCE));
        EXPECT_TRUE(ReleaseMutex(mutex));
    }
}
