#include "platform/text.h"
#include "platform/text/single_byte_pages.h"

namespace qn_platform
{

namespace
{

/// What each byte of one page is in another, by way of the 16-bit characters.
struct Byte_Map
{
    unsigned char bytes[256];

    constexpr Byte_Map(const Single_Byte_Page& from, const Single_Byte_Page& to) : bytes()
    {
        for (unsigned int i = 1; i < 256; ++i)
        {
            const unsigned char byte = to.Byte_Of(from.Unit_Of(static_cast<unsigned char>(i)));
            bytes[i] = byte != 0 ? byte : static_cast<unsigned char>('?');
        }
    }
};

constexpr Byte_Map TO_OEM{PAGE_1252, PAGE_437};
constexpr Byte_Map TO_ANSI{PAGE_437, PAGE_1252};

BOOL map_Text(const Byte_Map& map, LPCSTR source, LPSTR target)
{
    if (source == nullptr || target == nullptr)
    {
        return FALSE;
    }
    do
    {
        *target = static_cast<char>(map.bytes[static_cast<unsigned char>(*source++)]);
    } while (*target++ != '\0');
    return TRUE;
}

} // namespace

BOOL CharToOemA(LPCSTR source, LPSTR target) { return map_Text(TO_OEM, source, target); }

BOOL OemToCharA(LPCSTR source, LPSTR target) { return map_Text(TO_ANSI, source, target); }

} // namespace qn_platform
