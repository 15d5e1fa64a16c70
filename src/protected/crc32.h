#ifndef QNLIB_SRC_PROTECTED_CRC32_H
#define QNLIB_SRC_PROTECTED_CRC32_H

#include <cstddef>
#include <cstdint>

// The register of CRC-32 moved over bytes; what stands before and after the message is the caller's.

namespace crc
{

/// By table, sixteen bytes a step.
std::uint32_t Advance_By_Table(std::uint32_t nCrc, const unsigned char* pData, std::size_t nSize) noexcept;

/// By multiplication of polynomials, for machines that can (Has_Folding) and at least Least_Fold bytes.
inline constexpr std::size_t Least_Fold = 64;
bool Has_Folding() noexcept;
std::uint32_t Advance_By_Folding(std::uint32_t nCrc, const unsigned char* pData, std::size_t nSize) noexcept;

/// The remainder of x to the power of nExponent, highest power in the lowest bit, as the register holds it.
constexpr std::uint32_t Power_Of_X(unsigned int nExponent) noexcept
{
    std::uint32_t nRemainder = 0x80000000;
    for (unsigned int i = 0; i < nExponent; ++i)
        nRemainder = (nRemainder >> 1) ^ ((nRemainder & 1) != 0 ? 0xEDB88320 : 0);
    return nRemainder;
}

} // namespace crc

#endif
