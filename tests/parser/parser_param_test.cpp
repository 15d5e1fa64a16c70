#include "lib_parser.h"
#include "test_text.h"

#include <cstdint>
#include <memory>

namespace
{

/// A parameter whose value text a test can set directly.
class Probe : public Lib_Parser_Param
{
public:
    explicit Probe(PARAM_TYPE Type, const wchar_t* pDefault = L"")
        : Lib_Parser_Param(L"-p", Type, pDefault, L"value", L"A probe", true)
    {
    }
    using Lib_Parser_Param::Make_Value;

    std::uintptr_t Number() const { return reinterpret_cast<std::uintptr_t>(Get_Param()); }
    const Lib_String& Text() const { return *static_cast<Lib_String*>(Get_Param()); }
    const Lib_Buffer& Bytes() const { return *static_cast<Lib_Buffer*>(Get_Param()); }
};

/// Works on the text before it is read, as a derived class may.
class Percent : public Lib_Parser_Param
{
public:
    using Lib_Parser_Param::Lib_Parser_Param;

protected:
    void Make_Value(const Lib_String& strText) override
    {
        Lib_String strNumber(strText);
        strNumber.Trim_Right(L'%');
        Lib_Parser_Param::Make_Value(strNumber);
    }
};

} // namespace

TEST(Parser_Param, Reads_Numbers_Without_Refusing_Any)
{
    const std::pair<const wchar_t*, unsigned int> aCases[] = {
        {L"12", 12},        {L"0xabcdefAB", 0xABCDEFABU},
        {L"0X10", 10},      {L"ff", 165},
        {L"-1", 1},         {L"1 2", 102},
        {L"10x2", 1002},    {L"x0x2", 2},
        {L"\x0661", 0},     {L"0x", 0},
        {L"", 0},           {L"4294967295", 0xFFFFFFFFU},
        {L"4294967296", 0}, {L"0x123456789", 0x23456789U},
    };
    Probe param(PARAM_TYPE_DWORD);
    for (const auto& [pText, nValue] : aCases)
    {
        param.Make_Value(L"99");
        param.Make_Value(pText);
        EXPECT_EQ(nValue, param.Number()) << testing::PrintToString(Lib_String(pText));
    }
}

TEST(Parser_Param, Loads_Its_Default_On_Reset_Alone)
{
    Probe number(PARAM_TYPE_DWORD, L"0x20"), text(PARAM_TYPE_STRING, L"a b"),
        bytes(PARAM_TYPE_HEX_BYTES, L"00fF"), flag(PARAM_TYPE_FLAG, L"1");
    EXPECT_EQ(0U, number.Number());
    EXPECT_TRUE(text.Text().Is_Empty());
    EXPECT_EQ(0U, bytes.Bytes().Get_Size());
    EXPECT_EQ(nullptr, flag.Get_Param());
    EXPECT_FALSE(number.Is_Set());
    for (Probe* pParam : {&number, &text, &bytes})
    {
        const void* pSlot = pParam->Get_Param();
        pParam->Make_Value(L"1");
        EXPECT_TRUE(pParam->Is_Set());
        pParam->Reset();
        EXPECT_FALSE(pParam->Is_Set());
        EXPECT_TRUE(pParam == &number || pParam->Get_Param() == pSlot) << "the value object stays the same";
    }
    EXPECT_EQ(32U, number.Number());
    EXPECT_TEXT_EQ(L"a b", text.Text());
    EXPECT_TRUE(bytes.Bytes().Is_Equals("\x00\xff", 2));
}

TEST(Parser_Param, Keeps_Bytes_And_Flags_On_A_Reset_Without_Default)
{
    Probe number(PARAM_TYPE_DWORD), text(PARAM_TYPE_STRING), bytes(PARAM_TYPE_HEX_BYTES),
        flag(PARAM_TYPE_FLAG);
    for (Probe* pParam : {&number, &text, &bytes, &flag})
    {
        pParam->Make_Value(L"0a0B");
        pParam->Reset();
        EXPECT_FALSE(pParam->Is_Set());
    }
    EXPECT_EQ(0U, number.Number());
    EXPECT_TRUE(text.Text().Is_Empty());
    EXPECT_TRUE(bytes.Bytes().Is_Equals("\x0a\x0b", 2));
    EXPECT_EQ(0U, flag.Number());
}

TEST(Parser_Param, Goes_Through_An_Override)
{
    Percent param(L"-quality", PARAM_TYPE_DWORD, L"85%", L"percent", L"Quality", true);
    param.Reset();
    EXPECT_EQ(85U, reinterpret_cast<std::uintptr_t>(param.Get_Param()));
    wchar_t aProgram[] = L"program", aName[] = L"-Quality", aValue[] = L"40%";
    wchar_t* aArguments[] = {aProgram, aName, aValue};
    EXPECT_TRUE(Lib_Parser::Parse_Params(3, aArguments, 1, &param));
    EXPECT_EQ(40U, reinterpret_cast<std::uintptr_t>(param.Get_Param()));
}

TEST(Parser_Param, Shares_Its_Value_Object_With_Its_Copies)
{
    auto pFirst = std::make_unique<Probe>(PARAM_TYPE_STRING, L"default");
    pFirst->Make_Value(L"one");
    Probe copy(*pFirst);
    EXPECT_EQ(pFirst->Get_Param(), copy.Get_Param());

    Probe target(PARAM_TYPE_HEX_BYTES, L"00");
    target.Make_Value(L"1122");
    target = *pFirst;
    const Probe& self = target;
    target = self;
    pFirst.reset();
    target.Reset();
    EXPECT_TEXT_EQ(L"default", copy.Text());
    EXPECT_FALSE(target.Is_Set());
    EXPECT_TRUE(copy.Is_Set());

    copy = Probe(PARAM_TYPE_DWORD, L"3");
    copy.Reset();
    EXPECT_EQ(3U, copy.Number());
    EXPECT_TEXT_EQ(L"default", target.Text());
}
