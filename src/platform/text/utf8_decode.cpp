#include "platform/text/conversion.h"
#include "platform/text/utf8_sequence.h"
#include "platform/text/utf8_short_forms.h"
#include "platform/text/vectors.h"

#include <algorithm>
#include <cstring>

namespace qn_platform
{

namespace
{

/// How far a conversion has come. What lies between the pointers of a pair is still to be read or written.
struct Decoding
{
    const unsigned char* source;
    const unsigned char* source_end;
    wchar_t* target;
    wchar_t* target_end;

    std::size_t Source_Left() const { return static_cast<std::size_t>(source_end - source); }
    std::size_t Target_Left() const { return static_cast<std::size_t>(target_end - target); }
};

// A step looks at a window of bytes, and while it is inside, it may read and store a block beyond what it
// takes. With this much left on both sides that stays within the bounds. What it stores behind the last unit
// that counts is overwritten by what follows: at least 24 bytes are left then, and they give at least eight
// units.
constexpr std::size_t WINDOW = 32;
constexpr std::size_t STEP_SOURCE = WINDOW + 24;
constexpr std::size_t STEP_TARGET = 32;

QN_INLINE bool has_Room(const Decoding& at)
{
    return at.Source_Left() >= STEP_SOURCE && at.Target_Left() >= STEP_TARGET;
}

QN_INLINE void put_Character(Decoding& at, unsigned int character)
{
    if (character > 0xFFFF)
    {
        *at.target++ = static_cast<wchar_t>(0xD7C0 + (character >> 10));
        character = 0xDC00 | (character & 0x3FF);
    }
    *at.target++ = static_cast<wchar_t>(character);
}

#if QN_VECTORS

using namespace vectors;

/// The window's bytes as bits, the next byte lowest, and ones beyond the window: which are not ASCII, and
/// which do not belong to a well-formed sequence of two bytes.
struct Window
{
    unsigned long long not_ascii;
    unsigned long long not_paired;

