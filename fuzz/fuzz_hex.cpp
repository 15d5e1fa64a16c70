#include "fuzz_input.h"
#include "strings/text_utilities.h"

#include <vector>

// Lib_Read_Buffer against a model of its passes, and what Lib_Write_Buffer writes read back.

namespace
{

using Bytes = std::vector<unsigned char>;
using Text = std::u16string;

int digit_Of(char16_t ch)
{
    const std::size_t nPlace = Text(u"0123456789abcdefABCDEF").find(ch);
    return nPlace == Text::npos ? -1 : static_cast<int>(nPlace > 15 ? nPlace - 6 : nPlace);
}

/// One or two units: white space, a sign, digits. A group of `0` and `x` is the digit 0.
unsigned char group_Model(const Text& strGroup)
{
    std::size_t i = 0;
    while (i < strGroup.size() && (strGroup[i] == u' ' || (strGroup[i] >= u'\t' && strGroup[i] <= u'\r')))
        ++i;
    const bool bMinus = i < strGroup.size() && strGroup[i] == u'-';
    if (i < strGroup.size() && (bMinus || strGroup[i] == u'+'))
        ++i;
    int nValue = 0;
    for (; i < strGroup.size() && digit_Of(strGroup[i]) >= 0; ++i)
        nValue = nValue * 16 + digit_Of(strGroup[i]);
    return static_cast<unsigned char>(bMinus ? -nValue : nValue);
}

Bytes pairs_Model(const Text& strText)
{
    Bytes Result;
    for (std::size_t i = 0; i < strText.size(); i += 2)
        Result.push_back(group_Model(strText.substr(i, 2)));
    return Result;
}

Bytes separated_Model(const Text& strText, char16_t chSeparator)
{
    const std::size_t nEnd = strText.size();
    std::size_t nCount = 0;
    std::size_t nPrevious = 0;
    for (std::size_t p = 0; p <= nEnd; ++p)
    {
        if (p != nEnd && strText[p] != chSeparator)
            continue;
        nCount += p - nPrevious >= 2 ? 1 : 0;
        nPrevious = p;
    }
    Bytes Result;
    Text strStore;
    nPrevious = 0;
    for (std::size_t p = 0; p < nEnd; ++p)
    {
        if (strText[p] != chSeparator)
        {
            if (strStore.size() < 2)
                strStore += strText[p];
            continue;
        }
        if (p - nPrevious >= 2)
        {
            Result.push_back(group_Model(strStore));
            strStore.clear();
        }
        nPrevious = p;
    }
    if (!strStore.empty() && Result.size() < nCount)
        Result.push_back(group_Model(strStore));
    FUZZ_CHECK(Result.size() == nCount);
    return Result;
}

void check_Read(const Text& strText, char16_t chSeparator)
{
    const Bytes Before = {1, 2, 3};
    Lib_Buffer Output(Before);
    Lib_Read_Buffer(Wide_Text(strText), Output, static_cast<wchar_t>(chSeparator));
    Bytes Expected = Before;
    if (!strText.empty())
        Expected = chSeparator == 0 ? pairs_Model(strText) : separated_Model(strText, chSeparator);
    FUZZ_CHECK(Output.Is_Equals(Expected.data(), Expected.size()));
}

void check_Round_Trip(Bytes Data, char16_t chSeparator)
{
    Lib_String strText(L"before");
    Lib_Write_Buffer(Data.size(), Data.data(), strText, static_cast<wchar_t>(chSeparator));
    Text strExpected;
    for (std::size_t i = 0; i < Data.size(); ++i)
    {
        if (i != 0 && chSeparator != 0)
            strExpected += chSeparator;
        strExpected += u"0123456789abcdef"[Data[i] >> 4];
        strExpected += u"0123456789abcdef"[Data[i] & 15];
    }
    FUZZ_CHECK(As_Model(strText) == strExpected);
    if (digit_Of(chSeparator) >= 0)
        return;
    Lib_Buffer Back;
    Lib_Read_Buffer(strText, Back, static_cast<wchar_t>(chSeparator));
    FUZZ_CHECK(Back.Is_Equals(Data.data(), Data.size()));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t nSize)
{
    Fuzz_Input Input(pData, nSize);
    const char16_t chSeparator = u"\0\0::- a\u2013"[Input.Take_Choice(8)];
    check_Round_Trip(Bytes(Input.Get_Data(), Input.Get_Data() + Input.Get_Left()), chSeparator);
    // The first alphabet is nearly all digits, for the road that reads long runs of them at once.
    const bool bRuns = Input.Take_Choice(2) == 0;
    check_Read(Input.Take_Text(bRuns ? u"0123456789abcdef0123456789ABCDEF0123456789abcdef0123456789abcdefg:"
                                     : u"019afAFgGxXzZ-+ \t:::@`/\u0130\u0430\uFF21",
                               4096),
               chSeparator);
    return 0;
}
