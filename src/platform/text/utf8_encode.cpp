#include "platform/text/conversion.h"
#include "platform/text/utf16_character.h"
#include "platform/text/utf8_short_forms.h"
#include "platform/text/vectors.h"

#include <algorithm>
#include <cstring>

namespace qn_platform
{

namespace
{

/// How far a conversion has come. What lies between the pointers of a pair is still to be read or written.
struct Encoding
{
    const wchar_t* source;
    const wchar_t* source_end;
    unsigned char* target;
    unsigned char* target_end;

    std::size_t Source_Left() const { return static_cast<std::size_t>(source_end - source); }
    std::size_t Target_Left() const { return static_cast<std::size_t>(target_end - target); }
};

// As in decoding, a step may read and store a block beyond what it takes: at least 16 units are left then,
// and they give at least sixteen bytes.
constexpr std::size_t WINDOW = 16;
constexpr std::size_t STEP_SOURCE = WINDOW + 16;
constexpr std::size_t STEP_TARGET = 48;

QN_INLINE bool has_Room(const Encoding& at)
{
    return at.Source_Left() >= STEP_SOURCE && at.Target_Left() >= STEP_TARGET;
}

QN_INLINE void put_Character(Encoding& at, unsigned int character)
{
    constexpr unsigned char LEADS[5] = {0, 0, 0xC0, 0xE0, 0xF0};
    const unsigned int size = utf16::Utf8_Size(character);
    unsigned int shift = 6 * (size - 1);
    *at.target++ = static_cast<unsigned char>(LEADS[size] | (character >> shift));
    while (shift != 0)
    {
        shift -= 6;
        *at.target++ = static_cast<unsigned char>(0x80 | ((character >> shift) & 0x3F));
    }
}

#if QN_VECTORS

using namespace vectors;

/// The window's units as bits, the next unit lowest, and ones beyond the window: which are not ASCII, and
/// which do not take two bytes.
struct Window
{
    unsigned int not_ascii;
    unsigned int not_pair;

