#ifndef QNLIB_TEST_STRESS_CHILD_H
#define QNLIB_TEST_STRESS_CHILD_H

// Processes for tests that kill: forked from the test program, which has one thread, and ended with it.

#include <chrono>
#include <functional>
#include <new>
#include <utility>

#include <sys/mman.h>
#include <sys/types.h>

namespace stress
{

using std::chrono::milliseconds;

inline constexpr milliseconds Soon{1000};

/// QNLIB_STRESS_ROUNDS, which asks for the long form, or what the short form takes.
unsigned int Rounds(unsigned int nShort);
bool Is_Long();

/// A number below the limit; children draw numbers of their own.
unsigned int Random_Below(unsigned int nLimit);

/// Zeroed memory that the children share with the test.
template <class T>
class Shared
{
public:
    Shared()
        : m_pObject(new (mmap(nullptr, sizeof(T), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0))
                        T())
    {
    }
    Shared(const Shared&) = delete;
    Shared& operator=(const Shared&) = delete;
    ~Shared() { munmap(m_pObject, sizeof(T)); }

    T* operator->() const { return m_pObject; }
    T& operator*() const { return *m_pObject; }

private:
    T* m_pObject;
};

/// A process that does one work, killed with its owner if it is still there.
class Child
{
public:
    /// The work's answer is the exit code: its lowest 8 bits tell the answers of waits apart.
    using Work = std::function<unsigned int()>;

    static constexpr unsigned int Timed_Out = 258 & 0xFF; ///< what a wait's time-out looks like as a code
    static constexpr unsigned int Still_There = 0x1000;   ///< a result of none

    explicit Child(const Work& work);
    Child(Child&& other) noexcept : m_nId(std::exchange(other.m_nId, 0)), m_nResult(other.m_nResult) {}
    Child& operator=(Child&& other) noexcept;
    ~Child() { Kill(); }

    pid_t Get_Id() const { return m_nId; }

    /// Exit code, or 0x100 plus the signal that ended it; Still_There after the time.
    unsigned int Get_Result(milliseconds time = Soon);

    /// Whether it sleeps on a futex now.
    bool Is_Asleep() const;

    /// Waits until it sleeps or has ended. False if it does neither for long.
    bool Settle();

    /// Sends SIGKILL and waits until the process is gone.
    void Kill();

    /// What waitpid told of it. True if it has ended.
    bool Note_Status(int nStatus);

private:
    pid_t m_nId;
    unsigned int m_nResult = Still_There;
};

/// True once the condition holds, false after the time.
bool Becomes_True(const std::function<bool()>& condition, milliseconds time = Soon);

/// A child that is moved on instruction by instruction. Its work calls Mark twice: where stepping begins and
/// where it ends.
class Stepped_Child
{
public:
    enum class Stop
    {
        Step,
        Mark,
        Asleep, ///< the instruction is a system call that sleeps; its step is still under way
        Ended
    };

    static bool Is_Permitted();
    static void Mark();

    /// Comes back when the child stands at its first mark.
    explicit Stepped_Child(const Child::Work& work);

    /// Finishes a step that is under way, then takes as many as asked for, which it counts down, unless
    /// something else happens before.
    Stop Move(unsigned long& nSteps);

    void Kill() { m_Child.Kill(); }

private:
    Stop wait_For_Stop();

    Child m_Child;
    bool m_bUnderWay = false;
};

} // namespace stress

#endif
