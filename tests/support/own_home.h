#ifndef QNLIB_TEST_OWN_HOME_H
#define QNLIB_TEST_OWN_HOME_H

// A registry and folders of the test program's own: no test touches those of the user or of the machine. On
// Windows the prefix of Wine has its own already.

#if defined(__linux__)

#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <filesystem>

#include <unistd.h>

namespace test_support
{

/// Names a folder, which the first write makes, in memory, so that no test waits for the disk. Other
/// processes that a test starts use that of their owner.
class Own_Home
{
public:
    Own_Home()
    {
        if (std::getenv("QN_TEST_HOME") != nullptr)
            return;
        std::timespec now{};
        std::timespec_get(&now, TIME_UTC);
        std::snprintf(m_Folder, sizeof m_Folder, "/dev/shm/test-of-registry-%d-%lx", getpid(), now.tv_nsec);
        char machine[sizeof m_Folder + 8];
        std::snprintf(machine, sizeof machine, "%s/machine", m_Folder);
        char state[sizeof m_Folder + 8];
        std::snprintf(state, sizeof state, "%s/state", m_Folder);
        setenv("QN_TEST_HOME", m_Folder, 1);
        setenv("XDG_DATA_HOME", m_Folder, 1);
        setenv("XDG_STATE_HOME", state, 1);
        setenv("QNLIB_MACHINE_STORE", machine, 1);
    }
    Own_Home(const Own_Home&) = delete;
    Own_Home& operator=(const Own_Home&) = delete;
    ~Own_Home()
    {
        std::error_code ignored;
        if (m_Folder[0] != 0)
            std::filesystem::remove_all(m_Folder, ignored);
    }

private:
    char m_Folder[80] = "";
};

} // namespace test_support

#else

namespace test_support
{

struct Own_Home
{
};

} // namespace test_support

#endif

#endif
