#include "platform/text.h"
#include "platform/text/character_types.h"

#include <cstddef>

// How the answer is found. 16-bit text has bytes that 8-bit text, whatever its code page, does not have:
// NULs and other control codes. Without one of them nothing is taken for 16-bit text, so ASCII, Windows-1252
// and UTF-8 never are. With one, the statistics look at how well the data read as characters in each byte
// order. NULs at the end are a terminator and belong to no test but the one for NUL bytes.
//
// The answer is TRUE if a test that speaks for 16-bit text in this machine's byte order passes, and none that
// speaks against it does (an odd size or an illegal character). A blank or line end alone
// (IS_TEXT_UNICODE_CONTROLS) speaks for it only if the caller asks for no other such test: as two bytes of
// other data they are too common.

namespace qn_platform
{

namespace
{

/// Data as 16-bit units in either byte order, without the NULs at the end and without an odd last byte.
class Units
{
public:
    Units(const unsigned char* data, std::size_t size) : m_pData(data), m_nCount(size / 2)
    {
        while (m_nCount != 0 && Get(m_nCount - 1, false) == 0)
        {
            --m_nCount;
        }
    }

    std::size_t Count() const { return m_nCount; }

    unsigned int Get(std::size_t index, bool reversed) const
    {
        const unsigned char* const pair = m_pData + 2 * index;
        return pair[reversed ? 1 : 0] | (static_cast<unsigned int>(pair[reversed ? 0 : 1]) << 8);
    }

    template <class Test>
    bool Any(bool reversed, Test test) const
    {
        for (std::size_t i = 0; i < m_nCount; ++i)
        {
            if (test(Get(i, reversed)))
            {
                return true;
            }
        }
        return false;
    }

private:
    const unsigned char* m_pData;
    std::size_t m_nCount;
};

bool is_Layout(unsigned int unit)
{
    return unit == 0x0009 || unit == 0x000A || unit == 0x000D || unit == 0x0020 || unit == 0x3000;
}

/// The byte order mark of the other order, NUL, the two bytes of a line end as one unit, and U+FFFF.
bool is_Illegal(unsigned int unit)
{
    return unit == 0xFFFE || unit == 0x0000 || unit == 0x0A0D || unit == 0xFFFF;
}

/// A control code that 8-bit text does not have: all but those for layout, the end of a text and escape.
bool is_Foreign(unsigned int byte)
{
    return byte < 0x20 && !(byte >= 0x08 && byte <= 0x0D) && byte != 0x1A && byte != 0x1B;
}

/// How the data read in one byte order.
struct Reading
{
    std::size_t alphabetic = 0; // characters of the alphabets, U+0020 to U+1FFF, and layout
    std::size_t assigned = 0;   // characters at all, alphabetic ones and surrogate pairs included

    Reading(const Units& units, bool reversed)
    {
        unsigned int last = 0;
        for (std::size_t i = 0; i < units.Count(); ++i)
        {
            const unsigned int unit = units.Get(i, reversed);
            const bool pair = (last & 0xFC00) == 0xD800 && (unit & 0xFC00) == 0xDC00;
            const bool plain = is_Character(unit);
            assigned += pair ? 2 : (plain ? 1 : 0);
            alphabetic += plain && unit < 0x2000 ? 1 : 0;
            last = unit;
        }
    }

    static bool is_Character(unsigned int unit)
    {
        const bool reserved = unit >= 0xD800 && unit <= 0xF8FF; // surrogates and private use
        const unsigned int classes = Character_Classes(unit);
        return !reserved && classes != 0 && ((classes & C1_CNTRL) == 0 || is_Layout(unit) || unit == 0xFEFF);
    }

    /// Three quarters alphabetic, or all of it characters.
    bool Is_Text(std::size_t count) const
    {
        return count != 0 && (alphabetic * 4 >= count * 3 || assigned == count);
    }

