#include "child.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <string>

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/ptrace.h>
#include <sys/syscall.h>
#include <sys/time.h>
#include <sys/wait.h>
#include <unistd.h>

namespace stress
{

namespace
{

constexpr unsigned int longest_Life = 100; // seconds of a child

const char* asked_Rounds() { return std::getenv("QNLIB_STRESS_ROUNDS"); }

/// While it lives, system calls of this thread that sleep are interrupted now and then.
class Ticks
{
public:
    Ticks()
    {
        struct sigaction action = {};
        action.sa_handler = [](int) {};
        sigaction(SIGALRM, &action, nullptr);
        set_Interval(2000);
    }
    ~Ticks() { set_Interval(0); }

private:
    static void set_Interval(suseconds_t nMicroseconds)
    {
        const itimerval interval{{0, nMicroseconds}, {0, nMicroseconds}};
        setitimer(ITIMER_REAL, &interval, nullptr);
    }
};

/// The first line of such a file, or its beginning; empty if there is none.
std::string read_Process_File(pid_t id, const char* name)
{
    char path[40];
    std::snprintf(path, sizeof(path), "/proc/%d/%s", id, name);
    const int fd = open(path, O_RDONLY | O_CLOEXEC);
    char text[64];
    const ssize_t nRead = fd >= 0 ? read(fd, text, sizeof(text)) : 0;
    close(fd);
    return {text, static_cast<std::size_t>(std::max<ssize_t>(nRead, 0))};
}

} // namespace

bool Is_Long() { return asked_Rounds() != nullptr; }

unsigned int Rounds(unsigned int nShort)
{
    return Is_Long() ? static_cast<unsigned int>(std::strtoul(asked_Rounds(), nullptr, 10)) : nShort;
}

unsigned int Random_Below(unsigned int nLimit)
{
    thread_local pid_t owner = 0;
    thread_local std::minstd_rand engine;
    if (owner != getpid())
    {
        owner = getpid();
        engine.seed(std::random_device()());
    }
    return static_cast<unsigned int>(engine()) % nLimit;
}

bool Becomes_True(const std::function<bool()>& condition, milliseconds time)
{
    const auto end = std::chrono::steady_clock::now() + time;
    for (; !condition(); usleep(20))
        if (std::chrono::steady_clock::now() > end)
            return false;
    return true;
}

Child::Child(const Work& work) : m_nId(fork())
{
    if (m_nId != 0)
        return;
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    signal(SIGALRM, SIG_DFL);
    alarm(longest_Life);
    const unsigned int nResult = work();
    _exit(static_cast<int>(nResult & 0xFF));
}

Child& Child::operator=(Child&& other) noexcept
{
    Kill();
    m_nId = std::exchange(other.m_nId, 0);
    m_nResult = other.m_nResult;
    return *this;
}

unsigned int Child::Get_Result(milliseconds time)
{
    if (m_nId <= 0 || m_nResult != Still_There)
        return m_nResult;
    pollfd place{static_cast<int>(syscall(SYS_pidfd_open, m_nId, 0)), POLLIN, 0};
    poll(&place, 1, static_cast<int>(time.count()));
    close(place.fd);
    int status = 0;
    if (waitpid(m_nId, &status, WNOHANG) == m_nId)
        Note_Status(status);
    return m_nResult;
}

bool Child::Note_Status(int nStatus)
{
    if (WIFEXITED(nStatus))
        m_nResult = static_cast<unsigned int>(WEXITSTATUS(nStatus));
    else if (WIFSIGNALED(nStatus))
        m_nResult = 0x100U + static_cast<unsigned int>(WTERMSIG(nStatus));
    return m_nResult != Still_There;
}

bool Child::Is_Asleep() const
{
    // "running" gives 0, which is no futex call. Of one that was woken and has no processor yet the first
    // file still tells its call, but the second one calls it running.
    const long nCall = std::strtol(read_Process_File(m_nId, "syscall").c_str(), nullptr, 10);
    return (nCall == SYS_futex || nCall == SYS_futex_waitv) &&
           read_Process_File(m_nId, "stat").find(") S ") != std::string::npos;
}

bool Child::Settle()
{
    return Becomes_True([this] { return Get_Result(milliseconds(0)) != Still_There || Is_Asleep(); });
}

void Child::Kill()
{
    if (m_nId <= 0 || m_nResult != Still_There)
        return;
    kill(m_nId, SIGKILL);
    int status = 0;
    do
        while (waitpid(m_nId, &status, __WALL) < 0 && errno == EINTR)
            ;
    while (!Note_Status(status));
}

bool Stepped_Child::Is_Permitted()
{
    Child child([] { return static_cast<unsigned int>(ptrace(PTRACE_TRACEME, 0, 0, 0) != 0); });
    return child.Get_Result() == 0;
}

void Stepped_Child::Mark() { syscall(SYS_kill, getpid(), SIGSTOP); }

Stepped_Child::Stepped_Child(const Child::Work& work)
    : m_Child(
          [&work]
          {
              ptrace(PTRACE_TRACEME, 0, 0, 0);
              return work();
          })
{
    wait_For_Stop();
}

Stepped_Child::Stop Stepped_Child::Move(unsigned long& nSteps)
{
    const Ticks ticks;
    Stop stop = m_bUnderWay ? wait_For_Stop() : Stop::Step;
    for (; stop == Stop::Step && nSteps > 0; --nSteps)
    {
        ptrace(PTRACE_SINGLESTEP, m_Child.Get_Id(), 0, 0);
        stop = wait_For_Stop();
    }
    m_bUnderWay = stop == Stop::Asleep;
    return stop;
}

Stepped_Child::Stop Stepped_Child::wait_For_Stop()
{
    for (int nTicksAsleep = 0; nTicksAsleep < 2;)
    {
        int status = 0;
        if (waitpid(m_Child.Get_Id(), &status, __WALL) < 0)
            nTicksAsleep = m_Child.Is_Asleep() ? nTicksAsleep + 1 : 0;
        else if (m_Child.Note_Status(status))
            return Stop::Ended;
        else
            return WSTOPSIG(status) == SIGSTOP ? Stop::Mark : Stop::Step;
    }
    return Stop::Asleep;
}

} // namespace stress
