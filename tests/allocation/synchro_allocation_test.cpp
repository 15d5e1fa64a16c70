#include "failing_allocator.h"
#include "lib_kernel.h"
#include "test_text.h"

#include <memory>

using namespace test_support;

namespace
{

// Longer than what a string could hold without an allocation, if it ever learned that.
constexpr const wchar_t* NEW_NAME = L"qnLib allocation test: the name that an object is given";

/// An event under a name of its own, and whether anyone still has it open.
class Synchro_Allocation : public testing::Test
{
protected:
    void SetUp() override { ASSERT_TRUE(m_Event.Create_Public_With_Unique_Name(false, true, false)); }

    bool exists(const wchar_t* pName) const
    {
        Lib_Event other;
        return other.Open(pName, SYNCHRONIZE, false);
    }

    /// Calls with each allocation failing in turn. If std::bad_alloc leaves, the event has to be as it was;
    /// if the platform came to grief instead, which answers false, it is closed under the new name.
    template <class Call>
    void expect_Untouched(const Call& call)
    {
        call(*std::make_unique<Lib_Event>()); // what the platform keeps for later is made
        const auto road = [&](unsigned int nNth)
        {
            Lib_Event event(m_Event);
            void* const hEvent = event;
            const Outcome outcome = Call_Failing(nNth, [&] { call(event); });
            if (outcome.m_bThrown)
            {
                EXPECT_TEXT_EQ(m_Event.Get_Name(), event.Get_Name());
                EXPECT_EQ(hEvent, event.operator void*());
                EXPECT_TRUE(event.Set());
            }
            EXPECT_TRUE(outcome.m_bThrown || !outcome.m_bFailed || event.operator void*() == nullptr);
            return outcome.m_bFailed;
        };
        EXPECT_LT(0u, Fail_Each_Allocation_Without_Loss(road));
    }

    Lib_Event m_Event;
};

TEST_F(Synchro_Allocation, A_Name_That_Cannot_Be_Taken_Changes_Nothing)
{
    expect_Untouched([](Lib_Event& event) { event.Set_Name(NEW_NAME); });
    expect_Untouched([](Lib_Event& event) { event.Set_Unique_Name(true); });
    expect_Untouched([](Lib_Event& event) { event.Create(nullptr, true, false, NEW_NAME); });
    expect_Untouched([](Lib_Event& event) { event.Open(NEW_NAME, SYNCHRONIZE, false); });
    EXPECT_FALSE(exists(NEW_NAME));
}

TEST_F(Synchro_Allocation, No_Handle_Is_Lost)
{
    const Lib_String strName = m_Event.Get_Name();
    const auto duplicate = [&](unsigned int nNth)
    {
        EXPECT_TRUE(m_Event.Create(nullptr, true, false, strName));
        const Outcome outcome = Call_Failing(nNth, [&] { EXPECT_TRUE(Lib_Event(m_Event, NEW_NAME).Set()); });
        m_Event.Close();
        EXPECT_FALSE(exists(strName)) << "the duplicate stayed open";
        return outcome.m_bThrown;
    };
    EXPECT_EQ(1u, Fail_Each_Allocation(duplicate));
}

TEST_F(Synchro_Allocation, A_Unique_Name_That_Cannot_Be_Made_Leaves_An_Empty_Object)
{
    const auto make = [](Lib_Mutex& mutex)
    {
        mutex.Create_Public_With_Unique_Name(true, false);
        const Lib_Locker locker;
        const Lib_Locker_With_Counter counter;
    };
    make(*std::make_unique<Lib_Mutex>());
    const auto road = [&](unsigned int nNth)
    {
        Lib_Mutex mutex;
        EXPECT_TRUE(mutex.Create(nullptr, false, NEW_NAME));
        const Outcome outcome = Call_Failing(nNth, [&] { make(mutex); });
        EXPECT_FALSE(outcome.m_bThrown && exists(NEW_NAME));
        return outcome.m_bFailed;
    };
    EXPECT_LT(5u, Fail_Each_Allocation_Without_Loss(road)) << "a few for each of the three names";
}

TEST_F(Synchro_Allocation, A_Wait_For_Several_Answers_That_Memory_Is_Short)
{
    LibT_Array<Lib_Synchro*, 4> objects;
    objects.Add(&m_Event);
    EXPECT_TRUE(m_Event.Set());
    unsigned long dwWait = 0;
    EXPECT_TRUE(Call_Failing(1, [&] { dwWait = Lib_Synchro::Wait_Multiple(&objects, true, 0); }).m_bFailed);
    EXPECT_EQ(DWORD{ERROR_NOT_ENOUGH_MEMORY}, GetLastError());
    EXPECT_EQ(0xFFFFFFFFul, dwWait);
}

} // namespace
