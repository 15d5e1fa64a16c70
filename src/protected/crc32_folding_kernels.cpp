// CRC-32 by carry-less multiplication: a block of 16 bytes that has n bits behind it counts as much as its
// product with x to the power of n, taken modulo the polynomial, without them. Four such blocks are moved on
// side by side; one is left at the end, and the table finishes it.

#include "protected/crc32.h"

#if defined(__x86_64__)

#include <immintrin.h>

#define QN_FOLDING [[gnu::target("pclmul,sse4.1")]]

namespace
{

/// The two factors that move a block by nBits: of its first half, which has 64 bits more behind it, and of
/// the second. Products of reversed polynomials come out one bit too low, and 32 bits wait behind the
/// remainder.
template <unsigned int nBits>
__m128i get_Factors() noexcept
{
    constexpr auto nFirst = static_cast<long long>(crc::Power_Of_X(nBits + 32)) << 1;
    constexpr auto nSecond = static_cast<long long>(crc::Power_Of_X(nBits - 32)) << 1;
    return _mm_set_epi64x(nSecond, nFirst);
}

__m128i load(const unsigned char* pData) noexcept
{
    return _mm_loadu_si128(reinterpret_cast<const __m128i*>(pData));
}

/// The block moved onto the next one.
QN_FOLDING inline __m128i fold(__m128i block, __m128i factors, __m128i next) noexcept
{
    const __m128i first = _mm_clmulepi64_si128(block, factors, 0x00);
    const __m128i second = _mm_clmulepi64_si128(block, factors, 0x11);
    return _mm_xor_si128(_mm_xor_si128(first, second), next);
}

} // namespace

bool crc::Has_Folding() noexcept
{
    return __builtin_cpu_supports("pclmul") != 0 && __builtin_cpu_supports("sse4.1") != 0;
}

QN_FOLDING std::uint32_t crc::Advance_By_Folding(std::uint32_t nCrc, const unsigned char* pData,
                                                 std::size_t nSize) noexcept
{
    __m128i a = _mm_xor_si128(load(pData), _mm_cvtsi32_si128(static_cast<int>(nCrc)));
    __m128i b = load(pData + 16);
    __m128i c = load(pData + 32);
    __m128i d = load(pData + 48);
    const __m128i by_Four = get_Factors<512>();
    for (pData += 64, nSize -= 64; nSize >= 64; pData += 64, nSize -= 64)
    {
        a = fold(a, by_Four, load(pData));
        b = fold(b, by_Four, load(pData + 16));
        c = fold(c, by_Four, load(pData + 32));
        d = fold(d, by_Four, load(pData + 48));
    }
    const __m128i by_One = get_Factors<128>();
    d = fold(fold(fold(a, by_One, b), by_One, c), by_One, d);
    for (; nSize >= 16; pData += 16, nSize -= 16)
        d = fold(d, by_One, load(pData));

    alignas(16) unsigned char last[16];
    _mm_store_si128(reinterpret_cast<__m128i*>(last), d);
    return Advance_By_Table(Advance_By_Table(0, last, sizeof(last)), pData, nSize);
}

#else

bool crc::Has_Folding() noexcept { return false; }

std::uint32_t crc::Advance_By_Folding(std::uint32_t nCrc, const unsigned char* pData,
                                      std::size_t nSize) noexcept
{
    return Advance_By_Table(nCrc, pData, nSize);
}

#endif
