#include "test_process.h"

#include <gtest/gtest.h>

#include <chrono>
#include <thread>

#include <poll.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

namespace test_support
{

namespace
{

constexpr unsigned int LONGEST_LIFE = 300; // seconds

} // namespace

void Talk::Say(char word) const { EXPECT_EQ(1, send(m_nLine, &word, 1, MSG_NOSIGNAL)); }

int Talk::Hear(int milliseconds) const
{
    pollfd line = {m_nLine, POLLIN, 0};
    char word = 0;
    return poll(&line, 1, milliseconds) == 1 && read(m_nLine, &word, 1) == 1 ? word : NONE;
}

void Talk::Close() const { close(m_nLine); }

Test_Process::Test_Process(const Part& part)
{
    int lines[2];
    EXPECT_EQ(0, socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, lines));
    m_nId = fork();
    if (m_nId == 0)
    {
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        alarm(LONGEST_LIFE);
        close(lines[0]);
        _exit(part(Talk(lines[1])));
    }
    close(lines[1]);
    static_cast<Talk&>(*this) = Talk(lines[0]);
}

Test_Process::~Test_Process()
{
    Kill();
    Close();
}

int Test_Process::Get_End(int milliseconds)
{
    for (const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(milliseconds);
         std::chrono::steady_clock::now() < end; std::this_thread::sleep_for(std::chrono::milliseconds(1)))
    {
        int nStatus = 0;
        if (waitpid(m_nId, &nStatus, WNOHANG) == m_nId)
        {
            m_nId = 0;
            return WIFEXITED(nStatus) ? WEXITSTATUS(nStatus) : 256 + WTERMSIG(nStatus);
        }
    }
    return NONE;
}

void Test_Process::Kill()
{
    if (m_nId != 0)
    {
        kill(m_nId, SIGKILL);
        waitpid(m_nId, nullptr, 0);
        m_nId = 0;
    }
}

} // namespace test_support