    void Drop(unsigned int bytes)
    {
        not_ascii >>= bytes;
        not_paired >>= bytes;
    }
};

unsigned int both_High_Bits(Block first, Block second)
{
    return High_Bits(first) | (High_Bits(second) << 16);
}

Block pair_Leads(Block bytes)
{
    return _mm_and_si128(_mm_cmpgt_epi8(bytes, Bytes(0xC1)), _mm_cmpgt_epi8(Bytes(0xE0), bytes));
}

QN_INLINE Window look_At(Block first, Block second)
{
    const Block limit = Bytes(0xC0);
    const unsigned int leads = both_High_Bits(pair_Leads(first), pair_Leads(second));
    const unsigned int continuations =
        both_High_Bits(_mm_cmpgt_epi8(limit, first), _mm_cmpgt_epi8(limit, second));
    const unsigned int pairs = leads & (continuations >> 1);
    return {both_High_Bits(first, second) | ~0xFFFFFFFFULL,
            ~static_cast<unsigned long long>(pairs | (pairs << 1))};
}

/// Eight sequences of two bytes as units.
Block join_Pairs(Block block)
{
    const Block top = _mm_slli_epi16(_mm_and_si128(block, Units(0x001F)), 6);
    const Block low = _mm_and_si128(_mm_srli_epi16(block, 8), Units(0x003F));
    return _mm_or_si128(top, low);
}

/// Takes up to eight ASCII bytes and then up to eight pairs from the front of the window. Branches on the
/// lengths would be mispredicted at every word of most languages, so both are taken even where there are
/// none.
QN_INLINE void take_Runs(Decoding& at, Window& window)
{
    const unsigned int ascii = Zeros_Below(window.not_ascii | 0x100);
    Store(at.target, _mm_unpacklo_epi8(Load_Half(at.source), _mm_setzero_si128()));
    window.Drop(ascii);
    at.source += ascii;
    at.target += ascii;

    const unsigned int pair_bytes = Zeros_Below(window.not_paired | 0x10000);
    Store(at.target, join_Pairs(Load(at.source)));
    window.Drop(pair_bytes);
    at.source += pair_bytes;
    at.target += pair_bytes / 2;
}

/// A well-formed sequence of three or four bytes at the front.
QN_INLINE bool decode_Long_Form(Decoding& at)
{
    unsigned int word;
    std::memcpy(&word, at.source, sizeof word);
    const unsigned int front = ((word & 0x0Fu) << 12) | ((word & 0x3F00u) >> 2) | ((word & 0x3F0000u) >> 16);
    if ((word & 0xC0C0F0u) == 0x8080E0u && front >= 0x800 && (front & 0xF800u) != 0xD800u)
    {
        *at.target++ = static_cast<wchar_t>(front);
        at.source += 3;
        return true;
    }
    const unsigned int character = ((front & 0x7FFFu) << 6) | ((word >> 24) & 0x3Fu);
    if ((word & 0xC0C0C0F8u) == 0x808080F0u && character >= 0x10000 && character <= 0x10FFFF)
    {
        put_Character(at, character);
        at.source += 4;
        return true;
    }
    return false;
}

/// Takes the windows at the front that are ASCII throughout; whether there was one.
QN_INLINE bool take_Ascii_Windows(Decoding& at)
{
    const std::size_t limit = std::min(at.Source_Left(), at.Target_Left());
    std::size_t done = 0;
    for (; limit - done >= WINDOW; done += WINDOW)
    {
        const Block first = Load(at.source + done);
        const Block second = Load(at.source + done + 16);
        if (High_Bits(_mm_or_si128(first, second)) != 0)
        {
            break;
        }
        Store_Widened(at.target + done, first);
        Store_Widened(at.target + done + 16, second);
    }
    at.source += done;
    at.target += done;
    return done != 0;
}

/// Takes what a window gives, or as many long forms as there are in a row; false if the front is bad.
QN_INLINE bool decode_Step(Decoding& at)
{
    if (*at.source >= 0xE0)
    {
        bool taken = decode_Long_Form(at);
        const bool any = taken;
        while (taken && *at.source >= 0xE0 && has_Room(at))
        {
            taken = decode_Long_Form(at);
        }
        return any;
    }
    if (take_Ascii_Windows(at))
    {
        return true;
    }
    const unsigned char* const from = at.source;
    Window window = look_At(Load(at.source), Load(at.source + 16));
    take_Runs(at, window);
    take_Runs(at, window);
    return at.source != from;
}

/// Takes ASCII from the front as far as that goes.
void decode_Ascii(Decoding& at)
{
    while (at.Source_Left() >= 16 && at.Target_Left() >= 16 && High_Bits(Load(at.source)) == 0)
    {
        Store_Widened(at.target, Load(at.source));
        at.source += 16;
        at.target += 16;
    }
    while (at.Source_Left() != 0 && at.Target_Left() != 0 && *at.source < 0x80)
    {
        *at.target++ = static_cast<wchar_t>(*at.source++);
    }
}

#else

QN_INLINE bool decode_Step(Decoding&) { return false; }

void decode_Ascii(Decoding&) {}

#endif

QN_INLINE void take_Short_Forms([[maybe_unused]] Decoding& at)
{
#if defined(QNLIB_AVX2_KERNELS)
    const short_forms::Decoding end =
        short_forms::Decode({at.source, at.target}, at.source_end, at.target_end);
    at.source = end.source;
    at.target = end.target;
#endif
}

/// Converts until `stop` is reached or passed, or a side has too little left for a step. The position is a
/// local one, so that the compiler keeps it in registers: what is stored cannot change it.
DWORD decode_Steps(Decoding& position, const unsigned char* stop, bool strict)
{
    Decoding at = position;
    const bool fast = short_forms::Are_Supported();
    while (at.source < stop && has_Room(at))
    {
        if (fast)
            take_Short_Forms(at);
        if (at.source >= stop || !has_Room(at))
            break;
        if (decode_Step(at))
        {
            continue;
        }
        const utf8::Sequence sequence = utf8::Read_Sequence(at.source, at.Source_Left());
        if (strict && !sequence.good)
        {
            return ERROR_NO_UNICODE_TRANSLATION;
        }
        put_Character(at, sequence.character);
        at.source += sequence.size;
    }
    position = at;
    return ERROR_SUCCESS;
}

/// Converts the end of a text, where steps would leave the bounds, by steps in a copy that is padded with
/// NULs. They end whatever sequence the text breaks off in, and give one unit each, which are not counted.
DWORD decode_Tail(Decoding& at, bool strict)
{
    constexpr std::size_t LONGEST = 3 * STEP_TARGET;
    const std::size_t size = at.Source_Left();
    if (size > LONGEST)
    {
        // More units than the target has place for: three bytes give at least one.
        return ERROR_INSUFFICIENT_BUFFER;
    }
    unsigned char bytes[LONGEST + STEP_SOURCE] = {};
    wchar_t units[LONGEST + 2 * STEP_TARGET];
    std::copy_n(at.source, size, bytes);
    Decoding copy{bytes, bytes + size + STEP_SOURCE, units, units + LONGEST + 2 * STEP_TARGET};
    const DWORD error = decode_Steps(copy, bytes + size, strict);
    if (error != ERROR_SUCCESS)
    {
        return error;
    }
    const auto count = static_cast<std::size_t>((copy.target - units) - (copy.source - (bytes + size)));
    if (count > at.Target_Left())
    {
        return ERROR_INSUFFICIENT_BUFFER;
    }
    at.target = std::copy_n(units, count, at.target);
    return ERROR_SUCCESS;
}

} // namespace

Converted Decode_Utf8(const unsigned char* source, std::size_t size, wchar_t* target, std::size_t capacity,
                      bool strict)
{
    Decoding at{source, source + size, target, target + capacity};
    DWORD error = decode_Steps(at, at.source_end, strict);
    if (error == ERROR_SUCCESS)
    {
        decode_Ascii(at);
        error = at.Source_Left() == 0 ? ERROR_SUCCESS : decode_Tail(at, strict);
    }
    return {static_cast<std::size_t>(at.target - target), error};
}

} // namespace qn_platform
