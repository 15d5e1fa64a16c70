#include "named_test_objects.h"
#include "test_process.h"

#include <thread>

#include <fcntl.h>
#include <grp.h>
#include <signal.h>
#include <sys/stat.h>

using namespace test_support;

// Named objects between users, and between a process and its fork.

namespace
{

class Named_Users : public testing::Test
{
protected:
    void SetUp() override
    {
        if (geteuid() != 0)
        {
            GTEST_SKIP() << "only root can be two users";
        }
    }

    /// A process of another user.
    template <class Function>
    static Test_Process::Part As_Stranger(Function part)
    {
        return [part](const Talk& owner)
        {
            constexpr unsigned int NOBODY = 65534;
            const bool bIs = setgroups(0, nullptr) == 0 && setgid(NOBODY) == 0 && setuid(NOBODY) == 0;
            return bIs ? static_cast<int>(part(owner)) : 99;
        };
    }

    /// The code that a stranger is told who opens the object.
    static DWORD Open_As_Stranger(const std::string& name)
    {
        const auto open = [&](const Talk&)
        {
            const Handle event = Open_Event(name);
            return event != nullptr && SetEvent(event) ? 0 : GetLastError();
        };
        return static_cast<DWORD>(Test_Process(As_Stranger(open)).Get_End());
    }

    static DWORD Create_As_Stranger(const std::string& name)
    {
        const auto create = [&](const Talk&)
        {
            const Handle event = Event(name);
            return GetLastError();
        };
        return static_cast<DWORD>(Test_Process(As_Stranger(create)).Get_End());
    }

    static Test_Process::Part Make(bool is_public, const std::string& name)
    {
        return [=](const Talk& owner)
        {
            const Handle made = is_public ? Public_Event(name) : Event(name);
            owner.Say(made != nullptr ? 'r' : 'f');
            return owner.Hear(-1);
        };
    }
};

} // namespace

TEST_F(Named_Users, A_Private_Object_Is_Denied_To_Others)
{
    const std::string strName = Own_Name("private");
    const Handle event = Event(strName);
    EXPECT_EQ(DWORD{ERROR_ACCESS_DENIED}, Open_As_Stranger(strName));
    EXPECT_EQ(DWORD{ERROR_ACCESS_DENIED}, Create_As_Stranger(strName));
    EXPECT_EQ(TIMED_OUT, WaitForSingleObject(event, 0));
}

TEST_F(Named_Users, A_Public_Object_Is_Open_Whatever_The_Umask)
{
    const std::string strName = Own_Name("public");
    const mode_t former = umask(077);
    const Handle event = Public_Event(strName);
    umask(former);
    EXPECT_EQ(0U, Open_As_Stranger(strName));
    EXPECT_EQ(WAIT_OBJECT_0, WaitForSingleObject(event, 0));
    EXPECT_EQ(DWORD{ERROR_ALREADY_EXISTS}, Create_As_Stranger(strName));
    EXPECT_EQ(1U, Find_Files(strName).size()) << "whoever closes it, it stays while it has a user";
}

TEST_F(Named_Users, Leftovers_Are_Used_Or_Removed_By_Whom_They_Are_Open_To)
{
    for (const bool bPublic : {true, false})
    {
        SCOPED_TRACE(bPublic);
        const std::string strName = Own_Name(bPublic ? "left-public" : "left-private");
        Test_Process other(As_Stranger(Make(bPublic, strName)));
        ASSERT_EQ('r', other.Hear());
        {
            const Leftover left(strName);
            other.Kill();
            EXPECT_TRUE(left.Is_There());
            EXPECT_EQ(nullptr, Open_Event(strName));
            EXPECT_FALSE(left.Is_There());
        }
        {
            const Handle event = Public_Event(strName);
            EXPECT_EQ(0U, GetLastError());
            EXPECT_EQ(0U, Open_As_Stranger(strName));
            EXPECT_EQ(WAIT_OBJECT_0, WaitForSingleObject(event, 0));
        }
        Test_Process own(Make(bPublic, strName));
        ASSERT_EQ('r', own.Hear());
        const Leftover left(strName);
        own.Kill();
        EXPECT_TRUE(left.Is_There());
        Test_Process again(As_Stranger(Make(true, strName)));
        EXPECT_EQ(bPublic ? 'r' : 'f', again.Hear());
        EXPECT_EQ(bPublic, Open_Event(strName) != nullptr);
    }
}

