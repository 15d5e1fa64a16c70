#include "failing_allocator.h"
#include "lib_foundation.h"

using namespace test_support;

namespace
{

/// Runs a change of a buffer that holds "abc" with no memory for it, and expects that nothing has changed,
/// and then with memory, and expects that the new block has taken the place of the old one.
template <class Change>
void Expect_Unchanged(const char* pName, Change change)
{
    SCOPED_TRACE(pName);
    Lib_Buffer buffer;
    buffer.Attach_Copy("abc", 3);
    void* pBlock = buffer.Get_Ptr();
    const long long nBefore = Outstanding_Bytes();
    EXPECT_TRUE(Call_Failing(1, [&] { change(buffer); }).m_bFailed);
    EXPECT_EQ(nBefore, Outstanding_Bytes());
    EXPECT_EQ(pBlock, buffer.Get_Ptr());
    EXPECT_TRUE(buffer.Is_Equals("abc", 3));

    change(buffer);
    EXPECT_NE(pBlock, buffer.Get_Ptr());
    EXPECT_EQ(nBefore - 3 + static_cast<long long>(buffer.Get_Size()), Outstanding_Bytes());
}

} // namespace

TEST(Buffer_Allocation, Leaves_A_Buffer_As_It_Was_When_Memory_Is_Out)
{
    const Lib_Buffer other(7);
    Expect_Unchanged("grow", [](Lib_Buffer& buffer) { buffer.Set_Size(100); });
    Expect_Unchanged("append itself", [](Lib_Buffer& buffer) { buffer.Append(buffer); });
    Expect_Unchanged("attach a copy", [](Lib_Buffer& buffer) { buffer.Attach_Copy("12345", 5); });
    Expect_Unchanged("assign", [&](Lib_Buffer& buffer) { buffer = other; });
    Expect_Unchanged("reverse", [](Lib_Buffer& buffer) { buffer.Make_Reverse(); });
}

TEST(Buffer_Allocation, Makes_An_Empty_Buffer_When_Memory_Is_Out)
{
    const Lib_Buffer source(5);
    const std::vector<unsigned char> bytes(5);
    const auto Expect_Empty = [](auto make)
    {
        const Failing_Allocation failure(1);
        const Lib_Buffer buffer = make();
        EXPECT_EQ(0U, buffer.Get_Size());
        EXPECT_EQ(nullptr, buffer.Get_Ptr());
        EXPECT_TRUE(failure.Has_Failed());
    };
    Expect_Empty([] { return Lib_Buffer(5); });
    Expect_Empty([&] { return Lib_Buffer(5, source.Get_Ptr(), true); });
    Expect_Empty([&] { return Lib_Buffer(source); });
    Expect_Empty([&] { return Lib_Buffer(bytes); });
    Expect_Empty([&] { return LibT_Buffer<void*>(5); });
}

TEST(Buffer_Allocation, Serves_A_Spare_Element_When_Memory_Is_Out)
{
    LibT_Buffer<int> buffer;
    for (int nRound = 0; nRound < 2; ++nRound)
    {
        const Failing_Allocation failure(1);
        int& nSpare = buffer[0];
        EXPECT_EQ(0, nSpare) << "zero again for every failure";
        nSpare = 5;
        EXPECT_EQ(0U, buffer.Get_Num_Elements());
    }
    Call_Failing(1, [&] { buffer.Add(3); });
    EXPECT_EQ(0U, buffer.Get_Num_Elements());
}

TEST(Buffer_Allocation, Throws_From_The_Containers_Allocator_Alone)
{
    EXPECT_TRUE(Call_Failing(1, [] { Lib_Container::Alloc_Buffer(16); }).m_bThrown);
    EXPECT_FALSE(Call_Failing(1, [] { EXPECT_EQ(nullptr, Lib_Alloc(false, 16)); }).m_bThrown);
}
