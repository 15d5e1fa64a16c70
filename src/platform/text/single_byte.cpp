#include "platform/text/conversion.h"
#include "platform/text/single_byte_pages.h"
#include "platform/text/vectors.h"

namespace qn_platform
{

namespace
{

#if QN_VECTORS

using namespace vectors;

/// Widens the blocks at the front whose bytes are all their own units; how many bytes that were.
std::size_t widen_Kept(const Single_Byte_Page& page, const unsigned char* source, std::size_t size,
                       wchar_t* target)
{
    const Block mask = Bytes(page.kept_mask);
    std::size_t done = 0;
    for (; size - done >= 16; done += 16)
    {
        const Block block = Load(source + done);
        if (High_Bits(_mm_cmpeq_epi8(_mm_and_si128(block, mask), Bytes(0x80))) != 0)
        {
            break;
        }
        Store_Widened(target + done, block);
    }
    return done;
}

/// Narrows the blocks at the front whose units are all their own bytes; how many units that were.
std::size_t narrow_Kept(const Single_Byte_Page& page, const wchar_t* source, std::size_t size,
                        unsigned char* target)
{
    const Block mask = Bytes(page.kept_mask);
    std::size_t done = 0;
    for (; size - done >= 16; done += 16)
    {
        const Block first = Load(source + done);
        const Block second = Load(source + done + 8);
        const Block high = _mm_and_si128(_mm_or_si128(first, second), Units(0xFF00));
        const Block packed = _mm_packus_epi16(first, second);
        if (High_Bits(_mm_cmpeq_epi8(high, Bytes(0))) != 0xFFFF ||
            High_Bits(_mm_cmpeq_epi8(_mm_and_si128(packed, mask), Bytes(0x80))) != 0)
        {
            break;
        }
        Store(target + done, packed);
    }
    return done;
}

#else

std::size_t widen_Kept(const Single_Byte_Page&, const unsigned char*, std::size_t, wchar_t*) { return 0; }

std::size_t narrow_Kept(const Single_Byte_Page&, const wchar_t*, std::size_t, unsigned char*) { return 0; }

#endif

/// How many units are taken one by one where a block cannot be taken whole.
constexpr std::size_t STEP = 16;

std::size_t step_End(std::size_t done, std::size_t size) { return size - done < STEP ? size : done + STEP; }

} // namespace

Converted Decode_Single_Byte(const Single_Byte_Page& page, const unsigned char* source, std::size_t size,
                             wchar_t* target, std::size_t capacity)
{
    if (capacity < size)
    {
        return {0, ERROR_INSUFFICIENT_BUFFER};
    }
    for (std::size_t done = 0; done < size;)
    {
        done += widen_Kept(page, source + done, size - done, target + done);
        for (const std::size_t end = step_End(done, size); done < end; ++done)
        {
            target[done] = static_cast<wchar_t>(page.Unit_Of(source[done]));
        }
    }
    return {size, ERROR_SUCCESS};
}

Converted Encode_Single_Byte(const Single_Byte_Page& page, const wchar_t* source, std::size_t size,
                             unsigned char* target, std::size_t capacity, unsigned char substitute,
                             bool& substituted)
{
    if (capacity < size)
    {
        return {0, ERROR_INSUFFICIENT_BUFFER};
    }
    for (std::size_t done = 0; done < size;)
    {
        done += narrow_Kept(page, source + done, size - done, target + done);
        for (const std::size_t end = step_End(done, size); done < end; ++done)
        {
            const unsigned char byte = page.Byte_Of(source[done]);
            const bool unknown = byte == 0 && source[done] != 0;
            substituted |= unknown;
            target[done] = unknown ? substitute : byte;
        }
    }
    return {size, ERROR_SUCCESS};
}

bool Has_Unknown_Units(const Single_Byte_Page& page, const wchar_t* source, std::size_t size)
{
    for (std::size_t i = 0; i < size; ++i)
    {
        if (page.Byte_Of(source[i]) == 0 && source[i] != 0)
        {
            return true;
        }
    }
    return false;
}

} // namespace qn_platform
