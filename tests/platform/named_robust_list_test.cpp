#include "named_test_objects.h"
#include "test_process.h"

#include "platform/kernel/robust_list.h"

#include <algorithm>

#include <pthread.h>
#include <signal.h>

using namespace test_support;
using qn_platform::kernel::Find_Robust_Head;
using qn_platform::kernel::ROBUST_DISTANCE;

// A thread has one robust list, on which the program's robust mutexes and the named ones stand side by side.

namespace
{

constexpr int KILLED = 256 + SIGKILL;

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
    explicit Mixed_Mutexes(const std::string& base) : m_Named{Mutex(base + "n"), Mutex(base + "m")} {}

    bool Do(const std::string& steps)
    {
        return std::all_of(steps.begin(), steps.end(), [this](char step) { return do_Step(step); });
    }

    bool Are_Untouched() const { return m_Robust[0].Is_Untouched() && m_Robust[1].Is_Untouched(); }

private:
    bool do_Step(char step)
    {
        const HANDLE both[] = {m_Named[0], m_Named[1]};
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
            return WaitForSingleObject(both['N' - step], 0) == WAIT_OBJECT_0;
        case 'n':
        case 'm':
            return ReleaseMutex(both['n' - step]);
        case 'A':
            return WaitForMultipleObjects(2, both, TRUE, 0) == WAIT_OBJECT_0;
        default:
            return ReleaseMutex(both[0]) && ReleaseMutex(both[1]);
        }
    }

    Guarded m_Robust[2];
    Handle m_Named[2];
};

/// Dies with what the last steps took; does not if something is wrong.
int Play_Owner(const std::string& base, const char* last_steps)
{
    Mixed_Mutexes mutexes(base);
    auto& head = *Find_Robust_Head();
    for (const char* const pSteps :
         {"NRrn", "NRnr", "RNrn", "RNnr", "RNSMnrms", "NRMSsnmr", "RSNMrmsn", "RASras", "ARar", "RAra"})
    {
        if (!mutexes.Do(pSteps) || head.next != &head.next || head.distance != -ROBUST_DISTANCE)
        {
            return 1;
        }
    }
    return mutexes.Do(last_steps) && mutexes.Are_Untouched() ? raise(SIGKILL) : 2;
}

} // namespace

TEST(Named_Robust_List, Goes_Together_With_Robust_Mutexes_Of_The_Program_In_Every_Order)
{
    const std::string strBase = Own_Name("mixed");
    const Handle first = Mutex(strBase + "n"), second = Mutex(strBase + "m");
    for (const std::string strLeft : {"NR", "RN", "RNSM", "NRMS", "RAS"})
    {
        SCOPED_TRACE(strLeft);
        EXPECT_EQ(KILLED, In_Other_Process([&] { return Play_Owner(strBase, strLeft.c_str()); }));
        EXPECT_EQ(WAIT_ABANDONED, WaitForSingleObject(first, PATIENCE));
        EXPECT_TRUE(ReleaseMutex(first));
        const bool bSecond = strLeft.find_first_of("MA") != std::string::npos;
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
        const auto take_And_Die = [&]
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
            return truncate(Find_Files(strBase + "public").at(0).c_str(), 0) == 0 ? raise(SIGKILL) : 1;
        };
        EXPECT_EQ(KILLED, In_Other_Process(take_And_Die));
        EXPECT_EQ(WAIT_ABANDONED, WaitForSingleObject(mutex, PATIENCE));
        EXPECT_TRUE(ReleaseMutex(mutex));
    }
}
