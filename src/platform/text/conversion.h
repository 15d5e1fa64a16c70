#ifndef QNLIB_SRC_PLATFORM_TEXT_CONVERSION_H
#define QNLIB_SRC_PLATFORM_TEXT_CONVERSION_H

#include "platform/types.h"

#include <cstddef>

// The converters behind MultiByteToWideChar and WideCharToMultiByte, after the arguments were checked. Each
// reads exactly the source it is given. Converting writes at most `capacity` units; after success only the
// units counted in the answer were written, after failure the target's content is undefined. Measuring
// tells the number of units that converting would write.

namespace qn_platform
{

/// How many units, or why not (then the count means nothing).
struct Converted
{
    std::size_t count;
    DWORD error;
};

/// UTF-8 and 16-bit text. `strict` fails with 1113 at the first bad sequence or unpaired surrogate, which
/// otherwise becomes U+FFFD: one for each maximal part of a bad sequence, one for each surrogate.
Converted Decode_Utf8(const unsigned char* source, std::size_t size, wchar_t* target, std::size_t capacity,
                      bool strict);
Converted Measure_Utf8(const unsigned char* source, std::size_t size, bool strict);
Converted Encode_Utf8(const wchar_t* source, std::size_t size, unsigned char* target, std::size_t capacity,
                      bool strict);
Converted Measure_As_Utf8(const wchar_t* source, std::size_t size, bool strict);

struct Single_Byte_Page;

/// Text of a code page with one byte a character. Both widths have the same number of units, so there is
/// nothing to measure. `substitute` stands for what the page lacks, and sets `substituted`.
Converted Decode_Single_Byte(const Single_Byte_Page& page, const unsigned char* source, std::size_t size,
                             wchar_t* target, std::size_t capacity);
Converted Encode_Single_Byte(const Single_Byte_Page& page, const wchar_t* source, std::size_t size,
                             unsigned char* target, std::size_t capacity, unsigned char substitute,
                             bool& substituted);

/// Whether the page lacks any of the units.
bool Has_Unknown_Units(const Single_Byte_Page& page, const wchar_t* source, std::size_t size);

} // namespace qn_platform

#endif
