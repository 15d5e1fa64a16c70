#ifndef QNLIB_SRC_PLATFORM_TEXT_UTF8_SHORT_FORMS_H
#define QNLIB_SRC_PLATFORM_TEXT_UTF8_SHORT_FORMS_H

#include <cstddef>

// The converters' fast road for machines with 32-byte vectors (QNLIB_AVX2_KERNELS tells whether it was
// compiled): text of characters below U+0800, which take one or two bytes, whatever the order in which they
// mix. Blocks have a fixed size on the source's side, so that nothing waits for the length of a word.

namespace qn_platform::short_forms
{

/// What lies between the pointers of a side is still to be read or written.
template <class Source, class Target>
struct Position
{
    const Source* source;
    Target* target;
};

using Decoding = Position<unsigned char, wchar_t>;
using Encoding = Position<wchar_t, unsigned char>;

/// Converts whole blocks from the front; ends before a block with anything but well-formed short forms, at a
/// character's begin, and well before the end of either side. What is stored behind the last unit that counts
/// is less than what the rest of the source gives.
Decoding Decode(Decoding at, const unsigned char* source_end, const wchar_t* target_end);
Encoding Encode(Encoding at, const wchar_t* source_end, const unsigned char* target_end);

/// Whether this machine can run them.
inline bool Are_Supported()
{
#if defined(QNLIB_AVX2_KERNELS)
    return __builtin_cpu_supports("avx2") != 0;
#else
    return false;
#endif
}

} // namespace qn_platform::short_forms

#endif
