#include "sanitizers.h"
#include "watch.h"

#include <memory>

#include <sys/wait.h>
#include <unistd.h>

TEST(Monitor_Thread_Fork, A_Child_Drops_What_Its_Parent_Runs)
{
    if (!test_support::Forks_Beside_Threads)
        GTEST_SKIP() << test_support::NO_FORK;
    constexpr unsigned int PATIENCE = 60; // seconds
    Watch watch;
    Lib_Result result;
    auto pMonitor = std::make_unique<Monitor>();
    EXPECT_TRUE(pMonitor->Init_For(watch));
    EXPECT_TRUE(pMonitor->Start(result));
    const pid_t child = fork();
    if (child == 0)
    {
        alarm(PATIENCE);
        pMonitor.reset(); // there is no worker to wait for
        _exit(0);
    }
    int status = -1;
    EXPECT_EQ(child, waitpid(child, &status, 0));
    EXPECT_EQ(0, status);
    EXPECT_TRUE(pMonitor->Is_Active());
    EXPECT_TRUE(pMonitor->Stop(result));
}
