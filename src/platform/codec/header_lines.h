#ifndef QNLIB_SRC_PLATFORM_CODEC_HEADER_LINES_H
#define QNLIB_SRC_PLATFORM_CODEC_HEADER_LINES_H

#include <cstddef>
#include <optional>
#include <string_view>

// The lines -----BEGIN <label>----- and -----END <label>----- around base64.

namespace qn_platform::header_lines
{

inline constexpr std::string_view BEGIN = "-----BEGIN ";
inline constexpr std::string_view END = "-----END ";
inline constexpr std::string_view DASHES = "-----";

/// What stands between the lines, and how much before them.
struct Content
{
    std::string_view text;
    std::size_t skipped;
};

/// None if a line is missing. The strict search wants the same label in both and nothing but white space
/// around them.
std::optional<Content> Find_Content(std::string_view text, bool strict);

} // namespace qn_platform::header_lines

#endif
