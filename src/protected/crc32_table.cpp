#include "protected/crc32.h"

#include <array>

namespace
{

using Table = std::array<std::uint32_t, 256>;

/// The first table moves the register over one byte, the nth one over a byte and n bytes of 0 behind it.
constexpr std::array<Table, 16> Tables = []
{
    std::array<Table, 16> tables{};
    for (std::uint32_t i = 0; i < 256; ++i)
    {
        std::uint32_t nCrc = i;
        for (int nBit = 0; nBit < 8; ++nBit)
            nCrc = (nCrc >> 1) ^ ((nCrc & 1) != 0 ? 0xEDB88320 : 0);
        tables[0][i] = nCrc;
    }
    for (std::size_t n = 1; n < tables.size(); ++n)
        for (std::uint32_t i = 0; i < 256; ++i)
            tables[n][i] = tables[0][tables[n - 1][i] & 0xFF] ^ (tables[n - 1][i] >> 8);
    return tables;
}();

std::uint32_t load(const unsigned char* pData) noexcept
{
    return static_cast<std::uint32_t>(pData[0]) | static_cast<std::uint32_t>(pData[1]) << 8 |
           static_cast<std::uint32_t>(pData[2]) << 16 | static_cast<std::uint32_t>(pData[3]) << 24;
}

/// Four bytes with nBehind bytes behind them in the step.
std::uint32_t move(std::uint32_t nWord, std::size_t nBehind) noexcept
{
    return Tables[nBehind + 3][nWord & 0xFF] ^ Tables[nBehind + 2][nWord >> 8 & 0xFF] ^
           Tables[nBehind + 1][nWord >> 16 & 0xFF] ^ Tables[nBehind][nWord >> 24];
}

} // namespace

std::uint32_t crc::Advance_By_Table(std::uint32_t nCrc, const unsigned char* pData,
                                    std::size_t nSize) noexcept
{
    for (; nSize >= 16; nSize -= 16, pData += 16)
        nCrc = move(load(pData) ^ nCrc, 12) ^ move(load(pData + 4), 8) ^ move(load(pData + 8), 4) ^
               move(load(pData + 12), 0);
    for (; nSize >= 4; nSize -= 4, pData += 4)
        nCrc = move(load(pData) ^ nCrc, 0);
    for (; nSize != 0; --nSize, ++pData)
        nCrc = Tables[0][(nCrc ^ *pData) & 0xFF] ^ (nCrc >> 8);
    return nCrc;
}
