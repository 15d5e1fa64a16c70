#include "platform/codec/header_lines.h"

#include "platform/codec/base64_text.h"

#include <algorithm>

namespace qn_platform::header_lines
{

namespace
{

/// The label of the line that `text` begins with, whose front part has been seen already.
std::optional<std::string_view> find_Label(std::string_view text, std::string_view front)
{
    text.remove_prefix(front.size());
    const std::size_t length = text.find(DASHES);
    if (length == text.npos || text.substr(0, length).find_first_of("\r\n") != text.npos)
    {
        return std::nullopt;
    }
    return text.substr(0, length);
}

bool is_Blank(std::string_view text) { return std::all_of(text.begin(), text.end(), base64::Is_Blank); }

} // namespace

std::optional<Content> Find_Content(std::string_view text, bool strict)
{
    const std::size_t skipped = text.find(BEGIN);
    if (skipped == text.npos || (strict && !is_Blank(text.substr(0, skipped))))
    {
        return std::nullopt;
    }
    text.remove_prefix(skipped);
    const auto label = find_Label(text, BEGIN);
    if (!label)
    {
        return std::nullopt;
    }
    text.remove_prefix(BEGIN.size() + label->size() + DASHES.size());

    // No dash is a digit, so the first one must belong to the last line.
    const std::size_t length = std::min(text.find('-'), text.size());
    const std::string_view last = text.substr(length);
    const auto last_label = last.starts_with(END) ? find_Label(last, END) : std::nullopt;
    if (!last_label)
    {
        return std::nullopt;
    }
    const std::string_view behind = last.substr(END.size() + last_label->size() + DASHES.size());
    if (strict && (*last_label != *label || !is_Blank(behind)))
    {
        return std::nullopt;
    }
    return Content{text.substr(0, length), skipped};
}

} // namespace qn_platform::header_lines
