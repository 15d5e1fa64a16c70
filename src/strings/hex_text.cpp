// Lib_Write_Buffer and Lib_Read_Buffer: bytes as hex text and back.

#include "platform/runtime_text.h"
#include "strings/characters.h"
#include "strings/hex_kernels.h"
#include "strings/text_utilities.h"

#include <algorithm>
#include <new>

void Lib_Write_Buffer(unsigned long long nSize, void* pData, Lib_String& strOutput, wchar_t chSeparator)
{
    strOutput.Empty();
    if (pData == nullptr || nSize == 0)
        return;
    if (nSize > ~0ULL / 3)
        throw std::bad_alloc();
    const auto* pBytes = static_cast<const unsigned char*>(pData);
    const unsigned long long nLength = chSeparator == 0 ? 2 * nSize : 3 * nSize - 1;
    wchar_t* pText = strOutput.Get_Buffer_Set_Length(nLength);
    if (chSeparator == 0)
        hex::Write(pBytes, nSize, pText);
    else
        hex::Write_Separated(pBytes, nSize, pText, chSeparator);
}

namespace
{

// A group of one or two units as Lib_String_To_Int reads it at base 16; the low 8 bits count.
unsigned char read_Group(const wchar_t* pUnits, std::size_t nUnits)
{
    const wchar_t group[3] = {pUnits[0], nUnits > 1 ? pUnits[1] : L'\0', 0};
    return static_cast<unsigned char>(qn_runtime::Parse_Int(group, 16));
}

void read_Pairs(const wchar_t* pText, std::size_t nLength, Lib_Buffer& output)
{
    const std::size_t nBytes = (nLength + 1) / 2;
    output.Set_Size(nBytes);
    if (output.Get_Size() != nBytes)
        return;
    auto* pBytes = static_cast<unsigned char*>(output.Get_Ptr());
    for (std::size_t i = 0; i < nBytes;)
    {
        // Hex digits go in long runs; a group with anything else is read by the rule for numbers.
        i += hex::Read(pText + 2 * i, nLength / 2 - std::min(i, nLength / 2), pBytes + i);
        if (i < nBytes)
        {
            pBytes[i] = read_Group(pText + 2 * i, nLength - 2 * i);
            ++i;
        }
    }
}

// Whether a byte ends at a position: at least two units after the last separator.
class Byte_Boundaries
{
public:
    bool Is_Boundary(std::size_t nPosition) const noexcept { return nPosition - m_nPrevious >= 2; }
    void Pass_Separator(std::size_t nPosition) noexcept { m_nPrevious = nPosition; }

private:
    std::size_t m_nPrevious = 0;
};

std::size_t count_Bytes(const wchar_t* pText, std::size_t nLength, wchar_t chSeparator) noexcept
{
    Byte_Boundaries boundaries;
    std::size_t nBytes = 0;
    for (std::size_t i = 0; i < nLength; ++i)
    {
        if (pText[i] != chSeparator)
            continue;
        nBytes += boundaries.Is_Boundary(i);
        boundaries.Pass_Separator(i);
    }
    return nBytes + boundaries.Is_Boundary(nLength);
}

void read_Separated(const wchar_t* pText, std::size_t nLength, Lib_Buffer& output, wchar_t chSeparator)
{
    const std::size_t nBytes = count_Bytes(pText, nLength, chSeparator);
    output.Set_Size(nBytes);
    if (output.Get_Size() != nBytes)
        return;
    auto* pBytes = static_cast<unsigned char*>(output.Get_Ptr());
    Byte_Boundaries boundaries;
    wchar_t pending[2];
    std::size_t nPending = 0;
    std::size_t nStored = 0;
    for (std::size_t i = 0; i < nLength; ++i)
    {
        if (pText[i] != chSeparator)
        {
            if (nPending < 2)
                pending[nPending++] = pText[i];
            continue;
        }
        if (boundaries.Is_Boundary(i))
        {
            pBytes[nStored++] = read_Group(pending, nPending);
            nPending = 0;
        }
        boundaries.Pass_Separator(i);
    }
    if (nPending != 0 && nStored < nBytes)
        pBytes[nStored] = read_Group(pending, nPending);
}

} // namespace

void Lib_Read_Buffer(const wchar_t* pText, Lib_Buffer& output, wchar_t chSeparator)
{
    if (pText == nullptr || *pText == 0)
        return;
    const std::size_t nLength = characters::Length(pText);
    if (chSeparator == 0)
        read_Pairs(pText, nLength, output);
    else
        read_Separated(pText, nLength, output, chSeparator);
}
