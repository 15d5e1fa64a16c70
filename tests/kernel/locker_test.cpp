#include "probes.h"

#include <mutex>

namespace
{

template <class Locker>
class Any_Locker : public testing::Test
{
};

using Lockers = testing::Types<Lib_Locker, Lib_Locker_With_Counter>;
TYPED_TEST_SUITE(Any_Locker, Lockers);

template <class Locker>
bool locks_Elsewhere(Locker& locker)
{
    return On_Other_Thread([&] { return locker.Lock(0) && locker.Unlock(); });
}

TYPED_TEST(Any_Locker, A_Copy_Is_The_Same_Lock)
{
    TypeParam locker;
    {
        TypeParam copy(locker);
        EXPECT_TRUE(copy.Lock(0));
        EXPECT_TRUE(locker.Lock(0)) << "recursively, through either";
        EXPECT_TRUE(copy.Unlock());
        EXPECT_FALSE(locks_Elsewhere(copy));
    }
    EXPECT_FALSE(locks_Elsewhere(locker)) << "a locker that goes unlocks nothing";
    EXPECT_TRUE(locker.Unlock());
    EXPECT_FALSE(locker.Unlock());
    EXPECT_TRUE(On_Other_Thread([&] { return locker.Lock(0); }));
    EXPECT_FALSE(locker.Lock(0)) << "abandoned: no success, though it is ours";
    EXPECT_TRUE(locker.Unlock());
}

TYPED_TEST(Any_Locker, Assignment_Leaves_The_Old_Lock_For_The_Sources)
{
    TypeParam first;
    TypeParam second;
    TypeParam third(second);
    EXPECT_TRUE(first.Lock(0));
    EXPECT_TRUE(locks_Elsewhere(second)) << "each has a mutex of its own";
    const TypeParam& self = second;
    second = self;
    second = first;
    EXPECT_FALSE(locks_Elsewhere(second));
    EXPECT_TRUE(locks_Elsewhere(third));
    EXPECT_TRUE(second.Unlock());
}

TEST(Locker, Serves_The_Standard_Guards)
{
    Lib_Locker locker;
    {
        const std::lock_guard guard(locker);
        EXPECT_FALSE(locks_Elsewhere(locker));
    }
    EXPECT_TRUE(locks_Elsewhere(locker));
}

TEST(Locker_With_Counter, Counts_Those_Who_Have_The_Lock)
{
    Lib_Locker_With_Counter locker;
    EXPECT_TRUE(locker.Lock_And_Increase(INFINITE));
    EXPECT_TRUE(locker.Lock_And_Increase(0));
    EXPECT_TRUE(locker.Lock(0));
    EXPECT_EQ(2ul, locker.Get_Counter());
    EXPECT_TRUE(locker.Unlock());
    EXPECT_TRUE(locker.Decrease_And_Unlock());
    EXPECT_FALSE(On_Other_Thread([&] { return locker.Lock_And_Increase(0); }));
    EXPECT_EQ(1ul, locker.Get_Counter()) << "without the lock nothing is counted";
    EXPECT_TRUE(locker.Decrease_And_Unlock());
    EXPECT_FALSE(locker.Unlock());

    EXPECT_TRUE(On_Other_Thread([&] { return locker.Lock(0); }));
    EXPECT_FALSE(locker.Lock_And_Increase(0)) << "abandoned";
    EXPECT_EQ(1ul, locker.Get_Counter()) << "but locked, and so counted";
    EXPECT_TRUE(locker.Decrease_And_Unlock());
}

TEST(Locker_With_Counter, Stays_Within_32_Bits_And_Copies_Its_Count_Once)
{
    Lib_Locker_With_Counter locker;
    EXPECT_TRUE(locker.Lock(0));
    EXPECT_TRUE(locker.Decrease_And_Unlock()) << "the release does not depend on the count";
    EXPECT_EQ(0ul, locker.Get_Counter());
    locker.Set_Counter(~0ul);
    EXPECT_TRUE(locker.Lock_And_Increase(0));
    EXPECT_EQ(0xFFFFFFFFul, locker.Get_Counter());
    Lib_Locker_With_Counter copy(locker);
    Lib_Locker_With_Counter assigned;
    assigned = copy;
    EXPECT_TRUE(copy.Decrease_And_Unlock());
    EXPECT_EQ(0xFFFFFFFEul, copy.Get_Counter());
    EXPECT_EQ(0xFFFFFFFFul, locker.Get_Counter());
    EXPECT_EQ(0xFFFFFFFFul, assigned.Get_Counter());
}

TEST(Locker_With_Counter, Keeps_Its_Count_Between_Threads)
{
    constexpr unsigned int nRounds = 2000;
    Lib_Locker_With_Counter locker;
    const auto use = [&]
    {
        for (unsigned int i = 0; i < nRounds; ++i)
        {
            EXPECT_TRUE(locker.Lock_And_Increase(INFINITE));
            EXPECT_TRUE(locker.Unlock());
            EXPECT_TRUE(locker.Lock(INFINITE));
            EXPECT_TRUE(locker.Decrease_And_Unlock());
        }
    };
    std::thread other(use);
    use();
    other.join();
    EXPECT_EQ(0ul, locker.Get_Counter());
}

} // namespace
