#include "lib_foundation.h"

#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <numeric>
#include <type_traits>
#include <vector>

namespace
{

using Bytes = std::vector<unsigned char>;

Bytes Content(const Lib_Buffer& buffer)
{
    const auto* pData = static_cast<const unsigned char*>(buffer.Get_Ptr());
    return Bytes(pData, pData + buffer.Get_Size());
}

void* Allocated(const Bytes& bytes)
{
    void* pBlock = Lib_Alloc(false, bytes.size());
    std::memcpy(pBlock, bytes.data(), bytes.size());
    return pBlock;
}

void Expect_Empty(const Lib_Buffer& buffer)
{
    EXPECT_EQ(0U, buffer.Get_Size());
    EXPECT_EQ(nullptr, buffer.Get_Ptr());
}

class Derived_Buffer : public Lib_Buffer
{
public:
    using Lib_Buffer::alloc;
    using Lib_Buffer::free;
    using Lib_Buffer::init;
    using Lib_Buffer::Lib_Buffer;
};

} // namespace

static_assert(std::is_nothrow_copy_constructible_v<Lib_Buffer> &&
              std::is_nothrow_copy_assignable_v<Lib_Buffer>);
static_assert(sizeof(LibT_Buffer<wchar_t>) == sizeof(Lib_Buffer) && sizeof(Lib_Buffer) == 3 * sizeof(void*));

TEST(Buffer, Is_Made_From_A_Size_A_Block_Or_A_Vector)
{
    Expect_Empty(Lib_Buffer());
    Expect_Empty(Lib_Buffer(0));
    Expect_Empty(Lib_Buffer(Bytes()));
    EXPECT_EQ(Bytes({0, 0, 0, 0}), Content(Lib_Buffer(4)));
    EXPECT_EQ(Bytes({1, 0, 255}), Content(Bytes{1, 0, 255}));

    Bytes source{1, 2, 3};
    Lib_Buffer copy(3, source.data(), true);
    EXPECT_EQ(source, Content(copy));
    EXPECT_NE(source.data(), copy.Get_Ptr());

    void* pBlock = Allocated(source);
    EXPECT_EQ(pBlock, Lib_Buffer(3, pBlock, false).Get_Ptr());
}

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
        EXPECT_EQ(Bytes({0, 0}), Content(grown));
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
    second.Append("d", 1);
    EXPECT_EQ(Bytes({1, 2, 3}), Content(first));

    Lib_Buffer third(10);
    EXPECT_EQ(&third, &(third = second));
    EXPECT_EQ(Bytes({9, 2, 3, 'd'}), Content(third));
    const Lib_Buffer& self = third;
    void* pBefore = third.Get_Ptr();
    third = self;
    EXPECT_EQ(pBefore, third.Get_Ptr());
    third = Lib_Buffer();
    Expect_Empty(third);
}

TEST(Buffer, Orders_By_Size_And_Then_By_The_Greater_Bytes)
{
    const Lib_Buffer longer(Bytes{0, 2}), shorter(Bytes{0xFF}), smaller_bytes(Bytes{0, 1}),
        high(Bytes{0x80, 0});
    EXPECT_TRUE(shorter < longer);
    EXPECT_FALSE(longer < shorter);
    EXPECT_TRUE(longer < smaller_bytes);
    EXPECT_FALSE(smaller_bytes < longer);
    EXPECT_FALSE(longer < longer);
    EXPECT_TRUE(high < longer) << "bytes are unsigned";
    EXPECT_FALSE(Lib_Buffer() < Lib_Buffer());
    EXPECT_TRUE(Lib_Buffer() < shorter);
}

TEST(Buffer, Compares_Bytes_Of_Equal_Size_Only)
{
    const Lib_Buffer buffer(Bytes{1, 2});
    unsigned char aBytes[] = {1, 2, 3};
    EXPECT_TRUE(buffer.Is_Equals(aBytes, 2));
    EXPECT_FALSE(buffer.Is_Equals(aBytes + 1, 2));
    EXPECT_FALSE(buffer.Is_Equals(nullptr, 3)) << "not read when the sizes differ";
    EXPECT_TRUE(Lib_Buffer().Is_Equals(aBytes, 0));
    EXPECT_TRUE(Lib_Buffer() == Lib_Buffer(0, aBytes, false));
    EXPECT_TRUE(buffer != Lib_Buffer(Bytes{1, 3}));
}

TEST(Buffer, Changes_Its_Size)
{
    Lib_Buffer buffer(Bytes{1, 2, 3});
    void* pBefore = buffer.Get_Ptr();
    buffer.Set_Size(3);
    EXPECT_EQ(pBefore, buffer.Get_Ptr());
    buffer.Set_Size(5);
    EXPECT_NE(pBefore, buffer.Get_Ptr());
    EXPECT_EQ(Bytes({1, 2, 3, 0, 0}), Content(buffer));
    buffer.Set_Size(2);
    EXPECT_EQ(Bytes({1, 2}), Content(buffer));
    buffer.Set_Size(0);
    Expect_Empty(buffer);
    buffer.Set_Size(1);
    EXPECT_EQ(Bytes({0}), Content(buffer));
}

