#include "lib_protected.h"

#include <gtest/gtest.h>

#include <memory>
#include <random>
#include <string>
#include <vector>

namespace
{

unsigned long Checksum(std::string text)
{
    return Lib_Cacl_CRC32(reinterpret_cast<unsigned char*>(text.data()),
                          static_cast<unsigned long>(text.size()));
}

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

TEST(Checksum, Has_The_Known_Values)
{
    EXPECT_EQ(0u, Lib_Cacl_CRC32(nullptr, 0));
    EXPECT_EQ(0xCBF43926u, Checksum("123456789"));
    EXPECT_EQ(0xE8B7BE43u, Checksum("a"));
    EXPECT_EQ(0x414FA339u, Checksum("The quick brown fox jumps over the lazy dog"));
    EXPECT_EQ(0xFF000000u, Checksum(std::string(1, '\xFF')));
}

TEST(Checksum, Is_The_Same_By_Every_Road)
{
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
