#include "platform/text/conversion.h"
#include "platform/text/utf16_character.h"
#include "platform/text/utf8_sequence.h"
#include "platform/text/vectors.h"

namespace qn_platform
{

namespace
{

#if QN_VECTORS

using namespace vectors;

/// Bytes that are at least `least`, both taken as unsigned.
Block at_Least(Block bytes, int least) { return _mm_cmpeq_epi8(_mm_max_epu8(bytes, Bytes(least)), bytes); }

/// Lead bytes that cannot lead anything, or not what follows each: overlong forms, surrogates, and what is
/// above U+10FFFF. `next` is the block that begins one byte later.
Block bad_Leads(Block bytes, Block next, bool long_forms)
{
    const Block never =
        _mm_or_si128(_mm_cmpeq_epi8(_mm_and_si128(bytes, Bytes(0xFE)), Bytes(0xC0)), at_Least(bytes, 0xF5));
    if (!long_forms)
    {
        return never;
    }
    const Block upper = at_Least(next, 0xA0);
    const Block not_lowest = at_Least(next, 0x90);
    const Block overlong = _mm_or_si128(_mm_andnot_si128(upper, _mm_cmpeq_epi8(bytes, Bytes(0xE0))),
                                        _mm_andnot_si128(not_lowest, _mm_cmpeq_epi8(bytes, Bytes(0xF0))));
    const Block beyond = _mm_or_si128(_mm_and_si128(upper, _mm_cmpeq_epi8(bytes, Bytes(0xED))),
                                      _mm_and_si128(not_lowest, _mm_cmpeq_epi8(bytes, Bytes(0xF4))));
    return _mm_or_si128(never, _mm_or_si128(overlong, beyond));
}

/// Goes over well-formed blocks and adds up their units; ends at a sequence's begin, before the first block
/// that is not well-formed, or too near to the end. Continuations are proved by bits: each lead byte asks
/// for those behind it, and what it asks for beyond its block is owed by the next one.
std::size_t measure_Blocks(const unsigned char*& source, const unsigned char* end)
{
    Block sums = _mm_setzero_si128();
    std::size_t ascii = 0;
    unsigned int owed = 0;
    for (; end - source > 16; source += 16)
    {
        const Block bytes = Load(source);
        if ((High_Bits(bytes) | owed) == 0)
        {
            ascii += 16;
            continue;
        }
        const Block leads_4 = at_Least(bytes, 0xF0);
        const unsigned int leads_3_or_4 = High_Bits(at_Least(bytes, 0xE0));
        const unsigned int leads = High_Bits(at_Least(bytes, 0xC0));
        const unsigned int asked = owed | (leads << 1) | (leads_3_or_4 << 2) | (High_Bits(leads_4) << 3);
        const Block starts = _mm_cmpgt_epi8(bytes, Bytes(0xBF));
        const unsigned int continuations = ~High_Bits(starts) & 0xFFFFu;
        if ((asked & 0xFFFFu) != continuations ||
            High_Bits(bad_Leads(bytes, Load(source + 1), leads_3_or_4 != 0)) != 0)
        {
            break;
        }
        owed = asked >> 16;
        const Block units = _mm_sub_epi8(_mm_setzero_si128(), _mm_add_epi8(starts, leads_4));
        sums = _mm_add_epi64(sums, _mm_sad_epu8(units, _mm_setzero_si128()));
    }
    alignas(16) unsigned long long halves[2];
    Store(halves, sums);
    std::size_t count = ascii + halves[0] + halves[1];
    if (owed != 0)
    {
        // The last sequence is not complete: give it back.
        do
        {
            --source;
        } while (utf8::Continues(*source));
        count -= *source >= 0xF0 ? 2 : 1;
    }
    return count;
}

/// Adds up the bytes of the blocks at the front; stops before a block with a surrogate.
std::size_t measure_Blocks(const wchar_t*& source, const wchar_t* end)
{
    // Each of the four sums stays below 2 to the 31st, since a source has fewer units than that.
    Block sums = _mm_setzero_si128();
    const wchar_t* const start = source;
    for (; end - source >= 8; source += 8)
    {
        const Block units = Load(source);
        const Block top = _mm_and_si128(units, Units(0xF800));
        if (High_Bits(_mm_cmpeq_epi16(top, Units(0xD800))) != 0)
        {
            break;
        }
        // A lane is 0, -1 or -2 for the bytes that its unit saves against three.
        const Block ascii = _mm_cmpeq_epi16(_mm_and_si128(units, Units(0xFF80)), Units(0));
        const Block saved = _mm_add_epi16(ascii, _mm_cmpeq_epi16(top, Units(0)));
        sums = _mm_add_epi32(sums, _mm_madd_epi16(saved, Units(-1)));
    }
    alignas(16) unsigned int saved[4];
    Store(saved, sums);
    return static_cast<std::size_t>(source - start) * 3 -
           (std::size_t{saved[0]} + saved[1] + saved[2] + saved[3]);
}

#else

std::size_t measure_Blocks(const unsigned char*&, const unsigned char*) { return 0; }

std::size_t measure_Blocks(const wchar_t*&, const wchar_t*) { return 0; }

#endif

/// How much is taken one by one where blocks end before they are tried again: broken text tends to be broken
/// in more than one place, and surrogates come in company.
constexpr std::ptrdiff_t DISTRUST = 16;

} // namespace

Converted Measure_Utf8(const unsigned char* source, std::size_t size, bool strict)
{
    const unsigned char* const end = source + size;
    std::size_t count = 0;
    while (source != end)
    {
        count += measure_Blocks(source, end);
        for (const unsigned char* const from = source; source != end && source - from < DISTRUST;)
        {
            const utf8::Sequence sequence =
                utf8::Read_Sequence(source, static_cast<std::size_t>(end - source));
            if (strict && !sequence.good)
            {
                return {0, ERROR_NO_UNICODE_TRANSLATION};
            }
            count += sequence.character > 0xFFFF ? 2 : 1;
            source += sequence.size;
        }
    }
    return {count, ERROR_SUCCESS};
}

Converted Measure_As_Utf8(const wchar_t* source, std::size_t size, bool strict)
{
    const wchar_t* const end = source + size;
    std::size_t count = 0;
    while (source != end)
    {
        count += measure_Blocks(source, end);
        for (const wchar_t* const from = source; source != end && source - from < DISTRUST;)
        {
            const utf16::Character character =
                utf16::Read_Character(source, static_cast<std::size_t>(end - source));
            if (strict && !character.good)
            {
                return {0, ERROR_NO_UNICODE_TRANSLATION};
            }
            count += utf16::Utf8_Size(character.value);
            source += character.size;
        }
    }
    return {count, ERROR_SUCCESS};
}

} // namespace qn_platform
