// Bytes are counted for the whole program, and a thread gives back the last of its own shortly after one
// could wait for its end: so no test begins before the threads of the former one are gone.

#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <iterator>
#include <thread>

namespace
{

std::ptrdiff_t Thread_Count()
{
    return std::distance(std::filesystem::directory_iterator("/proc/self/task"),
                         std::filesystem::directory_iterator());
}

class Threads_At_Rest : public testing::EmptyTestEventListener
{
public:
    void OnTestProgramStart(const testing::UnitTest&) override { m_nThreads = Thread_Count(); }

    void OnTestEnd(const testing::TestInfo&) override
    {
        constexpr int nPatience = 5000;
        for (int i = 0; i < nPatience && Thread_Count() > m_nThreads; ++i)
        {
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
        m_nThreads = Thread_Count(); // who stays is no test's: the thread sanitizer has one of its own
    }

private:
    std::ptrdiff_t m_nThreads = 1;
};

[[maybe_unused]] const bool s_bListens = []
{
    testing::UnitTest::GetInstance()->listeners().Append(new Threads_At_Rest);
    return true;
}();

} // namespace
