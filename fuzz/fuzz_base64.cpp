#include "byte_text.h"
#include "fuzz_input.h"
#include "lib_platform.h"
#include "lib_protected.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

// base64_decode with any flags: what it answers, base64 itself against a model that takes one character at a
// time, and that what is decoded comes back when it is encoded and decoded again.

using namespace test_support;

namespace
{

constexpr DWORD WAYS = CRYPT_STRING_STRICT | CRYPT_STRING_NOCRLF | CRYPT_STRING_NOCR;

int value_Of(char ch)
{
    const std::size_t nPlace =
        std::string("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/").find(ch);
    return nPlace == std::string::npos || ch == '\0' ? -1 : static_cast<int>(nPlace);
}

/// The text without what may stand between, cut into digits and what follows them.
std::optional<std::string> decode_Model(const std::string& strText, bool bStrict)
{
    std::string strDense;
    for (const char ch : strText)
        if (std::string(bStrict ? "\r\n" : " \t\r\n").find(ch) == std::string::npos || ch == '\0')
            strDense += ch;
    std::size_t nDigits = 0;
    while (nDigits < strDense.size() && value_Of(strDense[nDigits]) >= 0)
        ++nDigits;
    const std::string strBehind = strDense.substr(nDigits);
    const std::size_t nLeft = nDigits % 4;
    const std::string strPadding(nLeft == 0 ? 0 : 4 - nLeft, '=');
    if (nLeft == 1)
        return std::nullopt;
    if (bStrict ? strBehind != strPadding
                : !strBehind.empty() && (strBehind[0] != '=' || !strBehind.starts_with(strPadding)))
        return std::nullopt;
    std::string strBytes;
    unsigned int nBits = 0;
    for (std::size_t i = 0; i < nDigits; ++i)
    {
        nBits = nBits << 6 | static_cast<unsigned int>(value_Of(strDense[i]));
        if (i % 4 != 0)
            strBytes += static_cast<char>(nBits >> (6 - 2 * (i % 4)));
    }
    const unsigned int nUnused = nLeft == 2 ? 0xFu : nLeft == 3 ? 0x3u : 0;
    if (bStrict && (nBits & nUnused) != 0)
        return std::nullopt;
    return strBytes;
}

bool is_Written(DWORD nForm)
{
    return nForm <= CRYPT_STRING_HEXASCII ||
           (nForm >= CRYPT_STRING_BASE64X509CRLHEADER && nForm <= CRYPT_STRING_HEXRAW);
}

void check_Round_Trip(const Lib_Buffer& Bytes, unsigned long nFlags)
{
    Lib_Buffer Text;
    const auto nForm = static_cast<DWORD>(nFlags) & ~WAYS;
    const bool bEncoded = base64_encode(Bytes, Text, nFlags);
    FUZZ_CHECK(bEncoded == (Bytes.Get_Ptr() != nullptr && is_Written(nForm)));
    if (!bEncoded)
        return;
    if (nForm != CRYPT_STRING_BINARY)
    {
        FUZZ_CHECK(static_cast<char*>(Text.Get_Ptr())[Text.Get_Size() - 1] == '\0');
        Text.Set_Size(Text.Get_Size() - 1);
    }
    Lib_Buffer Back;
    FUZZ_CHECK(base64_decode(Text, Back, nFlags | CRYPT_STRING_STRICT));
    FUZZ_CHECK(Back == Bytes);
    Lib_Buffer Any;
    FUZZ_CHECK(nForm != CRYPT_STRING_BASE64 ||
               (base64_decode(Text, Any, CRYPT_STRING_BASE64_ANY) && Any == Bytes));
}

void check_Decode(const std::string& strText, unsigned long nFlags)
{
    Lib_Buffer Output = To_Buffer("before");
    const bool bDecoded = base64_decode(To_Buffer(strText), Output, nFlags);
    FUZZ_CHECK(bDecoded || To_Text(Output) == "before");
    Lib_Buffer Same = To_Buffer("before");
    FUZZ_CHECK(base64_decode(strText, Same, nFlags) == bDecoded && Same == Output);
    Lib_Buffer Itself = To_Buffer(strText);
    FUZZ_CHECK(base64_decode(Itself, Itself, nFlags) == bDecoded);
    FUZZ_CHECK(Itself == (bDecoded ? Output : To_Buffer(strText)));

    const auto nForm = static_cast<DWORD>(nFlags) & ~WAYS;
    if (nForm == CRYPT_STRING_BASE64 && !strText.empty())
    {
        const auto Expected = decode_Model(strText, (nFlags & CRYPT_STRING_STRICT) != 0);
        FUZZ_CHECK(Expected.has_value() == bDecoded);
        FUZZ_CHECK(!bDecoded || To_Text(Output) == *Expected);
    }
    FUZZ_CHECK(nForm <= CRYPT_STRING_HEXRAW || !bDecoded);
    if (bDecoded)
        check_Round_Trip(Output, nFlags);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t nSize)
{
    Fuzz_Input Input(pData, nSize);
    const unsigned int nForm = Input.Take_Byte();
    const unsigned int nWays = Input.Take_Choice(16);
    unsigned long nFlags = nForm % 16 + (nForm >= 240 ? 0x100u : 0);
    nFlags |= static_cast<unsigned long>(nWays >> 1) << 29 & WAYS;
    const std::string strRest(reinterpret_cast<const char*>(Input.Get_Data()), Input.Get_Left());
    if ((nWays & 1) != 0)
        check_Round_Trip(To_Buffer(strRest), nFlags);
    else
        check_Decode(strRest, nFlags);
    return 0;
}
