#include "lib_kernel.h"
#include "platform/kernel/named_calls.h"
#include "test_text.h"

#include <cerrno>

using namespace test_support;
using qn_platform::kernel::named_calls;

// What the library's objects are left as when the system fails beneath them.

namespace
{

class Synchro_Failures : public testing::Test
{
protected:
    Synchro_Failures() { m_Event.Set_Unique_Name(false); }
    void SetUp() override { ASSERT_TRUE(m_Event.Create(nullptr, true, false)); }
    ~Synchro_Failures() override { named_calls = m_Saved; }

    /// The event is left without a handle and with its name, and the handle from before is closed.
    void expect_Failure(bool bDone, DWORD dwError, const Lib_String& strName)
    {
        EXPECT_EQ(dwError, GetLastError());
        EXPECT_FALSE(bDone);
        EXPECT_EQ(nullptr, m_Event.operator void*());
        EXPECT_FALSE(m_Event.Set());
        EXPECT_TEXT_EQ(strName, m_Event.Get_Name());
        named_calls = m_Saved;
        EXPECT_FALSE(Lib_Event().Open(strName, SYNCHRONIZE, false));
    }

    Lib_Event m_Event;
    const qn_platform::kernel::Named_Calls m_Saved = named_calls;
};

TEST_F(Synchro_Failures, No_Descriptor_For_Creation)
{
    named_calls.open_file = [](const char*, int, mode_t)
    {
        errno = EMFILE;
        return -1;
    };
    const Lib_String strName = m_Event.Get_Name();
    expect_Failure(m_Event.Create(nullptr, true, false), ERROR_TOO_MANY_OPEN_FILES, strName);
    EXPECT_TRUE(m_Event.Create(nullptr, true, false)) << "the name serves once descriptors are there again";
}

TEST_F(Synchro_Failures, No_Memory_For_Opening)
{
    Lib_Event keeper;
    const Lib_String strName = keeper.Set_Unique_Name(false);
    ASSERT_TRUE(keeper.Create(nullptr, true, true));
    named_calls.map = [](void*, std::size_t, int, int, int, off_t)
    {
        errno = ENOMEM;
        return reinterpret_cast<void*>(~0UL);
    };
    EXPECT_TRUE(keeper.Wait_Until_Object_0(0)) << "what is open goes on";
    // In this process the object is mapped already, so opening it needs no memory; a new one does.
    EXPECT_TRUE(Lib_Event().Open(strName, SYNCHRONIZE, false));
    Lib_Mutex mutex;
    EXPECT_FALSE(mutex.Create_Public_With_Unique_Name(true, true));
    EXPECT_EQ(DWORD{ERROR_NOT_ENOUGH_MEMORY}, GetLastError());
    EXPECT_EQ(45u, mutex.Get_Name().Get_Length());
    EXPECT_FALSE(mutex.Release());
}

TEST_F(Synchro_Failures, A_Locker_Without_A_Mutex_Never_Locks)
{
    named_calls.open_file = [](const char*, int, mode_t)
    {
        errno = ENOSPC;
        return -1;
    };
    Lib_Locker_With_Counter locker;
    Lib_Locker plain;
    EXPECT_FALSE(locker.Lock(INFINITE));
    EXPECT_FALSE(locker.Lock_And_Increase(INFINITE));
    EXPECT_EQ(0ul, locker.Get_Counter());
    EXPECT_FALSE(locker.Unlock());
    plain.lock();
    EXPECT_FALSE(plain.Lock(INFINITE));
    EXPECT_FALSE(plain.Unlock());
}

} // namespace
