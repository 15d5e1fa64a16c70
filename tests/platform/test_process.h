#ifndef QNLIB_TEST_TEST_PROCESS_H
#define QNLIB_TEST_TEST_PROCESS_H

#include <string>
#include <vector>

#include <sys/types.h>

// Second processes for tests: the test program starts itself again, to play one of its parts.

namespace test_support
{

using Part_Arguments = std::vector<std::string>;

/// A part that a second process can play; made as a static object. The function's answer is the exit code.
class Part
{
public:
    using Function = int (*)(const Part_Arguments& arguments);

    Part(const char* name, Function function);
};

/// One such process, which ends with its owner, or when that dies, or after minutes.
class Test_Process
{
public:
    /// No answer, and no end, within the time.
    static constexpr int NONE = -1;

    Test_Process(const char* part, const Part_Arguments& arguments = {});
    Test_Process(const Test_Process&) = delete;
    Test_Process& operator=(const Test_Process&) = delete;
    ~Test_Process();

    void Say(char word) const;
    int Hear(int milliseconds = 20000) const;

    /// The exit code, or 256 and the number of the signal that ended it.
    int Get_End(int milliseconds = 20000);

    /// Kills it and waits until it is gone.
    void Kill();

    pid_t Get_Id() const { return m_nId; }

private:
    pid_t m_nId = 0;
    int m_nLine = -1; // of the talk with it
};

// The part's side of the talk.
void Say_To_Owner(char word);
int Hear_From_Owner();

/// Whether the process sleeps, in a futex call if it has one thread.
bool Becomes_Asleep(pid_t process);

} // namespace test_support

#endif
