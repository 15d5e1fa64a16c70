#include "lib_platform.h"
#include "other_thread.h"
#include "protected_probe.h"

#include <gtest/gtest.h>

#include <numeric>
#include <random>
#include <type_traits>

using namespace test_support;

namespace
{

std::string Read(const Lib_Protected_Buffer& buffer) { return To_Text(buffer); }

/// A plain image whose length word says what it likes.
Lib_Buffer Plain_Image(unsigned long long nLength, const std::string& rest)
{
    Lib_Buffer image;
    image.Attach_Copy(&nLength, sizeof(nLength));
    image.Append(rest.data(), rest.size());
    return image;
}

} // namespace

static_assert(std::has_virtual_destructor_v<Lib_Protected_Buffer> &&
              sizeof(Lib_Protected_Buffer) == sizeof(void*) + sizeof(Lib_Buffer));
static_assert(std::is_nothrow_copy_constructible_v<Lib_Protected_Buffer> &&
              std::is_nothrow_copy_assignable_v<Lib_Protected_Buffer>);

TEST(Protected_Buffer, Shows_No_More_Than_The_Size_In_Blocks)
{
    for (const auto& [nPlain, nImage] :
         {std::pair(0u, 0u), std::pair(1u, 16u), std::pair(8u, 16u), std::pair(9u, 32u), std::pair(40u, 48u)})
        EXPECT_EQ(nImage, Open_Buffer(Lib_Buffer(nPlain)).m_Image.Get_Size()) << nPlain;
}

TEST(Protected_Buffer, Gives_Back_What_It_Was_Given)
{
    std::minstd_rand random(4);
    for (std::size_t nSize = 0; nSize < 400; nSize += 1 + random() % 5)
    {
        std::string bytes(nSize, '\0');
        for (char& character : bytes)
            character = static_cast<char>(random());
        const Lib_Protected_Buffer buffer(bytes.size(), bytes.data());
        ASSERT_EQ(bytes, Read(buffer));
        ASSERT_EQ(bytes, Read(To_Buffer(bytes)));
        ASSERT_TRUE(buffer == To_Buffer(bytes) && buffer.Is_Equals(bytes.data(), bytes.size()));
        bytes += 'x';
        ASSERT_FALSE(buffer == To_Buffer(bytes));
    }
}

TEST(Protected_Buffer, Is_Empty_Without_An_Image)
{
    Open_Buffer buffer;
    EXPECT_TRUE(buffer.Is_Equals(nullptr, 0) && buffer == Lib_Buffer());
    EXPECT_TRUE(!(buffer < Lib_Buffer()) && buffer < To_Buffer("x")) << "as plain buffers";
    buffer.Append(Lib_Buffer());
    buffer.Make_Reverse();
    EXPECT_EQ(0u, buffer.m_Image.Get_Size());
    for (void (*empty)(Open_Buffer&) :
         {+[](Open_Buffer& b) { b.Attach_Copy(nullptr, 0); }, +[](Open_Buffer& b) { b = Lib_Buffer(); },
          +[](Open_Buffer& b) { b = Lib_Protected_Buffer(); }, +[](Open_Buffer& b) { b.Flush(); },
          +[](Open_Buffer& b) { b.flush(); }, +[](Open_Buffer& b) { b.init(); }})
    {
        buffer = To_Buffer("content");
        empty(buffer);
        EXPECT_EQ(nullptr, buffer.m_Image.Get_Ptr());
        EXPECT_EQ("", Read(buffer));
    }
}

TEST(Protected_Buffer, Gives_Derived_Classes_Blocks_Of_Zeros)
{
    const Open_Buffer buffer;
    const auto pBlock = static_cast<char*>(buffer.alloc(100));
    EXPECT_EQ(std::string(100, '\0'), std::string(pBlock, 100));
    EXPECT_EQ(nullptr, buffer.alloc(0));
    buffer.free(pBlock);
}

TEST(Protected_Buffer, Copies_The_Image_And_Nothing_Else)
{
    Open_Buffer source(To_Buffer("some secret bytes"));
    const Open_Buffer copy(source);
    EXPECT_TRUE(copy.m_Image == source.m_Image);
    Open_Buffer assigned(To_Buffer("before"));
    assigned = source;
    const Open_Buffer& same = assigned;
    assigned = same;
    source.Flush();
    EXPECT_EQ("some secret bytes", Read(copy));
    EXPECT_EQ("some secret bytes", Read(assigned));
    EXPECT_FALSE(assigned == source);
}

TEST(Protected_Buffer, Appends_And_Reverses_The_Plain_Bytes)
{
    Lib_Protected_Buffer buffer;
    std::string expected;
    for (const std::string part : {"one", "", "four and twenty bytes to come", "x"})
    {
        buffer.Append(part.data(), part.size());
        buffer.Append(To_Buffer(part));
        expected += part + part;
        ASSERT_EQ(expected, Read(buffer));
    }
    buffer.Make_Reverse();
    EXPECT_EQ(std::string(expected.rbegin(), expected.rend()), Read(buffer));
    buffer.Attach_Copy("short", 5);
    EXPECT_EQ("short", Read(buffer));
}

