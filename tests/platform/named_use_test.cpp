#include "named_test_objects.h"

#include "platform/kernel/named_use.h"

#include <atomic>
#include <thread>

using namespace test_support;
using namespace qn_platform::kernel;

namespace
{

class Named_Uses : public testing::TestWithParam<bool>
{
protected:
    void SetUp() override
    {
        const Handle first = Event(Own_Name("first"));
        ASSERT_TRUE(g_bMarks_Will_Do) << "the kernel has no barrier for a process's threads";
        g_bMarks_Will_Do = GetParam();
    }
    void TearDown() override { g_bMarks_Will_Do = true; }
};

} // namespace

TEST_P(Named_Uses, An_Object_Can_Be_Closed_At_Any_Moment_Of_Its_Use)
{
    const std::string strName = Own_Name("closed");
    std::atomic<HANDLE> hShared{nullptr};
    std::atomic<bool> bGo_On{true};
    std::atomic<unsigned int> nUses{0};
    const auto use = [&]
    {
        while (bGo_On)
        {
            const HANDLE handle = hShared;
            const bool bSet = SetEvent(handle);
            EXPECT_TRUE(bSet || GetLastError() == ERROR_INVALID_HANDLE) << GetLastError();
            const DWORD dwTaken = WaitForSingleObject(handle, 0);
            EXPECT_TRUE(dwTaken != WAIT_FAILED || GetLastError() == ERROR_INVALID_HANDLE) << GetLastError();
            nUses += bSet && dwTaken == WAIT_OBJECT_0 ? 1 : 0;
        }
    };
    std::thread first(use), second(use);
    for (int i = 0; i < 2000 || nUses < 100; ++i)
    {
        Handle event = Event(strName);
        ASSERT_NE(nullptr, event) << GetLastError();
        hShared = event;
        if (i % 64 == 0)
        {
            std::this_thread::yield();
        }
    }
    bGo_On = false;
    first.join();
    second.join();
    EXPECT_TRUE(Find_Files(strName).empty());
}

TEST_P(Named_Uses, A_Handlers_Use_Within_Another_Keeps_Both)
{
    const std::string strName = Own_Name("within");
    const Handle outer = Event(strName + "o"), inner = Event(strName + "i");
    Thread_Record& self = *Current_Thread();
    {
        const Named_Use use(Look_Up(outer), self);
        const Object* const pMark = self.in_use;
        EXPECT_EQ(GetParam(), pMark != nullptr);
        EXPECT_TRUE(SetEvent(inner));
        EXPECT_EQ(WAIT_OBJECT_0, WaitForSingleObject(inner, 0));
        EXPECT_EQ(pMark, self.in_use);
    }
    EXPECT_EQ(nullptr, self.in_use);
}

INSTANTIATE_TEST_SUITE_P(Kernel, Named_Uses, testing::Bool(),
                         [](const auto& marks) { return marks.param ? "with_marks" : "with_references"; });
