#include "fuzz_input.h"
#include "lib_platform.h"
#include "strings/string_lists.h"

#include <memory>
#include <utility>
#include <vector>

// Lib_Parse_String and Lib_Split_String against models that walk the text one unit at a time.

namespace
{

using Text = std::u16string;
using Pairs = std::vector<std::pair<Text, Text>>;

bool is_Space(char16_t ch)
{
    if (ch <= 0xFF)
        return (ch >= 0x09 && ch <= 0x0D) || ch == 0x20 || ch == 0x85 || ch == 0xA0;
    const wchar_t chWide = static_cast<wchar_t>(ch);
    WORD nType = 0;
    return GetStringTypeW(CT_CTYPE1, &chWide, 1, &nType) && (nType & C1_SPACE) != 0;
}

Text trim(Text strText)
{
    while (!strText.empty() && is_Space(strText.front()))
        strText.erase(0, 1);
    while (!strText.empty() && is_Space(strText.back()))
        strText.pop_back();
    return strText;
}

Pairs parse_Model(const Text& strText)
{
    Pairs Result;
    Text strKey;
    Text strValue;
    bool bEquals_Seen = false;
    for (char16_t ch : strText)
    {
        if (ch != u'=')
        {
            (bEquals_Seen ? strValue : strKey) += ch;
            continue;
        }
        if (!bEquals_Seen)
        {
            bEquals_Seen = true;
            continue;
        }
        const std::size_t nBlank = strValue.rfind(u' ');
        if (nBlank != Text::npos && nBlank >= 1)
        {
            Result.emplace_back(trim(strKey), strValue.substr(0, nBlank));
            strKey = trim(strValue.substr(nBlank + 1));
        }
        else
            strKey = trim(strValue);
        strValue.clear();
    }
    if (!strKey.empty() && !strValue.empty())
        Result.emplace_back(trim(strKey), strValue);
    return Result;
}

std::vector<Text> split_Model(const Text& strText, char16_t chSeparator)
{
    std::vector<Text> Result;
    bool bInside = true;
    Text strToken;
    for (char16_t ch : strText)
    {
        if (ch == chSeparator)
        {
            if (bInside)
                Result.push_back(std::exchange(strToken, Text()));
            bInside = false;
            continue;
        }
        bInside = true;
        strToken += ch;
    }
    if (bInside)
        Result.push_back(strToken);
    return Result;
}

void check_Parse(const Text& strText)
{
    const Pairs Expected = parse_Model(strText);
    Lib_Strings_Table* pTable = nullptr;
    const unsigned long long nCount = Lib_Parse_String(Wide_Text(strText), pTable);
    const std::unique_ptr<Lib_Strings_Table> pOwner(pTable);
    FUZZ_CHECK(nCount == Expected.size());
    FUZZ_CHECK((pTable != nullptr) == (nCount != 0));
    if (pTable == nullptr)
        return;
    FUZZ_CHECK(pTable->Get_Num_Elements() == nCount);
    Lib_String strKey;
    Lib_String strValue;
    for (unsigned long long i = 0; i < nCount; ++i)
    {
        FUZZ_CHECK(pTable->Get_Pair(i, strKey, strValue));
        FUZZ_CHECK(As_Model(strKey) == Expected[i].first);
        FUZZ_CHECK(As_Model(strValue) == Expected[i].second);
        FUZZ_CHECK(pTable->Find_Value(strKey, strValue));
    }
    FUZZ_CHECK(!pTable->Get_Pair(nCount, strKey, strValue));
}

void check_Split(const Text& strText, char16_t chSeparator)
{
    const std::vector<Text> Expected = split_Model(strText, chSeparator);
    Lib_Strings* pList = nullptr;
    const unsigned long long nCount =
        Lib_Split_String(Wide_Text(strText), static_cast<wchar_t>(chSeparator), pList);
    const std::unique_ptr<Lib_Strings> pOwner(pList);
    FUZZ_CHECK(nCount == Expected.size() && pList != nullptr);
    FUZZ_CHECK(pList->Get_Num_Elements() == nCount);
    for (unsigned long long i = 0; i < nCount; ++i)
    {
        FUZZ_CHECK((pList->Get_At(i) == nullptr) == Expected[i].empty());
        FUZZ_CHECK(As_Model(Lib_String(pList->Get_At(i))) == Expected[i]);
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t nSize)
{
    Fuzz_Input Input(pData, nSize);
    const bool bAny_Unit = Input.Take_Choice(4) == 3;
    const char16_t chSeparator =
        bAny_Unit ? static_cast<char16_t>(Input.Take_Byte()) : u"=, a\0\x3000"[Input.Take_Choice(6)];
    const Text strText = Input.Take_Text(bAny_Unit ? u"" : u"===   ab,c1\t\u00A0\u3000\u0416", 4096);
    check_Parse(strText);
    check_Split(strText, chSeparator);
    return 0;
}
