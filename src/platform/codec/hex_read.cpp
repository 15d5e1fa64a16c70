#include "platform/codec/hex_text.h"

#include <algorithm>

namespace qn_platform::hex_text
{

namespace
{

constexpr unsigned int NO_DIGIT = 16;

unsigned int value_Of(char character)
{
    if (character >= '0' && character <= '9')
    {
        return static_cast<unsigned int>(character - '0');
    }
    const char lower = static_cast<char>(character | 0x20);
    return lower >= 'a' && lower <= 'f' ? static_cast<unsigned int>(lower - 'a' + 10) : NO_DIGIT;
}

/// Bytes that are counted, and kept if there is a place for them.
struct Bytes
{
    unsigned char* target;
    std::size_t count = 0;

    void Put(unsigned int byte)
    {
        if (target != nullptr)
        {
            target[count] = static_cast<unsigned char>(byte);
        }
        ++count;
    }
};

/// Takes the pair at the front of the text.
bool take_Pair(std::string_view& text, Bytes& bytes)
{
    if (text.size() < 2 || value_Of(text[0]) == NO_DIGIT || value_Of(text[1]) == NO_DIGIT)
    {
        return false;
    }
    bytes.Put(value_Of(text[0]) << 4 | value_Of(text[1]));
    text.remove_prefix(2);
    return true;
}

/// Takes blanks and tabs off the front; their number.
std::size_t take_Blanks(std::string_view& text)
{
    const std::size_t count = std::min(text.find_first_not_of(" \t"), text.size());
    text.remove_prefix(count);
    return count;
}

/// Takes an address and the gap behind it; only a strict reader wants a certain one.
bool take_Address(std::string_view& line, std::size_t wanted, bool strict)
{
    std::size_t digits = 0;
    std::size_t address = 0;
    for (; digits < line.size() && value_Of(line[digits]) != NO_DIGIT; ++digits)
    {
        address = (address & 0x0FFFFFFF) << 4 | value_Of(line[digits]);
    }
    if (digits < 4 || digits > 8 || (strict && address != wanted))
    {
        return false;
    }
    line.remove_prefix(digits);
    const bool tab = line.starts_with('\t');
    return take_Blanks(line) >= (tab ? 1 : 2);
}

/// One line that is more than blanks.
bool read_Line(std::string_view line, Form form, bool strict, Bytes& bytes)
{
    take_Blanks(line);
    if (form.address && !take_Address(line, bytes.count, strict))
    {
        return false;
    }
    const std::size_t before = bytes.count;
    while (take_Pair(line, bytes))
    {
        const std::size_t gap = take_Blanks(line);
        if (form.characters && gap >= 3)
        {
            return !strict || gap + line.size() >= 3 + (bytes.count - before);
        }
        if (line.empty())
        {
            return !form.characters;
        }
        if (gap >= 3 || (strict && gap == 0))
        {
            return false;
        }
    }
    return false;
}

} // namespace

std::optional<std::size_t> Read(std::string_view text, Form form, bool strict, unsigned char* target)
{
    Bytes bytes{target};
    while (!text.empty())
    {
        const std::size_t end = std::min(text.find('\n'), text.size());
        std::string_view line = text.substr(0, end);
        text.remove_prefix(std::min(end + 1, text.size()));
        if (line.ends_with('\r'))
        {
            line.remove_suffix(1);
        }
        if (line.find_first_not_of(" \t") != line.npos && !read_Line(line, form, strict, bytes))
        {
            return std::nullopt;
        }
    }
    return bytes.count;
}

std::optional<std::size_t> Read_Raw(std::string_view text, bool strict, unsigned char* target)
{
    Bytes bytes{target};
    while (!text.empty())
    {
        if (!take_Pair(text, bytes))
        {
            const bool at_end = text.find_first_not_of("\r\n") == text.npos;
            const std::size_t blanks = std::min(text.find_first_not_of(" \t\r\n"), text.size());
            if (blanks == 0 || (strict && !at_end))
            {
                return std::nullopt;
            }
            text.remove_prefix(blanks);
        }
    }
    return bytes.count;
}

} // namespace qn_platform::hex_text
