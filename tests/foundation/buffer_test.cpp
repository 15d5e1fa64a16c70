#include "byte_text.h"

#include <gtest/gtest.h>

#include <cstring>
#include <numeric>
#include <type_traits>

using namespace test_support;

namespace
{

void Expect_Empty(const Lib_Buffer& buffer)
{
    EXPECT_EQ(0U, buffer.Get_Size());
    EXPECT_EQ(nullptr, buffer.Get_Ptr());
}

} // namespace

static_assert(std::has_virtual_destructor_v<Lib_Buffer> && std::is_nothrow_copy_constructible_v<Lib_Buffer> &&
              std::is_nothrow_copy_assignable_v<Lib_Buffer>);
static_assert(sizeof(LibT_Buffer<wchar_t>) == sizeof(Lib_Buffer) && sizeof(Lib_Buffer) == 3 * sizeof(void*));

TEST(Buffer, Never_Owns_A_Pointer_Of_Size_0)
{
    int nForeign = 5;
    {
        Expect_Empty(Lib_Buffer(0, &nForeign, true));
        Lib_Buffer buffer(0, &nForeign, false);
        EXPECT_EQ(&nForeign, buffer.Get_Ptr());
        Expect_Empty(Lib_Buffer(buffer));
        buffer.Set_Size(0);
        EXPECT_EQ(&nForeign, buffer.Get_Ptr()) << "the present size changes nothing";
        buffer.Make_Reverse();

        Lib_Buffer grown(0, &nForeign, false);
        grown.Set_Size(2);
        EXPECT_EQ(Bytes({0, 0}), To_Bytes(grown));
        Lib_Buffer appended(0, &nForeign, false);
        appended.Append(nullptr, 0);
        Expect_Empty(appended);
    }
    EXPECT_EQ(5, nForeign);
}

TEST(Buffer, Copies_Deeply)
{
    Lib_Buffer first(Bytes{1, 2, 3});
    Lib_Buffer second(first);
    EXPECT_TRUE(first == second);
    static_cast<unsigned char*>(second.Get_Ptr())[0] = 9;
    EXPECT_EQ(Bytes({1, 2, 3}), To_Bytes(first));

    Lib_Buffer third(10);
    third = second;
    const Lib_Buffer& self = third;
    void* pBefore = third.Get_Ptr();
    third = self;
    EXPECT_EQ(pBefore, third.Get_Ptr());
    EXPECT_EQ(Bytes({9, 2, 3}), To_Bytes(third));
    third = Lib_Buffer();
    Expect_Empty(third);
}

TEST(Buffer, Orders_By_Size_And_Then_By_The_Greater_Bytes)
{
    // Each is less than those behind it.
    const Bytes order[] = {{}, {0xFF}, {0x80, 0}, {0, 2}, {0, 1}};
    for (int i = 0; i < 5; ++i)
        for (int j = 0; j < 5; ++j)
        {
            EXPECT_EQ(i < j, Lib_Buffer(order[i]) < Lib_Buffer(order[j])) << i << " and " << j;
            EXPECT_EQ(i == j, Lib_Buffer(order[i]) == Lib_Buffer(order[j])) << i << " and " << j;
            EXPECT_EQ(i != j, Lib_Buffer(order[i]) != Lib_Buffer(order[j])) << i << " and " << j;
        }
    EXPECT_FALSE(Lib_Buffer(2).Is_Equals(nullptr, 3)) << "not read when the sizes differ";
    EXPECT_TRUE(Lib_Buffer().Is_Equals(order, 0));
}

TEST(Buffer, Changes_Its_Size_And_Appends_Also_Its_Own_Content)
{
    Lib_Buffer buffer(Bytes{1, 2, 3});
    void* pBefore = buffer.Get_Ptr();
    buffer.Set_Size(3);
    EXPECT_EQ(pBefore, buffer.Get_Ptr());
    buffer.Set_Size(5);
    EXPECT_EQ(Bytes({1, 2, 3, 0, 0}), To_Bytes(buffer));
    buffer.Set_Size(2);
    buffer.Append(buffer);
    buffer.Append(Lib_Buffer());
    EXPECT_EQ(Bytes({1, 2, 1, 2}), To_Bytes(buffer));
    buffer.Append(static_cast<unsigned char*>(buffer.Get_Ptr()) + 1, 2);
    EXPECT_EQ(Bytes({1, 2, 1, 2, 2, 1}), To_Bytes(buffer));
    buffer.Set_Size(0);
    Expect_Empty(buffer);
}

