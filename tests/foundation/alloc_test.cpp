#include "lib_foundation.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <new>

TEST(Alloc, Zeroes_Recycled_Memory)
{
    for (unsigned long long nSize : {1ULL, 24ULL, 100000ULL})
    {
        void* pDirty = Lib_Alloc(false, nSize);
        ASSERT_NE(nullptr, pDirty);
        std::memset(pDirty, 0xA5, nSize);
        Lib_Free(pDirty);

        auto* pBlock = static_cast<unsigned char*>(Lib_Alloc(true, nSize));
        ASSERT_NE(nullptr, pBlock);
        EXPECT_EQ(nSize, std::count(pBlock, pBlock + nSize, 0)) << "block of " << nSize;
        Lib_Free(pBlock);
    }
}

TEST(Alloc, Answers_Null_For_No_Bytes_And_For_More_Than_Can_Be_Had)
{
    for (unsigned long long nSize : {0ULL, ~0ULL, ~0ULL - 64, 1ULL << 60})
    {
        EXPECT_EQ(nullptr, Lib_Alloc(true, nSize));
        EXPECT_EQ(nullptr, Lib_Alloc(false, nSize));
    }
}

TEST(Alloc, Of_A_Container_Takes_Any_Size_That_An_Array_Can_Have)
{
    void* pEmpty = Lib_Container::Alloc_Buffer(0);
    EXPECT_NE(nullptr, pEmpty);
    Lib_Container::Free_Buffer(pEmpty);
    Lib_Container::Free_Buffer(nullptr);
    EXPECT_THROW(Lib_Container::Alloc_Buffer(~0ULL), std::bad_array_new_length);
}
