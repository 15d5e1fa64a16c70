#include "fuzz_input.h"
#include "lib_platform.h"
#include "strings/text_utilities.h"

#include <memory>
#include <vector>

// UTF-8 to 16-bit text and back, against a decoder and an encoder that take one character at a time.

namespace
{

using Bytes = std::vector<unsigned char>;
using Text = std::u16string;

void append_Character(Text& strText, unsigned int nCharacter)
{
    if (nCharacter >= 0x10000)
    {
        strText += static_cast<char16_t>(0xD7C0 + (nCharacter >> 10));
        nCharacter = 0xDC00 | (nCharacter & 0x3FF);
    }
    strText += static_cast<char16_t>(nCharacter);
}

/// Which second bytes may follow a lead byte, and how many bytes follow in all (0: it is no lead byte).
struct Lead
{
    unsigned int m_nFollowing;
    unsigned int m_nLowest;
    unsigned int m_nHighest;
};

Lead classify(unsigned int nByte)
{
    if (nByte >= 0xC2 && nByte <= 0xDF)
        return {1, 0x80, 0xBF};
    if (nByte >= 0xE0 && nByte <= 0xEF)
        return {2, nByte == 0xE0 ? 0xA0u : 0x80u, nByte == 0xED ? 0x9Fu : 0xBFu};
    if (nByte >= 0xF0 && nByte <= 0xF4)
        return {3, nByte == 0xF0 ? 0x90u : 0x80u, nByte == 0xF4 ? 0x8Fu : 0xBFu};
    return {0, 0, 0};
}

/// Each longest beginning of a character that doesn't go on as one becomes a single U+FFFD.
Text decode_Model(const Bytes& Data)
{
    Text strText;
    for (std::size_t i = 0; i < Data.size();)
    {
        const unsigned int nFirst = Data[i++];
        if (nFirst < 0x80)
        {
            strText += static_cast<char16_t>(nFirst);
            continue;
        }
        const Lead lead = classify(nFirst);
        unsigned int nCharacter = nFirst & (0x3Fu >> lead.m_nFollowing);
        unsigned int nTaken = 0;
        for (; nTaken < lead.m_nFollowing && i < Data.size(); ++nTaken, ++i)
        {
            const unsigned int nLowest = nTaken == 0 ? lead.m_nLowest : 0x80;
            const unsigned int nHighest = nTaken == 0 ? lead.m_nHighest : 0xBF;
            if (Data[i] < nLowest || Data[i] > nHighest)
                break;
            nCharacter = nCharacter << 6 | (Data[i] & 0x3Fu);
        }
        append_Character(strText,
                         lead.m_nFollowing != 0 && nTaken == lead.m_nFollowing ? nCharacter : 0xFFFD);
    }
    return strText;
}

bool is_Between(unsigned int nUnit, unsigned int nLowest, unsigned int nHighest)
{
    return nUnit >= nLowest && nUnit <= nHighest;
}

Bytes encode_Model(const Text& strText)
{
    Bytes Result;
    for (std::size_t i = 0; i < strText.size(); ++i)
    {
        unsigned int n = strText[i];
        if (is_Between(n, 0xD800, 0xDBFF) && i + 1 < strText.size() &&
            is_Between(strText[i + 1], 0xDC00, 0xDFFF))
            n = 0x10000 + ((n & 0x3FF) << 10) + (strText[++i] & 0x3FFu);
        else if (is_Between(n, 0xD800, 0xDFFF))
            n = 0xFFFD;
        const unsigned int nFollowing = n < 0x80 ? 0 : n < 0x800 ? 1 : n < 0x10000 ? 2 : 3;
        const unsigned int nMarks[] = {0, 0xC0, 0xE0, 0xF0};
        Result.push_back(static_cast<unsigned char>(nMarks[nFollowing] | n >> 6 * nFollowing));
        for (unsigned int k = nFollowing; k-- > 0;)
            Result.push_back(static_cast<unsigned char>(0x80 | (n >> 6 * k & 0x3F)));
    }
    return Result;
}

/// The platform's operation at its exact capacity, one below, and with a block that ends where it must.
void check_Capacities(const Bytes& Data, const Text& strExpected)
{
    const auto* pSource = reinterpret_cast<const char*>(Data.data());
    const int nSize = static_cast<int>(Data.size());
    const int nUnits = static_cast<int>(strExpected.size());
    FUZZ_CHECK(MultiByteToWideChar(CP_UTF8, 0, pSource, nSize, nullptr, 0) == nUnits);
    const auto pTarget = std::make_unique<wchar_t[]>(strExpected.size());
    FUZZ_CHECK(MultiByteToWideChar(CP_UTF8, 0, pSource, nSize, pTarget.get(), nUnits) == nUnits);
    FUZZ_CHECK(Text(pTarget.get(), pTarget.get() + nUnits) == strExpected);
    if (nUnits < 2)
        return;
    const auto pShort = std::make_unique<wchar_t[]>(strExpected.size() - 1);
    SetLastError(ERROR_SUCCESS);
    FUZZ_CHECK(MultiByteToWideChar(CP_UTF8, 0, pSource, nSize, pShort.get(), nUnits - 1) == 0);
    FUZZ_CHECK(GetLastError() == ERROR_INSUFFICIENT_BUFFER);
}

void check_Encode(const Text& strText)
{
    const Bytes Expected = encode_Model(strText);
    Lib_Buffer Output(3);
    FUZZ_CHECK(Lib_WString_To_UTF8_Buffer(Wide_Text(strText), strText.size(), Output));
    FUZZ_CHECK(Output.Is_Equals(Expected.data(), Expected.size()));
    if (Expected.size() < 2)
        return;
    const int nShort = static_cast<int>(Expected.size()) - 1;
    const auto pShort = std::make_unique<char[]>(Expected.size() - 1);
    FUZZ_CHECK(WideCharToMultiByte(CP_UTF8, 0, Wide_Text(strText), static_cast<int>(strText.size()),
                                   pShort.get(), nShort, nullptr, nullptr) == 0);
}

void check_Decode(Bytes Data)
{
    const Text strExpected = decode_Model(Data);
    Lib_String strText(L"before");
    FUZZ_CHECK(Lib_UTF8_Buffer_To_WString(Data.data(), Data.size(), strText));
    // A NUL ends the string, but not the platform's text.
    FUZZ_CHECK(As_Model(strText) == strExpected.substr(0, strExpected.find(u'\0')));
    if (Data.empty())
        return;
    check_Capacities(Data, strExpected);
    check_Encode(strExpected);
    FUZZ_CHECK(decode_Model(encode_Model(strExpected)) == strExpected);
    const bool bRefused =
        MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, reinterpret_cast<const char*>(Data.data()),
                            static_cast<int>(Data.size()), nullptr, 0) == 0;
    FUZZ_CHECK(bRefused == (encode_Model(strExpected) != Data));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t nSize)
{
    Fuzz_Input Input(pData, nSize);
    switch (Input.Take_Choice(4))
    {
    case 0: // any units, and units around the surrogates
        check_Encode(Input.Take_Text(u"", 4096));
        break;
    case 1:
        check_Encode(Input.Take_Text(u"abcdefghijklm\u00E9\u0416\u07FF\u0800\uFFFD" +
                                         Text({0xD7FF, 0xD800, 0xDBFF, 0xDC00, 0xDFFF, 0xE000}),
                                     4096));
        break;
    default:
        check_Decode(Bytes(Input.Get_Data(), Input.Get_Data() + Input.Get_Left()));
    }
    return 0;
}
