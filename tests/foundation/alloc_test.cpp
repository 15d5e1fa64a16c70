#include "lib_foundation.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>

TEST(Alloc, Gives_Nothing_For_No_Bytes)
{
    EXPECT_EQ(nullptr, Lib_Alloc(true, 0));
    EXPECT_EQ(nullptr, Lib_Alloc(false, 0));
    Lib_Free(nullptr);
}

TEST(Alloc, Zeroes_Recycled_Memory)
{
    for (unsigned long long nSize : {1ULL, 24ULL, 4096ULL, 100000ULL})
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

TEST(Alloc, Answers_Null_For_More_Than_Can_Be_Had)
{
    for (unsigned long long nSize : {~0ULL, ~0ULL - 64, 1ULL << 63, 1ULL << 60})
    {
        EXPECT_EQ(nullptr, Lib_Alloc(true, nSize));
        EXPECT_EQ(nullptr, Lib_Alloc(false, nSize));
    }
}

TEST(Alloc, Knows_The_System_As_64_Bit) { EXPECT_TRUE(Lib_Is_x64_OS()); }
