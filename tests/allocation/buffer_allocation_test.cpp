#include "failing_allocator.h"
#include "lib_foundation.h"

#include <gtest/gtest.h>

#include <cstring>
#include <new>

using test_support::Failing_Allocation;
using test_support::Outstanding_Bytes;

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
    {
        const Failing_Allocation failure(1);
        change(buffer);
        EXPECT_TRUE(failure.Has_Failed());
    }
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
    Expect_Unchanged("shrink", [](Lib_Buffer& buffer) { buffer.Set_Size(1); });
    Expect_Unchanged("append", [&](Lib_Buffer& buffer) { buffer.Append(other); });
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
    {
        const Failing_Allocation failure(1);
        buffer.Add(3);
        EXPECT_EQ(0U, buffer.Get_Num_Elements());
    }
    buffer.Add(3);
    EXPECT_EQ(3, buffer[0]);
}

TEST(Buffer_Allocation, Comes_From_The_Programs_Allocator)
{
    const long long nBefore = Outstanding_Bytes();
    const unsigned long long nCount = test_support::Allocation_Count();
    void* pBlock = Lib_Alloc(true, 10);
    EXPECT_EQ(nBefore + 10, Outstanding_Bytes());
    EXPECT_EQ(nCount + 1, test_support::Allocation_Count());
    Lib_Free(pBlock);
    EXPECT_EQ(nBefore, Outstanding_Bytes());

    const Failing_Allocation failure(1);
    EXPECT_EQ(nullptr, Lib_Alloc(false, 1));
}

TEST(Buffer_Allocation, Throws_From_The_Containers_Allocator_Alone)
{
    const auto Fill = [](unsigned int nNth)
    {
        const Failing_Allocation failure(nNth);
        return Lib_Container::Alloc_Buffer(16);
    };
    EXPECT_THROW(Fill(1), std::bad_alloc);
    EXPECT_THROW(Lib_Container::Alloc_Buffer(1ULL << 60), std::bad_alloc);
    Lib_Container::Free_Buffer(Fill(2));
}
