// Everything here but the two converters is this file's own: what other files shared of it could run these
// instructions on machines that lack them.

#include "platform/text/utf8_short_forms.h"

#include <immintrin.h>

namespace
{

using qn_platform::short_forms::Decoding;
using qn_platform::short_forms::Encoding;

/// For each set of eight lanes the byte shuffle that moves them to the front.
struct Packings
{
    alignas(16) unsigned char m_Bytes[256][16];
};

/// A set names the units to keep of eight.
constexpr Packings UNIT_PACKINGS = []
{
    Packings packings{};
    for (unsigned int set = 0; set < 256; ++set)
    {
        unsigned int next = 0;
        for (unsigned int lane = 0; lane < 8; ++lane)
        {
            if ((set >> lane & 1) == 0)
                continue;
            packings.m_Bytes[set][next++] = static_cast<unsigned char>(2 * lane);
            packings.m_Bytes[set][next++] = static_cast<unsigned char>(2 * lane + 1);
        }
    }
    return packings;
}();

/// A set names the units of eight whose upper byte is dropped.
constexpr Packings BYTE_PACKINGS = []
{
    Packings packings{};
    for (unsigned int set = 0; set < 256; ++set)
    {
        unsigned int next = 0;
        for (unsigned int lane = 0; lane < 8; ++lane)
        {
            packings.m_Bytes[set][next++] = static_cast<unsigned char>(2 * lane);
            if ((set >> lane & 1) == 0)
                packings.m_Bytes[set][next++] = static_cast<unsigned char>(2 * lane + 1);
        }
    }
    return packings;
}();

__m128i load(const void* source) { return _mm_loadu_si128(static_cast<const __m128i*>(source)); }

__m256i load_Long(const void* source) { return _mm256_loadu_si256(static_cast<const __m256i*>(source)); }

void store_Long(void* target, __m256i block) { _mm256_storeu_si256(static_cast<__m256i*>(target), block); }

unsigned int bits(__m128i lanes) { return static_cast<unsigned int>(_mm_movemask_epi8(lanes)); }

/// Stores the lanes that the set keeps or shortens; how many are meant to stay is the caller's knowledge.
void store_Packed(void* target, __m128i lanes, const Packings& packings, unsigned int set)
{
    const __m128i packing = _mm_load_si128(reinterpret_cast<const __m128i*>(packings.m_Bytes[set]));
    _mm_storeu_si128(static_cast<__m128i*>(target), _mm_shuffle_epi8(lanes, packing));
}

unsigned int count(unsigned int set) { return static_cast<unsigned int>(_mm_popcnt_u32(set)); }

/// The unit that each of sixteen bytes begins; what stands at continuations means nothing.
__m256i decode_Units(const unsigned char* source, __m128i leads)
{
    const __m256i bytes = _mm256_cvtepu8_epi16(load(source));
    const __m256i next = _mm256_cvtepu8_epi16(load(source + 1));
    const __m256i top = _mm256_slli_epi16(_mm256_and_si256(bytes, _mm256_set1_epi16(0x1F)), 6);
    const __m256i low = _mm256_and_si256(next, _mm256_set1_epi16(0x3F));
    return _mm256_blendv_epi8(bytes, _mm256_or_si256(top, low), _mm256_cvtepi8_epi16(leads));
}

/// Eight units below U+0800 as bytes; the number of bytes.
unsigned int encode_Units(__m128i units, unsigned char* target)
{
    const __m128i ascii = _mm_cmpgt_epi16(_mm_set1_epi16(0x80), units);
    const __m128i trail = _mm_slli_epi16(_mm_and_si128(units, _mm_set1_epi16(0x3F)), 8);
    const __m128i pairs = _mm_or_si128(_mm_or_si128(_mm_srli_epi16(units, 6), trail),
                                       _mm_set1_epi16(static_cast<short>(0x80C0)));
    const unsigned int set = bits(_mm_packs_epi16(ascii, _mm_setzero_si128()));
    store_Packed(target, _mm_blendv_epi8(pairs, units, ascii), BYTE_PACKINGS, set);
    return 16 - count(set);
}

} // namespace

Decoding qn_platform::short_forms::Decode(Decoding at, const unsigned char* source_end,
                                          const wchar_t* target_end)
{
    // 24 bytes behind a block give at least the eight units that a packed store may write too many.
    unsigned int owed = 0; // 1 when the block before ended in a lead byte, whose unit is written already
    while (source_end - at.source >= 32 + 24 && target_end - at.target >= 32)
    {
        const __m256i both = load_Long(at.source);
        if (_mm256_movemask_epi8(both) == 0 && owed == 0)
        {
            store_Long(at.target, _mm256_cvtepu8_epi16(_mm256_castsi256_si128(both)));
            store_Long(at.target + 16, _mm256_cvtepu8_epi16(_mm256_extracti128_si256(both, 1)));
            at.source += 32;
            at.target += 32;
            continue;
        }
        const __m128i bytes = _mm256_castsi256_si128(both);
        const __m128i leads = _mm_and_si128(_mm_cmpgt_epi8(bytes, _mm_set1_epi8(static_cast<char>(0xC1))),
                                            _mm_cmpgt_epi8(_mm_set1_epi8(static_cast<char>(0xE0)), bytes));
        const unsigned int lead_set = bits(leads);
        const unsigned int not_ascii = bits(bytes);
        const unsigned int continuations =
            bits(_mm_cmpgt_epi8(_mm_set1_epi8(static_cast<char>(0xC0)), bytes));
        const unsigned int asked = lead_set << 1 | owed;
        if ((asked & 0xFFFF) != continuations || (lead_set | continuations) != not_ascii)
            break;
        owed = asked >> 16;
        const __m256i units = decode_Units(at.source, leads);
        const unsigned int kept = ~continuations & 0xFFFF;
        store_Packed(at.target, _mm256_castsi256_si128(units), UNIT_PACKINGS, kept & 0xFF);
        at.target += count(kept & 0xFF);
        store_Packed(at.target, _mm256_extracti128_si256(units, 1), UNIT_PACKINGS, kept >> 8);
        at.target += count(kept >> 8);
        at.source += 16;
    }
    if (owed != 0)
    {
        // Back to the lead byte, whose continuation nobody has looked at.
        --at.source;
        --at.target;
    }
    return at;
}

Encoding qn_platform::short_forms::Encode(Encoding at, const wchar_t* source_end,
                                          const unsigned char* target_end)
{
    // 16 units behind a block give more than the eight bytes that a packed store may write too many.
    while (source_end - at.source >= 32 + 16 && target_end - at.target >= 64)
    {
        const __m256i first = load_Long(at.source);
        const __m256i second = load_Long(at.source + 16);
        if (_mm256_testz_si256(_mm256_or_si256(first, second), _mm256_set1_epi16(static_cast<short>(0xFF80))))
        {
            store_Long(at.target, _mm256_permute4x64_epi64(_mm256_packus_epi16(first, second), 0xD8));
            at.source += 32;
            at.target += 32;
            continue;
        }
        if (!_mm256_testz_si256(first, _mm256_set1_epi16(static_cast<short>(0xF800))))
            break;
        at.target += encode_Units(_mm256_castsi256_si128(first), at.target);
        at.target += encode_Units(_mm256_extracti128_si256(first, 1), at.target);
        at.source += 16;
    }
    return at;
}
