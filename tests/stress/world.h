#ifndef QNLIB_TEST_STRESS_WORLD_H
#define QNLIB_TEST_STRESS_WORLD_H

#include "child.h"
#include "named_objects.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

namespace stress
{

struct Names
{
    std::u16string m_strA = New_Name();
    std::u16string m_strB = New_Name();
    std::u16string m_strMutex = New_Name();
    std::u16string m_strIdle = New_Name();
};

/// Two events and a mutex, as each process opens them for itself.
struct Objects
{
    explicit Objects(const Names& names, bool bManual = false)
        : m_A(Event(names.m_strA, bManual)), m_B(Event(names.m_strB)), m_Mutex(Mutex(names.m_strMutex))
    {
    }

    Object m_A;
    Object m_B;
    Object m_Mutex;
};

/// What a thread's first wait finds out once and for all shall not be stepped through each time.
inline void Warm_Up(const Names& names) { Wait_For_Any(1, Event(names.m_strIdle), Event(names.m_strIdle)); }

/// What a child does with the objects; the answer is the child's result.
using Deed = std::function<unsigned int(const Objects&)>;

inline unsigned int Wait_A(const Objects& objects) { return objects.m_A.Wait(); }

inline unsigned int Wait_Any_Event(const Objects& objects)
{
    return Wait_For_Any(Forever, objects.m_A, objects.m_B);
}

inline unsigned int Lock(const Objects& objects) { return objects.m_Mutex.Wait(); }

/// Any and all, with local events beside the mutex.
inline unsigned int Lock_Any(const Objects& objects)
{
    const Object local(CreateEventW(nullptr, FALSE, FALSE, nullptr));
    return Wait_For_Any(Forever, objects.m_A, objects.m_Mutex, local);
}

inline unsigned int Lock_All(const Objects& objects)
{
    const Object local(CreateEventW(nullptr, TRUE, TRUE, nullptr));
    return Wait_For_All(Forever, local, objects.m_Mutex);
}

/// The lock as a deed of one who then gives the mutex back. The answer is whether it was abandoned, or 0xFF.
inline Deed Lock_And_Release(unsigned int (*lock)(const Objects&))
{
    return [lock](const Objects& objects) -> unsigned int
    {
        const unsigned int nResult = lock(objects);
        return nResult != WAIT_FAILED && ReleaseMutex(objects.m_Mutex.get()) ? nResult & 0x80 : 0xFF;
    };
}

/// The objects as the test has them, and the children that sleep on them.
class World
{
public:
    explicit World(bool bManual = false) : m_Own(m_Names, bManual) {}

    /// Starts one more and waits until it sleeps.
    void Start_Sleeper(const Deed& deed)
    {
        m_Sleepers.emplace_back([this, &deed] { return deed(Objects(m_Names)); });
        EXPECT_TRUE(m_Sleepers.back().Settle());
    }

    /// How many of them have ended, none of them on the move.
    unsigned int Count_Ended()
    {
        return static_cast<unsigned int>(std::count_if(m_Sleepers.begin(), m_Sleepers.end(),
                                                       [](Child& child)
                                                       {
                                                           EXPECT_TRUE(child.Settle());
                                                           return child.Get_Result(milliseconds(0)) !=
                                                                  Child::Still_There;
                                                       }));
    }

    /// All of them get the mutex soon, `nAbandoned` at most as one that was abandoned.
    void Expect_All_Locked(unsigned int nAbandoned)
    {
        for (Child& sleeper : m_Sleepers)
        {
            const unsigned int nResult = sleeper.Get_Result();
            EXPECT_TRUE(nResult == 0 || (nResult == 0x80 && nAbandoned-- > 0))
                << "a waiter's result: " << nResult;
        }
    }

    /// The test itself gets the mutex soon; the answer is whether it was abandoned.
    bool Lock_Soon() const
    {
        const DWORD nResult = m_Own.m_Mutex.Wait(static_cast<DWORD>(Soon.count()));
        EXPECT_TRUE(nResult == WAIT_OBJECT_0 || nResult == WAIT_ABANDONED) << nResult;
        EXPECT_TRUE(ReleaseMutex(m_Own.m_Mutex.get()));
        return nResult == WAIT_ABANDONED;
    }

    Names m_Names;
    Objects m_Own;
    std::vector<Child> m_Sleepers;
};

} // namespace stress

#endif
