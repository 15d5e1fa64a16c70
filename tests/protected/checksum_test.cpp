#include "lib_protected.h"

#include <gtest/gtest.h>

#include <memory>
#include <random>

namespace
{

/// Bit by bit, as the polynomial says.
unsigned int Model(const unsigned char* pData, std::size_t nSize)
{
    unsigned int nCrc = 0xFFFFFFFF;
    for (std::size_t i = 0; i < nSize; ++i)
    {
        nCrc ^= pData[i];
        for (int nBit = 0; nBit < 8; ++nBit)
            nCrc = (nCrc & 1) != 0 ? nCrc >> 1 ^ 0xEDB88320 : nCrc >> 1;
    }
    return ~nCrc;
}

} // namespace

TEST(Checksum, Is_The_Same_By_Every_Road)
{
    unsigned char known[] = {'1', '2', '3', '4', '5', '6', '7', '8', '9'};
    EXPECT_EQ(0xCBF43926u, Lib_Cacl_CRC32(known, 9));
    EXPECT_EQ(0u, Lib_Cacl_CRC32(nullptr, 0));
    std::minstd_rand random(1);
    for (std::size_t nSize = 1; nSize < 400; ++nSize)
    {
        // The block ends where its memory ends, and begins anywhere.
        const std::size_t nOffset = random() % 16;
        const auto pMemory = std::make_unique<unsigned char[]>(nOffset + nSize);
        unsigned char* pData = pMemory.get() + nOffset;
        for (std::size_t i = 0; i < nSize; ++i)
            pData[i] = static_cast<unsigned char>(random());
        ASSERT_EQ(Model(pData, nSize), Lib_Cacl_CRC32(pData, static_cast<unsigned long>(nSize))) << nSize;
    }
}
