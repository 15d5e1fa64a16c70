#ifndef QNLIB_SRC_PLATFORM_CODEC_HEX_TEXT_H
#define QNLIB_SRC_PLATFORM_CODEC_HEX_TEXT_H

#include <cstddef>
#include <optional>
#include <string_view>

// Bytes as pairs of hexadecimal digits: raw, or in lines as people read them.
//
//     0000<TAB>41 42 43 44 45 46 47 48  49 4a 4b 4c 4d 4e 4f 50   ABCDEFGHIJKLMNOP
//
// The address and the characters each belong to two of the four forms. Without line ends all bytes are in one
// line, a blank apart.

namespace qn_platform::hex_text
{

struct Form
{
    bool address;
    bool characters;
};

/// The length of the text, which is written unless `text` is null.
unsigned long long Write(const unsigned char* bytes, std::size_t size, Form form, std::string_view line_end,
                         char* text);
unsigned long long Write_Raw(const unsigned char* bytes, std::size_t size, std::string_view line_end,
                             char* text);

/// The number of bytes, which are written unless `bytes` is null; none if the text is malformed. An address
/// is four to eight digits with a tab or two blanks behind them, and counts only if the reading is strict;
/// three blanks end the pairs of a line, and must have characters behind them if the form has.
std::optional<std::size_t> Read(std::string_view text, Form form, bool strict, unsigned char* bytes);
std::optional<std::size_t> Read_Raw(std::string_view text, bool strict, unsigned char* bytes);

} // namespace qn_platform::hex_text

#endif
