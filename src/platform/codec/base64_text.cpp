#include "platform/codec/base64_text.h"

#include "platform/codec/base64_kernels.h"

#include <algorithm>

namespace qn_platform::base64
{

namespace
{

constexpr std::size_t LINE_BYTES = 48;

/// What Measure_Text knows when it comes to the end of the digits.
struct Digits
{
    std::size_t count = 0;
    std::size_t end = 0; ///< behind the last one
    char last = 'A';
};

bool may_Stand_Between(char character, bool strict)
{
    return strict ? character == '\r' || character == '\n' : Is_Blank(character);
}

std::size_t skip_Blanks(std::string_view text, std::size_t at, bool strict)
{
    while (at < text.size() && may_Stand_Between(text[at], strict))
    {
        ++at;
    }
    return at;
}

Digits count_Digits(std::string_view text, bool strict)
{
    Digits digits;
    for (std::size_t at = 0;;)
    {
        const std::size_t run = Count_Digits(text.data() + at, text.size() - at);
        if (run != 0)
        {
            digits.count += run;
            digits.last = text[at + run - 1];
        }
        digits.end = at + run;
        at = skip_Blanks(text, digits.end, strict);
        if (at == digits.end || at == text.size())
        {
            return digits;
        }
    }
}

/// Whether what stands behind the digits ends them properly; `left_Over` is how many there are in the last
/// group.
bool ends_Well(std::string_view text, const Digits& digits, std::size_t left_over, bool strict)
{
    std::size_t at = skip_Blanks(text, digits.end, strict);
    if (at == text.size())
    {
        return left_over != 1 && (!strict || left_over == 0);
    }
    if (text[at] != '=' || left_over == 1 || (strict && left_over == 0))
    {
        return false;
    }
    at = skip_Blanks(text, at + 1, strict);
    if (left_over == 2)
    {
        if (at == text.size() || text[at] != '=')
        {
            return false;
        }
        at = skip_Blanks(text, at + 1, strict);
    }
    const int unused = left_over == 2 ? 0xF : 0x3;
    return !strict || (at == text.size() && (Value(digits.last) & unused) == 0);
}

} // namespace

unsigned long long Text_Length(unsigned long long size, std::string_view line_end)
{
    return (size + 2) / 3 * 4 + (size + LINE_BYTES - 1) / LINE_BYTES * line_end.size();
}

char* Write_Text(const unsigned char* bytes, std::size_t size, std::string_view line_end, char* text)
{
    const std::size_t line = line_end.empty() ? size : LINE_BYTES;
    while (size != 0)
    {
        const std::size_t taken = std::min(size, line);
        Encode(bytes, taken / 3, size, text);
        text += taken / 3 * 4;
        if (taken % 3 != 0)
        {
            Encode_Last(bytes + taken / 3 * 3, taken % 3, text);
            text += 4;
        }
        text = std::copy(line_end.begin(), line_end.end(), text);
        bytes += taken;
        size -= taken;
    }
    return text;
}

std::optional<std::size_t> Measure_Text(std::string_view text, bool strict)
{
    const Digits digits = count_Digits(text, strict);
    const std::size_t left_over = digits.count % 4;
    if (!ends_Well(text, digits, left_over, strict))
    {
        return std::nullopt;
    }
    return digits.count / 4 * 3 + (left_over != 0 ? left_over - 1 : 0);
}

void Read_Text(std::string_view text, unsigned char* bytes, std::size_t size)
{
    const char* at = text.data();
    unsigned char* const end = bytes + size;
    unsigned int bits = 0;
    unsigned int waiting = 0; // bits of a group that is begun
    while (bytes != end)
    {
        if (Is_Blank(*at))
        {
            ++at;
            continue;
        }
        if (waiting == 0)
        {
            const auto rest = static_cast<std::size_t>(text.data() + text.size() - at);
            const std::size_t groups =
                Decode(at, std::min(rest / 4, static_cast<std::size_t>(end - bytes) / 3), bytes);
            at += 4 * groups;
            bytes += 3 * groups;
            if (bytes == end)
            {
                return;
            }
        }
        const unsigned char value = Value(*at);
        if (value == NO_DIGIT)
        {
            continue; // a blank that the last groups ended before
        }
        ++at;
        bits = bits << 6 | value;
        waiting += 6;
        if (waiting > 6)
        {
            waiting -= 8;
            *bytes++ = static_cast<unsigned char>(bits >> waiting);
        }
    }
}

} // namespace qn_platform::base64
