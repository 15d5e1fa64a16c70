#include "named_test_objects.h"

#include <cerrno>
#include <filesystem>

#include <unistd.h>

namespace test_support
{

std::string Own_Name(const std::string& tail) { return "qntest-" + std::to_string(getpid()) + "-" + tail; }

std::vector<std::string> Find_Files(const std::string& part_of_name)
{
    std::vector<std::string> files;
    for (const auto& entry : std::filesystem::directory_iterator("/dev/shm"))
    {
        if (entry.path().native().find(part_of_name) != std::string::npos)
        {
            files.push_back(entry.path().native());
        }
    }
    return files;
}

void Do_Without_Futex_Waitv()
{
    named_calls.futex_waitv = [](futex_waitv*, unsigned int, const timespec*)
    {
        errno = ENOSYS;
        return -1L;
    };
}

} // namespace test_support
