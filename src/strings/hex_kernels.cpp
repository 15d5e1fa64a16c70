#include "strings/hex_kernels.h"

#include <algorithm>

namespace
{

// Pairs read in one go: when a bad unit turns up, that many are read again one by one.
constexpr std::size_t Run = 64;

unsigned short digit(unsigned int nNibble) noexcept
{
    return static_cast<unsigned short>(nNibble + '0' + (nNibble > 9 ? 'a' - '0' - 10 : 0));
}

// The value of a hex digit, 16 or more for any other unit.
unsigned short value(unsigned short nUnit) noexcept
{
    const auto nDecimal = static_cast<unsigned short>(nUnit - '0');
    const auto nLetter = static_cast<unsigned short>((nUnit | 0x20) - 'a');
    const auto nLetter_Value = static_cast<unsigned short>(nLetter < 6 ? nLetter + 10 : 0x10);
    return nDecimal < 10 ? nDecimal : nLetter_Value;
}

bool read_Run(const wchar_t* pText, std::size_t nPairs, unsigned char* pBytes) noexcept
{
    unsigned short nSeen = 0;
    for (std::size_t i = 0; i < nPairs; ++i)
    {
        const unsigned short nHigh = value(static_cast<unsigned short>(pText[2 * i]));
        const unsigned short nLow = value(static_cast<unsigned short>(pText[2 * i + 1]));
        nSeen = static_cast<unsigned short>(nSeen | nHigh | nLow);
        pBytes[i] = static_cast<unsigned char>(nHigh << 4 | nLow);
    }
    return nSeen < 0x10;
}

} // namespace

void hex::Write(const unsigned char* __restrict pBytes, std::size_t nBytes,
                wchar_t* __restrict pText) noexcept
{
    for (std::size_t i = 0; i < nBytes; ++i)
    {
        pText[2 * i] = static_cast<wchar_t>(digit(pBytes[i] >> 4));
        pText[2 * i + 1] = static_cast<wchar_t>(digit(pBytes[i] & 0xF));
    }
}

void hex::Write_Separated(const unsigned char* pBytes, std::size_t nBytes, wchar_t* pText,
                          wchar_t chSeparator) noexcept
{
    for (std::size_t i = 0; i < nBytes; ++i)
    {
        if (i != 0)
            *pText++ = chSeparator;
        *pText++ = static_cast<wchar_t>(digit(pBytes[i] >> 4));
        *pText++ = static_cast<wchar_t>(digit(pBytes[i] & 0xF));
    }
}

std::size_t hex::Read(const wchar_t* __restrict pText, std::size_t nPairs,
                      unsigned char* __restrict pBytes) noexcept
{
    std::size_t nRead = 0;
    while (nPairs - nRead >= Run && read_Run(pText + 2 * nRead, Run, pBytes + nRead))
        nRead += Run;
    const std::size_t nLast = std::min(nPairs, nRead + Run);
    while (nRead < nLast && read_Run(pText + 2 * nRead, 1, pBytes + nRead))
        ++nRead;
    return nRead;
}