    bool operator<(const Reading& other) const
    {
        return alphabetic != other.alphabetic ? alphabetic < other.alphabetic : assigned < other.assigned;
    }
};

/// Whether there is a control code that 8-bit text does not have. A NUL as the last byte is none: it may end
/// such a text.
bool has_Foreign_Byte(const Units& units)
{
    for (std::size_t i = 0; i < units.Count(); ++i)
    {
        const unsigned int unit = units.Get(i, false);
        const bool last_nul = i + 1 == units.Count() && unit <= 0xFF;
        if (is_Foreign(unit & 0xFF) || (is_Foreign(unit >> 8) && !last_nul))
        {
            return true;
        }
    }
    return false;
}

/// IS_TEXT_UNICODE_STATISTICS or its reverse: the order that reads as text, the better one if both do, 0 if
/// neither does.
INT test_Statistics(const Units& units)
{
    if (!has_Foreign_Byte(units))
    {
        return 0;
    }
    const Reading straight(units, false);
    const Reading reversed(units, true);
    const bool reversed_reads = reversed.Is_Text(units.Count());
    if (straight.Is_Text(units.Count()) && !(reversed_reads && straight < reversed))
    {
        return IS_TEXT_UNICODE_STATISTICS;
    }
    return reversed_reads ? IS_TEXT_UNICODE_REVERSE_STATISTICS : 0;
}

/// The tests of one byte order that look for single units; as the bits of the straight order.
INT test_Units(const Units& units, bool reversed)
{
    INT passed = 0;
    if (units.Count() != 0 &&
        !units.Any(reversed, [](unsigned int unit) { return unit == 0 || unit > 0x7F; }))
    {
        passed |= IS_TEXT_UNICODE_ASCII16;
    }
    if (units.Any(reversed, is_Layout))
    {
        passed |= IS_TEXT_UNICODE_CONTROLS;
    }
    if (units.Count() != 0 && units.Get(0, reversed) == 0xFEFF)
    {
        passed |= IS_TEXT_UNICODE_SIGNATURE;
    }
    return passed;
}

bool has_Nul(const unsigned char* data, std::size_t size)
{
    for (std::size_t i = 0; i < size; ++i)
    {
        if (data[i] == 0)
        {
            return true;
        }
    }
    return false;
}

INT run_Tests(const unsigned char* data, std::size_t size)
{
    constexpr INT REVERSE_SHIFT = 4; // from a bit of IS_TEXT_UNICODE_UNICODE_MASK to its reverse
    const Units units(data, size);
    INT passed =
        test_Units(units, false) | (test_Units(units, true) << REVERSE_SHIFT) | test_Statistics(units);
    passed |= units.Any(false, is_Illegal) ? IS_TEXT_UNICODE_ILLEGAL_CHARS : 0;
    passed |= size % 2 != 0 ? IS_TEXT_UNICODE_ODD_LENGTH : 0;
    passed |= has_Nul(data, size) ? IS_TEXT_UNICODE_NULL_BYTES : 0;
    return passed;
}

} // namespace

BOOL IsTextUnicode(LPCVOID data, int size, LPINT tests)
{
    const INT asked = tests != nullptr ? *tests : ~0;
    INT passed = 0;
    if (data != nullptr && size > 0)
    {
        passed = run_Tests(static_cast<const unsigned char*>(data), static_cast<std::size_t>(size)) & asked;
    }
    if (tests != nullptr)
    {
        *tests = passed;
    }
    INT speaking = asked & IS_TEXT_UNICODE_UNICODE_MASK;
    if (speaking != IS_TEXT_UNICODE_CONTROLS)
    {
        speaking &= ~IS_TEXT_UNICODE_CONTROLS;
    }
    return (passed & speaking) != 0 && (passed & IS_TEXT_UNICODE_NOT_UNICODE_MASK) == 0 ? TRUE : FALSE;
}

} // namespace qn_platform