TEST(Buffer, Appends_Also_Its_Own_Content)
{
    Lib_Buffer buffer;
    buffer.Append(nullptr, 0);
    Expect_Empty(buffer);
    buffer.Append(Lib_Buffer());
    Expect_Empty(buffer);
    buffer.Append(Lib_Buffer(Bytes{1, 2}));
    EXPECT_EQ(Bytes({1, 2}), Content(buffer));
    buffer.Append(buffer);
    EXPECT_EQ(Bytes({1, 2, 1, 2}), Content(buffer));
    buffer.Append(static_cast<unsigned char*>(buffer.Get_Ptr()) + 1, 2);
    EXPECT_EQ(Bytes({1, 2, 1, 2, 2, 1}), Content(buffer));
    buffer.Append(nullptr, 0);
    EXPECT_EQ(Bytes({1, 2, 1, 2, 2, 1}), Content(buffer));
}

TEST(Buffer, Takes_And_Hands_Out_Blocks)
{
    Lib_Buffer buffer(3);
    void* pBlock = Allocated({4, 5});
    buffer.Attach(pBlock, 2);
    EXPECT_EQ(pBlock, buffer.Get_Ptr());
    buffer.Attach_Copy("xyz", 3);
    EXPECT_EQ(Bytes({'x', 'y', 'z'}), Content(buffer));

    void* pOut = nullptr;
    unsigned long long nOut = 0;
    buffer.Get(&pOut, &nOut);
    EXPECT_EQ(buffer.Get_Ptr(), pOut);
    EXPECT_EQ(3U, nOut);
    pOut = nullptr;
    buffer.Detach(&pOut, &nOut);
    Expect_Empty(buffer);
    ASSERT_EQ(3U, nOut);
    EXPECT_EQ(0, std::memcmp(pOut, "xyz", 3));

    buffer.Attach(pOut, nOut);
    nOut = 77;
    buffer.Detach(nullptr, &nOut);
    Expect_Empty(buffer);
    EXPECT_EQ(77U, nOut);
    EXPECT_EQ(0, std::memcmp(pOut, "xyz", 3)) << "a block that is let go is not released";
    Lib_Free(pOut);

    buffer.Attach_Copy("xyz", 3);
    buffer.Attach_Copy("xyz", 0);
    Expect_Empty(buffer);
    buffer.Attach_Copy("xyz", 3);
    buffer.Flush();
    Expect_Empty(buffer);
}

TEST(Buffer, Reverses_Its_Bytes)
{
    for (unsigned int nSize : {0U, 1U, 2U, 3U, 8U, 17U, 64U, 255U})
    {
        Bytes bytes(nSize);
        std::iota(bytes.begin(), bytes.end(), static_cast<unsigned char>(1));
        Lib_Buffer buffer(bytes);
        buffer.Make_Reverse();
        EXPECT_EQ(Bytes(bytes.rbegin(), bytes.rend()), Content(buffer));
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
    EXPECT_EQ(Bytes({1, 2, 3}), Content(buffer));
}

TEST(Buffer, Gives_Derived_Classes_Its_Building_Blocks)
{
    std::unique_ptr<Lib_Buffer> pBase = std::make_unique<Derived_Buffer>(4ULL);
    pBase.reset();

    Derived_Buffer buffer(2ULL);
    void* pBlock = buffer.Get_Ptr();
    buffer.init();
    Expect_Empty(buffer);
    buffer.free(pBlock);
    pBlock = buffer.alloc(3);
    EXPECT_EQ(0, std::memcmp(pBlock, "\0\0\0", 3));
    buffer.free(pBlock);
    EXPECT_EQ(nullptr, buffer.alloc(0));
}

TEST(Typed_Buffer, Grows_By_Reading_And_Adding)
{
    LibT_Buffer<void*> handles;
    EXPECT_EQ(nullptr, handles[2]);
    EXPECT_EQ(3U, handles.Get_Num_Elements());
    handles[1] = &handles;
    handles[3] = &handles;
    EXPECT_EQ(&handles, handles[1]);
    EXPECT_EQ(nullptr, handles[2]);
    EXPECT_EQ(4U, handles.Get_Num_Elements());

    LibT_Buffer<wchar_t> text;
    text.Add(L'a');
    EXPECT_EQ(1U, text.Get_Num_Elements());
    text.Add(text[0]);
    text.Add_Elements(2);
    text.Add_Elements(0);
    const LibT_Buffer<wchar_t> copy(text);
    ASSERT_EQ(8U, copy.Get_Size());
    EXPECT_EQ(0, std::memcmp(copy.Get_Ptr(), L"aa\0", 8));
    LibT_Buffer<wchar_t> other(2);
    EXPECT_EQ(0, other[1]);
    other = text;
    EXPECT_TRUE(other == copy);
}

TEST(Typed_Buffer, Counts_Whole_Elements)
{
    LibT_Buffer<wchar_t> text(1);
    text.Append("xyz", 3);
    EXPECT_EQ(5U, text.Get_Size());
    EXPECT_EQ(2U, text.Get_Num_Elements());
    text.Add(L'b');
    EXPECT_EQ(7U, text.Get_Size());
    EXPECT_EQ(L'b', text[2]);
}

TEST(Typed_Buffer, Refers_To_A_Spare_Element_When_It_Cannot_Grow)
{
    LibT_Buffer<void*> buffer(1);
    buffer[0] = &buffer;
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
