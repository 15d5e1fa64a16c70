#include "platform/codec/hex_text.h"

#include <algorithm>

namespace qn_platform::hex_text
{

namespace
{

constexpr std::size_t LINE_BYTES = 16;
constexpr char DIGITS[] = "0123456789abcdef";

/// Text that is counted, and kept if there is a place for it.
class Output
{
public:
    explicit Output(char* text) : m_pText(text) {}

    void Put(std::size_t count, char character)
    {
        if (m_pText != nullptr)
        {
            std::fill_n(m_pText + m_nLength, count, character);
        }
        m_nLength += count;
    }

    void Put(std::string_view text)
    {
        if (m_pText != nullptr)
        {
            std::copy(text.begin(), text.end(), m_pText + m_nLength);
        }
        m_nLength += text.size();
    }

    void Put_Pair(unsigned char byte)
    {
        if (m_pText != nullptr)
        {
            m_pText[m_nLength] = DIGITS[byte >> 4];
            m_pText[m_nLength + 1] = DIGITS[byte & 0xF];
        }
        m_nLength += 2;
    }

    std::size_t Length() const { return m_nLength; }

private:
    char* m_pText;
    std::size_t m_nLength = 0;
};

/// At least four digits, and a tab.
void put_Address(Output& output, std::size_t address)
{
    int shift = 12;
    while (shift < 28 && address >> (shift + 4) != 0)
    {
        shift += 4;
    }
    for (; shift >= 0; shift -= 4)
    {
        output.Put(1, DIGITS[address >> shift & 0xF]);
    }
    output.Put(1, '\t');
}

void put_Characters(Output& output, const unsigned char* bytes, std::size_t size)
{
    for (std::size_t i = 0; i < size; ++i)
    {
        const bool printable = bytes[i] >= 0x20 && bytes[i] < 0x7F;
        output.Put(1, printable ? static_cast<char>(bytes[i]) : '.');
    }
}

/// The pairs of a line; `parted` puts two blanks in the middle of sixteen.
void put_Pairs(Output& output, const unsigned char* bytes, std::size_t size, bool parted)
{
    for (std::size_t i = 0; i < size; ++i)
    {
        if (i != 0)
        {
            output.Put(parted && i == LINE_BYTES / 2 ? 2 : 1, ' ');
        }
        output.Put_Pair(bytes[i]);
    }
}

} // namespace

unsigned long long Write(const unsigned char* bytes, std::size_t size, Form form, std::string_view line_end,
                         char* text)
{
    constexpr std::size_t WIDTH = 3 * LINE_BYTES; // of the pairs of a full line
    Output output(text);
    const bool lines = !line_end.empty();
    const std::size_t line = lines ? LINE_BYTES : size;
    for (std::size_t at = 0; at < size; at += line)
    {
        const std::size_t taken = std::min(size - at, line);
        if (form.address)
        {
            put_Address(output, at);
        }
        const std::size_t begin = output.Length();
        put_Pairs(output, bytes + at, taken, lines);
        if (form.characters)
        {
            const std::size_t width = output.Length() - begin;
            output.Put(3 + (lines ? WIDTH - width : 0), ' ');
            put_Characters(output, bytes + at, taken);
        }
        output.Put(line_end);
    }
    return output.Length();
}

unsigned long long Write_Raw(const unsigned char* bytes, std::size_t size, std::string_view line_end,
                             char* text)
{
    if (text == nullptr)
    {
        return 2ULL * size + line_end.size();
    }
    Output output(text);
    for (std::size_t i = 0; i < size; ++i)
    {
        output.Put_Pair(bytes[i]);
    }
    output.Put(line_end);
    return output.Length();
}

} // namespace qn_platform::hex_text
