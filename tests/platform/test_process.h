#ifndef QNLIB_TEST_TEST_PROCESS_H
#define QNLIB_TEST_TEST_PROCESS_H

#include <functional>

#include <sys/types.h>

// Second processes for tests, forked from the test program.

namespace test_support
{

/// No answer, and no end, within the time.
inline constexpr int NONE = -1;

/// One side of the talk between a process and its owner, in single characters.
class Talk
{
public:
    explicit Talk(int line = -1) : m_nLine(line) {}

    void Say(char word) const;
    int Hear(int milliseconds = 20000) const;
    void Close() const;

private:
    int m_nLine;
};

/// A process that plays a part, whose answer is the exit code. It ends with its owner, or after minutes.
class Test_Process : public Talk
{
public:
    using Part = std::function<int(const Talk& owner)>;

    explicit Test_Process(const Part& part);
    Test_Process(const Test_Process&) = delete;
    Test_Process& operator=(const Test_Process&) = delete;
    ~Test_Process();

    /// The exit code, or 256 and the number of the signal that ended it.
    int Get_End(int milliseconds = 20000);

    /// Kills it and waits until it is gone.
    void Kill();

    pid_t Get_Id() const { return m_nId; }

private:
    pid_t m_nId = 0;
};

/// What a process answers that does nothing else.
template <class Function>
int In_Other_Process(const Function& function)
{
    return Test_Process([&](const Talk&) { return static_cast<int>(function()); }).Get_End();
}

} // namespace test_support

#endif