    void Drop(unsigned int units)
    {
        not_ascii >>= units;
        not_pair >>= units;
    }
};

/// Sets the lanes of units that have none of the bits.
Block lanes_Without(Block units, int bits)
{
    return _mm_cmpeq_epi16(_mm_and_si128(units, Units(bits)), Units(0));
}

QN_INLINE bool all_Ascii(Block units) { return High_Bits(lanes_Without(units, 0xFF80)) == 0xFFFF; }

QN_INLINE Window look_At(Block first, Block second)
{
    const unsigned int ascii =
        High_Bits(_mm_packs_epi16(lanes_Without(first, 0xFF80), lanes_Without(second, 0xFF80)));
    const unsigned int small =
        High_Bits(_mm_packs_epi16(lanes_Without(first, 0xF800), lanes_Without(second, 0xF800)));
    return {~ascii, ~(small & ~ascii)};
}

/// Eight units of two bytes each.
Block split_Pairs(Block units)
{
    const Block lead = _mm_srli_epi16(units, 6);
    const Block trail = _mm_slli_epi16(_mm_and_si128(units, Units(0x003F)), 8);
    return _mm_or_si128(_mm_or_si128(lead, trail), Units(0x80C0));
}

/// Takes up to eight ASCII units and then up to eight of two bytes from the front of the window; both even
/// where there are none, since branches on the lengths would be mispredicted at every word.
QN_INLINE void take_Runs(Encoding& at, Window& window)
{
    const unsigned int ascii = Zeros_Below(window.not_ascii | 0x100);
    const Block units = Load(at.source);
    Store_Half(at.target, _mm_packus_epi16(units, units));
    window.Drop(ascii);
    at.source += ascii;
    at.target += ascii;

    const unsigned int pairs = Zeros_Below(window.not_pair | 0x100);
    Store(at.target, split_Pairs(Load(at.source)));
    window.Drop(pairs);
    at.source += pairs;
    at.target += 2 * pairs;
}

/// The character of three or four bytes at the front; four may be written. False for an unpaired surrogate.
QN_INLINE bool encode_Long_Form(Encoding& at)
{
    const unsigned int unit = *at.source;
    unsigned int word = 0x8080E0u | (unit >> 12) | ((unit & 0xFC0u) << 2) | ((unit & 0x3Fu) << 16);
    if ((unit & 0xF800) != 0xD800)
    {
        std::memcpy(at.target, &word, sizeof word);
        ++at.source;
        at.target += 3;
        return true;
    }
    const utf16::Character pair = utf16::Read_Character(at.source, 2);
    word = 0x808080F0u | (pair.value >> 18) | ((pair.value & 0x3F000u) >> 4) | ((pair.value & 0xFC0u) << 10) |
           ((pair.value & 0x3Fu) << 24);
    std::memcpy(at.target, &word, pair.good ? sizeof word : 0);
    at.source += pair.good ? 2 : 0;
    at.target += pair.good ? 4 : 0;
    return pair.good;
}

/// Takes the windows at the front that are ASCII throughout; whether there was one.
QN_INLINE bool take_Ascii_Windows(Encoding& at)
{
    const std::size_t limit = std::min(at.Source_Left(), at.Target_Left());
    std::size_t done = 0;
    for (; limit - done >= WINDOW; done += WINDOW)
    {
        const Block first = Load(at.source + done);
        const Block second = Load(at.source + done + 8);
        if (!all_Ascii(_mm_or_si128(first, second)))
        {
            break;
        }
        Store(at.target + done, _mm_packus_epi16(first, second));
    }
    at.source += done;
    at.target += done;
    return done != 0;
}

/// Takes what a window gives, or as many long forms as there are in a row; false if the front is unpaired.
QN_INLINE bool encode_Step(Encoding& at)
{
    if (*at.source >= 0x800)
    {
        bool taken = encode_Long_Form(at);
        const bool any = taken;
        while (taken && *at.source >= 0x800 && has_Room(at))
        {
            taken = encode_Long_Form(at);
        }
        return any;
    }
    if (take_Ascii_Windows(at))
    {
        return true;
    }
    Window window = look_At(Load(at.source), Load(at.source + 8));
    take_Runs(at, window);
    take_Runs(at, window);
    return true;
}

/// Takes ASCII from the front as far as that goes.
void encode_Ascii(Encoding& at)
{
    while (at.Source_Left() >= 8 && at.Target_Left() >= 8)
    {
        const Block units = Load(at.source);
        if (!all_Ascii(units))
        {
            break;
        }
        Store_Half(at.target, _mm_packus_epi16(units, units));
        at.source += 8;
        at.target += 8;
    }
    while (at.Source_Left() != 0 && at.Target_Left() != 0 && *at.source < 0x80)
    {
        *at.target++ = static_cast<unsigned char>(*at.source++);
    }
}

#else

QN_INLINE bool encode_Step(Encoding&) { return false; }

void encode_Ascii(Encoding&) {}

#endif

QN_INLINE void take_Short_Forms([[maybe_unused]] Encoding& at)
{
#if defined(QNLIB_AVX2_KERNELS)
    const short_forms::Encoding end =
        short_forms::Encode({at.source, at.target}, at.source_end, at.target_end);
    at.source = end.source;
    at.target = end.target;
#endif
}

/// Converts until `stop` is reached or passed, or a side has too little left for a step. The position is a
/// local one, so that the compiler keeps it in registers: what is stored cannot change it.
DWORD encode_Steps(Encoding& position, const wchar_t* stop, bool strict)
{
    Encoding at = position;
    const bool fast = short_forms::Are_Supported();
    while (at.source < stop && has_Room(at))
    {
        if (fast)
            take_Short_Forms(at);
        if (at.source >= stop || !has_Room(at))
            break;
        if (encode_Step(at))
        {
            continue;
        }
        const utf16::Character character = utf16::Read_Character(at.source, at.Source_Left());
        if (strict && !character.good)
        {
            return ERROR_NO_UNICODE_TRANSLATION;
        }
        put_Character(at, character.value);
        at.source += character.size;
    }
    position = at;
    return ERROR_SUCCESS;
}

/// Converts the end of a text, where steps would leave the bounds, by steps in a copy that is padded with
/// NULs, which give one byte each, not counted.
DWORD encode_Tail(Encoding& at, bool strict)
{
    constexpr std::size_t LONGEST = STEP_TARGET;
    const std::size_t size = at.Source_Left();
    if (size > LONGEST)
    {
        // More bytes than the target has place for.
        return ERROR_INSUFFICIENT_BUFFER;
    }
    wchar_t units[LONGEST + STEP_SOURCE] = {};
    unsigned char bytes[3 * LONGEST + 2 * STEP_TARGET];
    std::copy_n(at.source, size, units);
    Encoding copy{units, units + size + STEP_SOURCE, bytes, bytes + sizeof bytes};
    const DWORD error = encode_Steps(copy, units + size, strict);
    if (error != ERROR_SUCCESS)
    {
        return error;
    }
    const auto count = static_cast<std::size_t>((copy.target - bytes) - (copy.source - (units + size)));
    if (count > at.Target_Left())
    {
        return ERROR_INSUFFICIENT_BUFFER;
    }
    at.target = std::copy_n(bytes, count, at.target);
    return ERROR_SUCCESS;
}

} // namespace

Converted Encode_Utf8(const wchar_t* source, std::size_t size, unsigned char* target, std::size_t capacity,
                      bool strict)
{
    Encoding at{source, source + size, target, target + capacity};
    DWORD error = encode_Steps(at, at.source_end, strict);
    if (error == ERROR_SUCCESS)
    {
        encode_Ascii(at);
        error = at.Source_Left() == 0 ? ERROR_SUCCESS : encode_Tail(at, strict);
    }
    return {static_cast<std::size_t>(at.target - target), error};
}

} // namespace qn_platform
