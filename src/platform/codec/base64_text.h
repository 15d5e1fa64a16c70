#ifndef QNLIB_SRC_PLATFORM_CODEC_BASE64_TEXT_H
#define QNLIB_SRC_PLATFORM_CODEC_BASE64_TEXT_H

#include <cstddef>
#include <optional>
#include <string_view>

// Base64 as the platform writes it, in lines of 64 characters, and as it reads it.

namespace qn_platform::base64
{

/// The length of the text for `size` bytes; an empty `line_end` puts all into one line. No bytes have no
/// line.
unsigned long long Text_Length(unsigned long long size, std::string_view line_end);

/// Writes that text; the result is its end.
char* Write_Text(const unsigned char* bytes, std::size_t size, std::string_view line_end, char* text);

/// The number of bytes that a text stands for; none if it is malformed.
std::optional<std::size_t> Measure_Text(std::string_view text, bool strict);

/// Reads the first `size` bytes of a text that has been measured.
void Read_Text(std::string_view text, unsigned char* bytes, std::size_t size);

/// White space as text of any form may hold it.
constexpr bool Is_Blank(char character)
{
    return character == ' ' || character == '\t' || character == '\r' || character == '\n';
}

} // namespace qn_platform::base64

#endif
