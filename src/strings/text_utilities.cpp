#include "strings/text_utilities.h"

#include "foundation/alloc.h"
#include "platform/runtime_text.h"
#include "strings/characters.h"
#include "strings/scan.h"
#include "strings/width_conversion.h"

#include <climits>
#include <cstring>
#include <memory>
#include <new>

Lib_String Lib_Combine_Path(const wchar_t* pLeft, const wchar_t* pRight)
{
    Lib_String strPath;
    strPath.Format(L"%s\\%s", pLeft, pRight);
    return strPath;
}

Lib_String Lib_Int_To_String(int nValue)
{
    Lib_String strText;
    strText.Format(L"%d", nValue);
    return strText;
}

Lib_String Lib_Double_To_String(double dValue)
{
    Lib_String strText;
    strText.Format(L"%f", dValue);
    return strText;
}

int Lib_String_To_Int(const wchar_t* pText) { return Lib_String_To_Int(pText, 10); }

int Lib_String_To_Int(const wchar_t* pText, int nBase)
{
    if (pText == nullptr || nBase < 0 || nBase == 1 || nBase > 36)
        return 0;
    return qn_runtime::Parse_Int(pText, nBase);
}

double Lib_String_To_Double(const wchar_t* pText)
{
    const width_conversion::Narrow_Text narrow(pText);
    return narrow.Get_Text() != nullptr ? qn_runtime::Parse_Double(narrow.Get_Text()) : 0.0;
}

Lib_String Lib_Increment_String(const wchar_t* pText)
{
    const int nLength = lstrlenW(pText);
    int nPrefix = nLength;
    while (nPrefix > 1 && pText[nPrefix - 1] >= L'0' && pText[nPrefix - 1] <= L'9')
        --nPrefix;
    if (nPrefix == nLength)
        return Lib_String(pText) + L'0';

    const Lib_String strPrefix = Lib_String(pText).Left(static_cast<unsigned long long>(nPrefix));
    const unsigned int nNumber = static_cast<unsigned int>(Lib_String_To_Int(pText + nPrefix));
    Lib_String strNext;
    strNext.Format(L"%s%d", strPrefix.GetW(), static_cast<int>(nNumber + 1));
    return strNext;
}

namespace
{

// The units before the first NUL. UTF-8 without a NUL gives none, and is quicker to search.
unsigned long long length_Of(const wchar_t* pUnits, int nUnits, const char* pBytes, int nBytes)
{
    const auto nLength = static_cast<unsigned long long>(nUnits);
    if (nBytes > 0 && std::memchr(pBytes, 0, static_cast<std::size_t>(nBytes)) == nullptr)
        return nLength;
    return scan::Find_Character(pUnits, nLength, L'\0');
}

// Gives the output the converted text: into its present block if that has the room, else in a block that fits
// exactly.
void take_Text(Lib_String& strOutput, Lib_String& strText)
{
    if (strText.Get_Length() <= strOutput.Get_Alloc_Length())
    {
        strOutput = strText.GetW();
        return;
    }
    strText.Free_Extra();
    strOutput = strText;
}

} // namespace

// One conversion, at the price of room for the most units that the bytes can give, one for each byte; -1,
// which means a text up to its NUL to the platform, is measured by the platform first.
bool Lib_UTF8_Buffer_To_WString(unsigned char* pData, unsigned long nSize, Lib_String& strOutput)
{
    strOutput.Empty();
    const int nBytes = static_cast<int>(static_cast<unsigned int>(nSize));
    if (nBytes < -1)
        return false;
    if (nBytes == 0)
    {
        strOutput.Flush();
        return true;
    }
    const char* pBytes = reinterpret_cast<const char*>(pData);
    const int nCapacity = nBytes > 0 ? nBytes : MultiByteToWideChar(CP_UTF8, 0, pBytes, nBytes, nullptr, 0);
    if (nCapacity == 0 || pData == nullptr)
        return false;
    Lib_String strText;
    wchar_t* pUnits = strText.Get_Buffer(static_cast<unsigned long long>(nCapacity));
    const int nUnits = MultiByteToWideChar(CP_UTF8, 0, pBytes, nBytes, pUnits, nCapacity);
    if (nUnits == 0)
        return false;
    pUnits[nUnits] = 0;
    strText.Release_Buffer(length_Of(pUnits, nUnits, pBytes, nBytes));
    take_Text(strOutput, strText);
    return true;
}