TEST(Buffer, Takes_And_Hands_Out_Blocks)
{
    Lib_Buffer buffer(3);
    buffer.Attach_Copy("xyz", 3);
    void* pOut = nullptr;
    unsigned long long nOut = 0;
    buffer.Get(&pOut, &nOut);
    EXPECT_EQ(buffer.Get_Ptr(), pOut);
    buffer.Detach(&pOut, &nOut);
    Expect_Empty(buffer);
    ASSERT_EQ(3U, nOut);

    buffer.Attach(pOut, nOut);
    EXPECT_EQ(pOut, buffer.Get_Ptr());
    nOut = 77;
    buffer.Detach(nullptr, &nOut);
    Expect_Empty(buffer);
    EXPECT_EQ(77U, nOut);
    EXPECT_EQ(0, std::memcmp(pOut, "xyz", 3)) << "a block that is let go is not released";
    Lib_Free(pOut);

    buffer.Attach_Copy("xyz", 3);
    buffer.Attach_Copy("xyz", 0);
    Expect_Empty(buffer);
}

TEST(Buffer, Reverses_Its_Bytes)
{
    for (unsigned int nSize : {1U, 2U, 3U, 17U, 255U})
    {
        Bytes bytes(nSize);
        std::iota(bytes.begin(), bytes.end(), static_cast<unsigned char>(1));
        Lib_Buffer buffer(bytes);
        buffer.Make_Reverse();
        EXPECT_EQ(Bytes(bytes.rbegin(), bytes.rend()), To_Bytes(buffer));
    }
}

TEST(Buffer, Stays_As_It_Is_When_The_Size_Cannot_Be_Had)
{
    Lib_Buffer buffer(Bytes{1, 2, 3});
    void* pBefore = buffer.Get_Ptr();
    for (unsigned long long nSize : {~0ULL, ~0ULL - 1, 1ULL << 60})
    {
        buffer.Set_Size(nSize);
        buffer.Append("x", nSize);
        buffer.Attach_Copy("x", nSize);
        Expect_Empty(Lib_Buffer(nSize));
    }
    EXPECT_EQ(pBefore, buffer.Get_Ptr());
    EXPECT_EQ(Bytes({1, 2, 3}), To_Bytes(buffer));
}

TEST(Typed_Buffer, Grows_By_Reading_And_Adding_Whole_Elements)
{
    LibT_Buffer<void*> handles;
    EXPECT_EQ(nullptr, handles[2]);
    handles[1] = handles[3] = &handles;
    EXPECT_EQ(&handles, handles[1]);
    EXPECT_EQ(nullptr, handles[2]);
    EXPECT_EQ(4U, handles.Get_Num_Elements());

    LibT_Buffer<wchar_t> text(1);
    text[0] = L'a';
    text.Add(text[0]);
    text.Add_Elements(1);
    EXPECT_TRUE(text.Is_Equals(L"aa", 6));
    text.Append("xyz", 3);
    EXPECT_EQ(4U, text.Get_Num_Elements());
    text.Add(L'b');
    EXPECT_EQ(11U, text.Get_Size());
    EXPECT_EQ(L'b', text[4]);
}

TEST(Typed_Buffer, Refers_To_A_Spare_Element_When_It_Cannot_Grow)
{
    LibT_Buffer<void*> buffer(1);
    void* pBefore = buffer.Get_Ptr();
    for (unsigned long long nIndex : {~0ULL, ~0ULL - 1, ~0ULL / sizeof(void*), 1ULL << 58})
    {
        void*& pSpare = buffer[nIndex];
        EXPECT_EQ(nullptr, pSpare);
        pSpare = &buffer;
        buffer.Add_Elements(nIndex);
        EXPECT_EQ(0U, LibT_Buffer<void*>(nIndex).Get_Size());
    }
    EXPECT_EQ(0U, LibT_Buffer<void*>((1ULL << 61) + 1).Get_Size()) << "the product must not wrap";
    EXPECT_EQ(pBefore, buffer.Get_Ptr());
    EXPECT_EQ(1U, buffer.Get_Num_Elements());
}
