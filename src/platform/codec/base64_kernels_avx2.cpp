// Everything here but the three loops is this file's own: what other files shared of it could run these
// instructions on machines that lack them.

#include "platform/codec/base64_kernels.h"

#include <immintrin.h>

namespace
{

__m128i load(const void* source) { return _mm_loadu_si128(static_cast<const __m128i*>(source)); }

__m256i load_Long(const void* source) { return _mm256_loadu_si256(static_cast<const __m256i*>(source)); }

/// The same sixteen bytes in both halves.
template <class... Bytes>
__m256i twice(Bytes... bytes)
{
    return _mm256_broadcastsi128_si256(_mm_setr_epi8(static_cast<char>(bytes)...));
}

/// 24 bytes, twelve in each half, as 32 values of six bits.
__m256i split(__m256i bytes)
{
    // Each three bytes abc become bacb: two 16-bit words that hold two values each.
    const __m256i words =
        _mm256_shuffle_epi8(bytes, twice(1, 0, 2, 1, 4, 3, 5, 4, 7, 6, 8, 7, 10, 9, 11, 10));
    const __m256i even = _mm256_mulhi_epu16(_mm256_and_si256(words, _mm256_set1_epi32(0x0FC0FC00)),
                                            _mm256_set1_epi32(0x04000040));
    const __m256i odd = _mm256_mullo_epi16(_mm256_and_si256(words, _mm256_set1_epi32(0x003F03F0)),
                                           _mm256_set1_epi32(0x01000010));
    return _mm256_or_si256(even, odd);
}

/// Values of six bits as characters: what is to be added depends on the stretch of the alphabet.
__m256i to_Characters(__m256i values)
{
    // Lower-case letters become stretch 0, digits 1 to 10, the two marks 11 and 12, upper-case letters 13.
    const __m256i beyond = _mm256_subs_epu8(values, _mm256_set1_epi8(51));
    const __m256i upper =
        _mm256_and_si256(_mm256_cmpgt_epi8(_mm256_set1_epi8(26), values), _mm256_set1_epi8(13));
    constexpr int DIGIT = '0' - 52;
    const __m256i offsets = twice('a' - 26, DIGIT, DIGIT, DIGIT, DIGIT, DIGIT, DIGIT, DIGIT, DIGIT, DIGIT,
                                  DIGIT, '+' - 62, '/' - 63, 'A', 0, 0);
    return _mm256_add_epi8(values, _mm256_shuffle_epi8(offsets, _mm256_or_si256(beyond, upper)));
}

/// The upper and lower half of each character; the upper one keeps no bit of its neighbour that matters to a
/// table's index.
__m256i upper_Half(__m256i text)
{
    return _mm256_and_si256(_mm256_srli_epi32(text, 4), _mm256_set1_epi8(0x2F));
}

/// Whether all are digits of the alphabet. A bit stands for a row of upper halves, and is set in the table of
/// the lower half where the row has no digit there.
bool are_Digits(__m256i text, __m256i upper)
{
    const __m256i rows =
        twice(0x10, 0x10, 0x01, 0x02, 0x04, 0x08, 0x04, 0x08, 0x10, 0x10, 0x10, 0x10, 0x10, 0x10, 0x10, 0x10);
    const __m256i gaps =
        twice(0x15, 0x11, 0x11, 0x11, 0x11, 0x11, 0x11, 0x11, 0x11, 0x11, 0x13, 0x1A, 0x1B, 0x1B, 0x1B, 0x1A);
    const __m256i lower = _mm256_and_si256(text, _mm256_set1_epi8(0x2F));
    return _mm256_testz_si256(_mm256_shuffle_epi8(gaps, lower), _mm256_shuffle_epi8(rows, upper)) != 0;
}

/// Digits as their values; of a row only '/' is off the line, and takes the place of the row before.
__m256i to_Values(__m256i text, __m256i upper)
{
    const __m256i offsets = twice(0, 16, 19, 4, -65, -65, -71, -71, 0, 0, 0, 0, 0, 0, 0, 0);
    const __m256i slash = _mm256_cmpeq_epi8(text, _mm256_set1_epi8('/'));
    return _mm256_add_epi8(text, _mm256_shuffle_epi8(offsets, _mm256_add_epi8(slash, upper)));
}

/// 32 values of six bits as 24 bytes at the front.
__m256i join(__m256i values)
{
    const __m256i pairs = _mm256_maddubs_epi16(values, _mm256_set1_epi32(0x01400140));
    const __m256i groups = _mm256_madd_epi16(pairs, _mm256_set1_epi32(0x00011000));
    const __m256i halves =
        _mm256_shuffle_epi8(groups, twice(2, 1, 0, 6, 5, 4, 10, 9, 8, 14, 13, 12, -1, -1, -1, -1));
    return _mm256_permutevar8x32_epi32(halves, _mm256_setr_epi32(0, 1, 2, 4, 5, 6, 3, 7));
}

} // namespace

std::size_t qn_platform::base64::Encode_Avx2(const unsigned char* bytes, std::size_t groups,
                                             std::size_t readable, char* text)
{
    // A block has 8 groups, and 4 bytes more than those are read.
    std::size_t i = 0;
    for (; groups - i >= 8 && readable - 3 * i >= 28; i += 8)
    {
        const unsigned char* const block = bytes + 3 * i;
        const __m256i both =
            _mm256_inserti128_si256(_mm256_castsi128_si256(load(block)), load(block + 12), 1);
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(text + 4 * i), to_Characters(split(both)));
    }
    return i;
}

std::size_t qn_platform::base64::Count_Digits_Avx2(const char* text, std::size_t length)
{
    std::size_t i = 0;
    while (length - i >= 32)
    {
        const __m256i block = load_Long(text + i);
        if (!are_Digits(block, upper_Half(block)))
        {
            break;
        }
        i += 32;
    }
    return i;
}

std::size_t qn_platform::base64::Decode_Avx2(const char* text, std::size_t groups, unsigned char* bytes)
{
    std::size_t i = 0;
    for (; groups - i >= 8; i += 8)
    {
        const __m256i block = load_Long(text + 4 * i);
        const __m256i upper = upper_Half(block);
        if (!are_Digits(block, upper))
        {
            break;
        }
        const __m256i result = join(to_Values(block, upper));
        unsigned char* const target = bytes + 3 * i;
        _mm_storeu_si128(reinterpret_cast<__m128i*>(target), _mm256_castsi256_si128(result));
        _mm_storel_epi64(reinterpret_cast<__m128i*>(target + 16), _mm256_extracti128_si256(result, 1));
    }
    return i;
}
