#include "test_process.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <fstream>
#include <map>
#include <sstream>
#include <thread>

#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

extern char** environ;

namespace test_support
{

namespace
{

constexpr char SWITCH[] = "QN_TEST_PART";
constexpr int PART_LINE = 3;               // the part's descriptor of the talk
constexpr unsigned int LONGEST_LIFE = 300; // seconds

std::map<std::string, Part::Function>& get_Parts()
{
    static std::map<std::string, Part::Function> parts;
    return parts;
}

/// Plays the part before the first test, and ends the process.
class Stage : public testing::Environment
{
public:
    void SetUp() override
    {
        const char* const pSwitch = std::getenv(SWITCH);
        if (pSwitch == nullptr)
        {
            return;
        }
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        alarm(LONGEST_LIFE);
        std::istringstream words(pSwitch);
        std::string strPart;
        words >> strPart;
        Part_Arguments arguments;
        for (std::string strWord; words >> strWord;)
        {
            arguments.push_back(strWord);
        }
        std::_Exit(get_Parts().at(strPart)(arguments));
    }
};

[[maybe_unused]] testing::Environment* const stage = testing::AddGlobalTestEnvironment(new Stage);

int hear(int line, int milliseconds)
{
    pollfd poll_line = {line, POLLIN, 0};
    char word = 0;
    return poll(&poll_line, 1, milliseconds) == 1 && read(line, &word, 1) == 1 ? word : Test_Process::NONE;
}

} // namespace

Part::Part(const char* name, Function function) { get_Parts()[name] = function; }

Test_Process::Test_Process(const char* part, const Part_Arguments& arguments)
{
    std::string strSwitch = std::string(SWITCH) + "=" + part;
    for (const std::string& strArgument : arguments)
    {
        strSwitch += " " + strArgument;
    }
    std::vector<char*> variables;
    for (char** ppVariable = environ; *ppVariable != nullptr; ++ppVariable)
    {
        variables.push_back(*ppVariable);
    }
    variables.push_back(strSwitch.data());
    variables.push_back(nullptr);

    int lines[2];
    EXPECT_EQ(0, socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, lines));
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, lines[1], PART_LINE);
    char program[] = "/proc/self/exe";
    char quiet[] = "--gtest_brief=1";
    char* const words[] = {program, quiet, nullptr};
    EXPECT_EQ(0, posix_spawn(&m_nId, program, &actions, nullptr, words, variables.data()));
    posix_spawn_file_actions_destroy(&actions);
    close(lines[1]);
    m_nLine = lines[0];
}

Test_Process::~Test_Process()
{
    Kill();
    close(m_nLine);
}

void Test_Process::Say(char word) const { EXPECT_EQ(1, send(m_nLine, &word, 1, MSG_NOSIGNAL)); }
int Test_Process::Hear(int milliseconds) const { return hear(m_nLine, milliseconds); }

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

void Say_To_Owner(char word) { EXPECT_EQ(1, write(PART_LINE, &word, 1)); }
int Hear_From_Owner() { return hear(PART_LINE, -1); }

bool Becomes_Asleep(pid_t process)
{
    const std::string strFile = "/proc/" + std::to_string(process) + "/stat";
    int nSeen = 0;
    for (int i = 0; i < 10000; ++i)
    {
        std::ifstream file(strFile);
        std::string strLine;
        std::getline(file, strLine);
        const std::size_t nEnd = strLine.rfind(')');
        const bool bAsleep = nEnd != std::string::npos && strLine.compare(nEnd + 2, 1, "S") == 0;
        nSeen = bAsleep ? nSeen + 1 : 0;
        if (nSeen == 3)
        {
            return true;
        }
        std::this_thread::sleep_for(std::chrono::microseconds(300));
    }
    return false;
}

} // namespace test_support