namespace
{

// Whether a few units suggest that a text is ASCII.
bool looks_Ascii(const wchar_t* pText, int nUnits)
{
    return pText != nullptr && (pText[0] | pText[nUnits / 3] | pText[nUnits / 2] | pText[nUnits - 1]) < 0x80;
}

// ASCII gives a byte for each unit, so it is converted into the output's own block. False for any other text.
bool take_Ascii(const wchar_t* pText, int nUnits, Lib_Buffer& output)
{
    const auto nSize = static_cast<unsigned long long>(nUnits);
    void* pBlock = Lib_Alloc(false, nSize);
    if (pBlock != nullptr && WideCharToMultiByte(CP_UTF8, 0, pText, nUnits, static_cast<char*>(pBlock),
                                                 nUnits, nullptr, nullptr) == nUnits)
    {
        output.Attach(pBlock, nSize);
        return true;
    }
    Lib_Free(pBlock);
    return false;
}

} // namespace

bool Lib_WString_To_UTF8_Buffer(const wchar_t* pText, unsigned long nSize, Lib_Buffer& output)
{
    output.Flush();
    const int nUnits = static_cast<int>(static_cast<unsigned int>(nSize));
    if (nUnits < -1)
        return false;
    if (nUnits == 0)
        return true;
    if (nUnits > 0 && looks_Ascii(pText, nUnits) && take_Ascii(pText, nUnits, output))
        return true;
    // A short text goes through room for the most bytes that its units can give, and is converted once.
    constexpr int nShort = 0x10000;
    char local[512];
    std::unique_ptr<char[]> pBlock;
    char* pBytes = local;
    int nCapacity = nUnits > 0 && nUnits <= nShort ? 3 * nUnits : 0;
    if (nCapacity == 0)
        nCapacity = WideCharToMultiByte(CP_UTF8, 0, pText, nUnits, nullptr, 0, nullptr, nullptr);
    if (nCapacity > static_cast<int>(sizeof(local)))
    {
        pBlock.reset(new (std::nothrow) char[static_cast<std::size_t>(nCapacity)]);
        pBytes = pBlock.get();
    }
    if (nCapacity == 0 || pBytes == nullptr)
        return false;
    const int nBytes = WideCharToMultiByte(CP_UTF8, 0, pText, nUnits, pBytes, nCapacity, nullptr, nullptr);
    if (nBytes == 0)
        return false;
    output.Attach_Copy(pBytes, static_cast<unsigned long long>(nBytes));
    return output.Get_Size() != 0;
}

Lib_Buffer convertWcharToChar(const Lib_Buffer& buffer)
{
    if (!IsTextUnicode(buffer.Get_Ptr(), static_cast<int>(buffer.Get_Size()), nullptr))
        return buffer;
    Lib_StringW strText;
    const std::size_t nUnits = static_cast<std::size_t>(buffer.Get_Size() / sizeof(wchar_t));
    wchar_t* pUnits = strText.Get_Buffer(nUnits + 1);
    std::memcpy(pUnits, buffer.Get_Ptr(), nUnits * sizeof(wchar_t));
    pUnits[nUnits] = 0;
    strText.Release_Buffer();

    const LibT_Buffer<char> narrow = strText.GetA();
    return Lib_Buffer(narrow.Get_Size() != 0 ? strText.Get_Length() : 0, narrow.Get_Ptr(), true);
}
