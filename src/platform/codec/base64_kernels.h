#ifndef QNLIB_SRC_PLATFORM_CODEC_BASE64_KERNELS_H
#define QNLIB_SRC_PLATFORM_CODEC_BASE64_KERNELS_H

#include <cstddef>

// The loops of base64 over text without line ends or padding. The functions ending _Avx2 are compiled where
// QNLIB_AVX2_KERNELS is defined, and do a part from the front; the others choose them where the machine has
// them, and do the rest.

namespace qn_platform::base64
{

inline constexpr unsigned char NO_DIGIT = 0xFF;

/// The value of a character, NO_DIGIT if it is none of the alphabet.
unsigned char Value(char character);

/// Four characters for each of `groups` groups of three bytes. `readable` bytes may be read: with some behind
/// the last group the vectors get further.
void Encode(const unsigned char* bytes, std::size_t groups, std::size_t readable, char* text);

/// One or two bytes as four characters, padding included.
void Encode_Last(const unsigned char* bytes, std::size_t size, char* text);

/// How many of the `length` characters are digits, up to the first that is not.
std::size_t Count_Digits(const char* text, std::size_t length);

/// Three bytes for each group of four digits, up to the first group that has anything else; the result is the
/// number of groups.
std::size_t Decode(const char* text, std::size_t groups, unsigned char* bytes);

/// A number of groups, or of characters, from the front; they end at the last whole block before the end, or
/// before the first block with anything but digits.
std::size_t Encode_Avx2(const unsigned char* bytes, std::size_t groups, std::size_t readable, char* text);
std::size_t Count_Digits_Avx2(const char* text, std::size_t length);
std::size_t Decode_Avx2(const char* text, std::size_t groups, unsigned char* bytes);

} // namespace qn_platform::base64

#endif