TEST_F(Named_Users, A_Stranger_Who_Truncates_Objects_Stops_Nobody)
{
    const std::string strName = Own_Name("hostile");
    const Handle event = Public_Event(strName + "e");
    const Handle mutex = Public_Mutex(strName + "m");
    const Handle other = Mutex(strName + "other");
    EXPECT_EQ(WAIT_OBJECT_0, WaitForSingleObject(mutex, 0));
    std::thread waiter(
        [&]
        {
            sigset_t all;
            sigfillset(&all);
            pthread_sigmask(SIG_BLOCK, &all, nullptr);
            EXPECT_EQ(TIMED_OUT, WaitForSingleObject(event, 300));
        });
    usleep(50000);
    for (const char* const pTail : {"e", "m"})
    {
        const std::string strFile = Find_Files(strName + pTail).at(0);
        EXPECT_EQ(
            0,
            Test_Process(As_Stranger([&](const Talk&) { return truncate(strFile.c_str(), 0); })).Get_End());
    }
    waiter.join();
    EXPECT_TRUE(SetEvent(event));
    EXPECT_EQ(WAIT_OBJECT_0, WaitForSingleObject(event, 0));
    EXPECT_EQ(WAIT_OBJECT_0, WaitForSingleObject(mutex, 0));
    EXPECT_TRUE(ReleaseMutex(mutex));
    EXPECT_TRUE(ReleaseMutex(mutex));
    const HANDLE all[] = {event, mutex, other};
    EXPECT_TRUE(SetEvent(event));
    EXPECT_EQ(WAIT_OBJECT_0, WaitForMultipleObjects(3, all, TRUE, 0));
    EXPECT_TRUE(ReleaseMutex(mutex));
    EXPECT_TRUE(ReleaseMutex(other));
}

TEST_F(Named_Users, A_Door_That_Is_Held_Is_Told_As_Busy)
{
    const std::string strName = Own_Name("door");
    const Handle held = Public_Event(strName);
    const int nFile = open(Find_Files(strName).at(0).c_str(), O_RDWR | O_CLOEXEC);
    struct flock lock = {};
    lock.l_type = F_WRLCK;
    lock.l_len = 1;
    ASSERT_EQ(0, fcntl(nFile, F_OFD_SETLK, &lock));
    EXPECT_EQ(DWORD{ERROR_BUSY}, Open_As_Stranger(strName)) << "after a second";
    close(nFile);
    EXPECT_EQ(0U, Open_As_Stranger(strName));
}

TEST(Named_Fork, A_Child_Neither_Has_Nor_Holds_Its_Parents_Objects)
{
    const std::string strName = Own_Name("fork");
    Handle mutex = Mutex(strName, true);
    Test_Process child(
        [&](const Talk& owner)
        {
            const bool bForeign =
                WaitForSingleObject(mutex, 0) == WAIT_FAILED && GetLastError() == ERROR_INVALID_HANDLE;
            Handle again = Mutex(strName);
            const bool bJoined =
                GetLastError() == ERROR_ALREADY_EXISTS && WaitForSingleObject(again, 0) == TIMED_OUT;
            again.Close();
            owner.Say(bForeign && bJoined ? 'r' : 'f');
            return owner.Hear(-1);
        });
    EXPECT_EQ('r', child.Hear());
    EXPECT_TRUE(ReleaseMutex(mutex));
    mutex.Close();
    EXPECT_TRUE(Find_Files(strName).empty()) << "the child lives";
}
