#include "string_probe.h"

#include <memory>
#include <stdexcept>

using namespace test_support;

TEST(String_Lists, Split_Cuts_At_The_Separator)
{
    struct Row
    {
        const wchar_t* m_pText;
        std::vector<const wchar_t*> m_Elements;
    };
    const Row rows[] = {
        {L"", {L""}},
        {L",", {L""}},
        {L"a,,b", {L"a", L"b"}},
        {L"a,b,", {L"a", L"b"}},
        {L" a ,b", {L" a ", L"b"}},
        {L"a\x2C2C,\x012C", {L"a\x2C2C", L"\x012C"}},
        {L"0123456789abcdef0123456789abcdef,x,,,0123456789abcdef0123456789abcdefgh,,",
         {L"0123456789abcdef0123456789abcdef", L"x", L"0123456789abcdef0123456789abcdefgh"}},
    };
    for (const Row& row : rows)
    {
        SCOPED_TRACE(testing::PrintToString(Lib_String(row.m_pText)));
        Lib_Strings* pList = nullptr;
        ASSERT_EQ(row.m_Elements.size(), Lib_Split_String(row.m_pText, L',', pList));
        const std::unique_ptr<Lib_Strings> list(pList);
        ASSERT_EQ(row.m_Elements.size(), list->Get_Num_Elements());
        for (std::size_t i = 0; i < row.m_Elements.size(); ++i)
            EXPECT_TEXT_EQ(row.m_Elements[i], list->Get_At(i));
        try
        {
            list->Get_At(row.m_Elements.size());
            ADD_FAILURE() << "reads past the end";
        }
        catch (const std::out_of_range& fault)
        {
            EXPECT_STREQ("invalid vector<T> subscript", fault.what());
        }
    }
}

TEST(String_Lists, Split_Knows_Null_And_The_Separator_That_Never_Matches)
{
    int nMark = 0;
    auto* pList = reinterpret_cast<Lib_Strings*>(&nMark);
    EXPECT_EQ(0U, Lib_Split_String(nullptr, L',', pList));
    EXPECT_EQ(nullptr, pList);
    ASSERT_EQ(1U, Lib_Split_String(L"a,b", L'\0', pList));
    EXPECT_TEXT_EQ(L"a,b", std::unique_ptr<Lib_Strings>(pList)->Get_At(0));
    ASSERT_EQ(1U, Lib_Split_String(L"", L',', pList));
    EXPECT_EQ(nullptr, std::unique_ptr<Lib_Strings>(pList)->Get_At(0));
}

TEST(String_Lists, Parse_Reads_Keys_And_Values)
{
    using Pairs = std::vector<std::pair<const wchar_t*, const wchar_t*>>;
    struct Row
    {
        const wchar_t* m_pText;
        Pairs m_Pairs;
    };
    const Row rows[] = {
        {L"a=x y b=2", {{L"a", L"x y"}, {L"b", L"2"}}},
        {L"a=1  b=2", {{L"a", L"1 "}, {L"b", L"2"}}},
        {L"a= b=c", {{L"b", L"c"}}},
        {L"a=b=c", {{L"b", L"c"}}},
        {L"a=1 =2", {{L"a", L"1"}}},
        {L"=x y=z", {{L"", L"x"}, {L"y", L"z"}}},
        {L" =x", {{L"", L"x"}}},
        {L"\t a b\t= 1 \tc\t=2 a=3 ", {{L"a b", L" 1"}, {L"c", L"2"}, {L"a", L"3 "}}},
        {L"=x", {}},
        {L"abc=", {}},
        {L"Name=Ann nAME=Bob", {{L"Name", L"Ann"}, {L"nAME", L"Bob"}}},
        {L"", {}},
        {nullptr, {}},
    };
    int nMark = 0;
    for (const Row& row : rows)
    {
        SCOPED_TRACE(testing::PrintToString(Lib_String(row.m_pText)));
        auto* const pUntouched = reinterpret_cast<Lib_Strings_Table*>(&nMark);
        Lib_Strings_Table* pTable = pUntouched;
        ASSERT_EQ(row.m_Pairs.size(), Lib_Parse_String(row.m_pText, pTable));
        if (row.m_Pairs.empty())
        {
            EXPECT_EQ(pUntouched, pTable);
            continue;
        }
        const std::unique_ptr<Lib_Strings_Table> table(pTable);
        ASSERT_EQ(row.m_Pairs.size(), table->Get_Num_Elements());
        Lib_String strKey, strValue;
        for (std::size_t i = 0; i < row.m_Pairs.size(); ++i)
        {
            EXPECT_TRUE(table->Get_Pair(i, strKey, strValue));
            EXPECT_TEXT_EQ(row.m_Pairs[i].first, strKey);
            EXPECT_TEXT_EQ(row.m_Pairs[i].second, strValue);
        }
        EXPECT_FALSE(table->Get_Pair(row.m_Pairs.size(), strKey, strValue));
        EXPECT_TEXT_EQ(row.m_Pairs.back().second, strValue) << "untouched by the index past the end";
        strKey = row.m_Pairs[0].first;
        strKey.Make_Upper();
        EXPECT_TRUE(table->Find_Value(strKey, strValue)) << "in either case";
        EXPECT_TEXT_EQ(row.m_Pairs[0].second, strValue) << "the first of its key";
        EXPECT_FALSE(table->Find_Value(L"none", strValue));
        EXPECT_TEXT_EQ(row.m_Pairs[0].second, strValue);
    }
}
