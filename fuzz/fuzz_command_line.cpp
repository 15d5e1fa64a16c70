#include "fuzz_input.h"
#include "lib_parser.h"
#include "strings/text_utilities.h"

#include <iterator>
#include <vector>

// Lib_Parser::Parse_Params against a model, two command lines one after the other on the same parameters.

namespace
{

using Text = std::u16string;

struct Declaration
{
    Text m_strName;
    PARAM_TYPE m_Type;
    Text m_strDefault;
    bool m_bOptional;
};

const Declaration DECLARATIONS[] = {
    {u"-n", PARAM_TYPE_DWORD, u"0x1F", true},       {u"/Limit", PARAM_TYPE_DWORD, u"", true},
    {u"-in", PARAM_TYPE_STRING, u"", false},        {u"Name", PARAM_TYPE_STRING, u"default", true},
    {u"-key", PARAM_TYPE_HEX_BYTES, u"00ff", true}, {u"-salt", PARAM_TYPE_HEX_BYTES, u"", true},
    {u"-quiet", PARAM_TYPE_FLAG, u"", true},        {u"--\u00C4\u0416", PARAM_TYPE_FLAG, u"", true},
};
constexpr std::size_t COUNT = std::size(DECLARATIONS);

/// What a parameter holds after a command line.
struct Value
{
    bool m_bSet = false;
    unsigned int m_nNumber = 0; ///< a flag's too
    Text m_strText;
    Lib_Buffer m_Bytes;
};

unsigned int number_Model(Text strText)
{
    unsigned int nBase = 10;
    if (strText.substr(0, 2) == u"0x")
    {
        nBase = 16;
        strText.erase(0, 2);
    }
    unsigned int nValue = 0;
    for (char16_t ch : strText)
    {
        const std::size_t nPlace = Text(u"0123456789abcdefABCDEF").find(ch);
        const std::size_t nDigit = nPlace == Text::npos ? 0 : nPlace > 15 ? nPlace - 6 : nPlace;
        nValue = nValue * nBase + static_cast<unsigned int>(nDigit);
    }
    return nValue;
}

/// Without regard to case as the runtime's first locale has it: A to Z.
bool is_Same_Name(const Text& strLeft, const Text& strRight)
{
    if (strLeft.size() != strRight.size())
        return false;
    for (std::size_t i = 0; i < strLeft.size(); ++i)
    {
        const auto lower = [](char16_t ch) { return ch >= u'A' && ch <= u'Z' ? ch + 32 : ch + 0; };
        if (lower(strLeft[i]) != lower(strRight[i]))
            return false;
    }
    return true;
}

void load(const Declaration& declaration, const Text& strText, Value& value)
{
    value.m_bSet = true;
    if (declaration.m_Type == PARAM_TYPE_DWORD)
        value.m_nNumber = number_Model(strText);
    else if (declaration.m_Type == PARAM_TYPE_STRING)
        value.m_strText = strText;
    else if (declaration.m_Type == PARAM_TYPE_HEX_BYTES)
        Lib_Read_Buffer(Wide_Text(strText), value.m_Bytes, 0);
}

bool parse_Model(const std::vector<Text>& Arguments, std::vector<Value>& Values)
{
    for (std::size_t i = 0; i < COUNT; ++i)
    {
        load(DECLARATIONS[i], DECLARATIONS[i].m_strDefault, Values[i]);
        Values[i].m_bSet = false;
    }
    bool bResult = true;
    for (std::size_t nAt = 1; bResult && nAt < Arguments.size();)
    {
        std::size_t i = 0;
        while (i < COUNT && !is_Same_Name(Arguments[nAt], DECLARATIONS[i].m_strName))
            ++i;
        if (i == COUNT)
            bResult = false;
        else if (DECLARATIONS[i].m_Type == PARAM_TYPE_FLAG)
        {
            Values[i].m_bSet = true;
            Values[i].m_nNumber = 1;
            ++nAt;
        }
        else
        {
            if (nAt + 1 < Arguments.size())
                load(DECLARATIONS[i], Arguments[nAt + 1], Values[i]);
            nAt += 2;
        }
    }
    for (std::size_t i = 0; i < COUNT; ++i)
        bResult = bResult && (Values[i].m_bSet || DECLARATIONS[i].m_bOptional);
    return bResult;
}

Text take_Argument(Fuzz_Input& Input)
{
    switch (Input.Take_Choice(8))
    {
    case 0:
        return Input.Take_Text(u"", Input.Take_Choice(8));
    case 1:
    case 2:
        return Input.Take_Text(u"0123456789abcdefABCDEFxXg -", Input.Take_Choice(24));
    case 3:
    {
        // A name with the case of a unit turned, or with one more unit.
        Text strName = DECLARATIONS[Input.Take_Choice(COUNT)].m_strName;
        strName[Input.Take_Choice(static_cast<unsigned int>(strName.size()))] ^= 0x20;
        return Input.Take_Choice(4) == 0 ? strName + u'x' : strName;
    }
    default:
        return DECLARATIONS[Input.Take_Choice(COUNT)].m_strName;
    }
}

void check_Value(const Lib_Parser_Param& Param, PARAM_TYPE Type, const Value& value)
{
    FUZZ_CHECK(Param.Is_Set() == value.m_bSet);
    if (Type == PARAM_TYPE_STRING)
        FUZZ_CHECK(As_Model(*static_cast<Lib_String*>(Param.Get_Param())) == value.m_strText);
    else if (Type == PARAM_TYPE_HEX_BYTES)
        FUZZ_CHECK(*static_cast<Lib_Buffer*>(Param.Get_Param()) == value.m_Bytes);
    else
        FUZZ_CHECK(reinterpret_cast<std::uintptr_t>(Param.Get_Param()) == value.m_nNumber);
}

Lib_String as_String(const Text& strText) { return Lib_String(Wide_Text(strText).Get()); }

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t nSize)
{
    Fuzz_Input Input(pData, nSize);
    std::vector<Lib_Parser_Param> Params;
    Params.reserve(COUNT);
    for (const Declaration& d : DECLARATIONS)
        Params.emplace_back(as_String(d.m_strName), d.m_Type, as_String(d.m_strDefault), L"value", L"Text",
                            d.m_bOptional);
    std::vector<Value> Values(COUNT);

    for (int nRound = 0; nRound < 2; ++nRound)
    {
        std::vector<Text> Arguments(Input.Take_Choice(12));
        std::vector<Wide_Text> Texts;
        std::vector<wchar_t*> Pointers;
        for (Text& strArgument : Arguments)
        {
            strArgument = take_Argument(Input);
            Texts.emplace_back(strArgument);
            Pointers.push_back(Texts.back().Get());
        }
        const bool bExpected = parse_Model(Arguments, Values);
        const bool bResult = Lib_Parser::Parse_Params(
            static_cast<int>(Arguments.size()), Pointers.data(), static_cast<int>(COUNT), &Params[0],
            &Params[1], &Params[2], &Params[3], &Params[4], &Params[5], &Params[6], &Params[7]);
        FUZZ_CHECK(bResult == bExpected);
        for (std::size_t i = 0; i < COUNT; ++i)
            check_Value(Params[i], DECLARATIONS[i].m_Type, Values[i]);
    }
    return 0;
}
