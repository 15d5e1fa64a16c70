// The searches with 32-byte vectors, for machines that have them. Nothing here may be shared with other
// files, which could then run these instructions elsewhere: every function is this file's own.

#include "strings/scan.h"
#include "strings/scan_dispatch.h"

#include <immintrin.h>

#include <algorithm>
#include <cstdint>

namespace
{

template <class Char>
struct Vector
{
    static constexpr std::size_t Lanes = 32 / sizeof(Char);

    static __m256i Load(const Char* pText) noexcept
    {
        return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(pText));
    }
    static __m256i Fill(Char ch) noexcept
    {
        if constexpr (sizeof(Char) == 1)
            return _mm256_set1_epi8(static_cast<char>(ch));
        else
            return _mm256_set1_epi16(static_cast<short>(ch));
    }
    static __m256i Equal(__m256i left, __m256i right) noexcept
    {
        return sizeof(Char) == 1 ? _mm256_cmpeq_epi8(left, right) : _mm256_cmpeq_epi16(left, right);
    }
    static __m256i Either(__m256i left, __m256i right) noexcept { return _mm256_or_si256(left, right); }
    static __m256i Both(__m256i left, __m256i right) noexcept { return _mm256_and_si256(left, right); }
    static unsigned int Bits(__m256i lanes) noexcept
    {
        return static_cast<unsigned int>(_mm256_movemask_epi8(lanes));
    }

    // Marked lanes are 0, all others are not.
    static __m256i Mark(__m256i units, __m256i wanted) noexcept
    {
        return Merge(_mm256_xor_si256(units, wanted), units);
    }
    static __m256i Merge(__m256i left, __m256i right) noexcept
    {
        return sizeof(Char) == 1 ? _mm256_min_epu8(left, right) : _mm256_min_epu16(left, right);
    }
    static unsigned int Hits(__m256i marks) noexcept { return Bits(Equal(marks, _mm256_setzero_si256())); }
};

#include "strings/scan_kernels.inl"

} // namespace

const scan::Kernels scan::Avx2_Kernels = {find_Character<char>, find_Character<wchar_t>, find_Text<char>,
                                          find_Text<wchar_t>};