TEST(Protected_Buffer, Builds_Images_By_Steps)
{
    Lib_Buffer image;
    Open_Buffer::st_Prepare_Buffer_To_Encipher(To_Buffer("abcde"), image);
    EXPECT_TRUE(image == Plain_Image(5, std::string("abcde\0\0\0", 8)));

    // A block of the right size is re-used, and what is in it becomes the filler.
    const void* pBlock = image.Get_Ptr();
    Open_Buffer::st_Prepare_Buffer_To_Encipher(To_Buffer("XY"), image);
    EXPECT_EQ(pBlock, image.Get_Ptr());
    EXPECT_TRUE(image == Plain_Image(2, std::string("XYcde\0\0\0", 8)));

    Lib_Buffer plain;
    Open_Buffer::st_Extract_Data_From_Deciphered_Buffer(image, plain);
    EXPECT_EQ("XY", To_Text(plain));
    Open_Buffer::st_Encipher_Data(To_Buffer("to and fro"), image);
    Open_Buffer::st_Decipher_Data(image, plain);
    EXPECT_EQ("to and fro", To_Text(plain));
    Open_Buffer::st_Decipher_Data(image, image);
    EXPECT_EQ("to and fro", To_Text(image)) << "into itself";
    Open_Buffer::st_Prepare_Buffer_To_Encipher(plain, image);
    Open_Buffer::st_Extract_Data_From_Deciphered_Buffer(image, image);
    EXPECT_EQ("to and fro", To_Text(image)) << "into itself";
    Open_Buffer::st_Encipher_Data(Lib_Buffer(), image);
    EXPECT_EQ(0u, image.Get_Size());
    Open_Buffer::st_Decipher_Data(image, plain);
    EXPECT_EQ(0u, plain.Get_Size());
}

TEST(Protected_Buffer, Never_Reads_Beyond_A_Damaged_Image)
{
    Lib_Buffer plain = To_Buffer("before");
    for (const std::size_t nSize : {1u, 15u, 17u})
        Open_Buffer::st_Decipher_Data(Lib_Buffer(nSize), plain);
    EXPECT_EQ("before", To_Text(plain)) << "a size that no image has";

    for (const unsigned long long nLength : {9ULL, 16ULL, 1ULL << 32, ~0ULL, ~0ULL - 7})
    {
        Open_Buffer buffer;
        buffer.m_Image = Plain_Image(nLength, "12345678");
        Open_Buffer::st_Extract_Data_From_Deciphered_Buffer(buffer.m_Image, plain);
        ASSERT_TRUE(CryptProtectMemory(buffer.m_Image.Get_Ptr(), 16, CRYPTPROTECTMEMORY_SAME_PROCESS));
        Open_Buffer::st_Decipher_Data(buffer.m_Image, plain);
        EXPECT_EQ("before", To_Text(plain)) << nLength;

        const Lib_Buffer image = buffer.m_Image;
        EXPECT_EQ("", Read(buffer));
        EXPECT_FALSE(buffer.Is_Equals(nullptr, 0) || buffer < To_Buffer("x"));
        buffer.Append("x", 1);
        buffer.Make_Reverse();
        EXPECT_TRUE(buffer.m_Image == image) << "there is nothing to append to";
    }
    Open_Buffer::st_Extract_Data_From_Deciphered_Buffer(Lib_Buffer(7), plain);
    EXPECT_EQ("before", To_Text(plain));
    Open_Buffer::st_Extract_Data_From_Deciphered_Buffer(Plain_Image(8, "12345678"), plain);
    EXPECT_EQ("12345678", To_Text(plain));
}

TEST(Protected_Buffer, Refuses_An_Image_Of_4_GiB)
{
    // The size lies; what is there must not be read.
    char text[] = "x";
    Lib_Buffer huge;
    huge.Attach(text, 0xFFFFFFF8);
    Lib_Buffer image = To_Buffer("before");
    Open_Buffer::st_Encipher_Data(huge, image);
    EXPECT_EQ("before", To_Text(image));
    Lib_Protected_Buffer buffer(To_Buffer("before"));
    buffer = huge;
    EXPECT_EQ("", Read(buffer));
    void* pBlock = nullptr;
    unsigned long long nSize = 0;
    huge.Detach(&pBlock, &nSize);
}

TEST(Protected_Buffer, Is_Read_By_Many_Threads_At_Once)
{
    std::string bytes(5000, '\0');
    std::iota(bytes.begin(), bytes.end(), '\0');
    const Lib_Protected_Buffer buffer(To_Buffer(bytes));
    std::vector<int> right(4);
    On_Threads(4,
               [&](std::size_t nThread)
               {
                   for (int i = 0; i < 200; ++i)
                       right[nThread] +=
                           Read(buffer) == bytes && buffer.Is_Equals(bytes.data(), bytes.size());
               });
    EXPECT_EQ(std::vector<int>(4, 200), right);
}
