#include "string_probe.h"

using namespace test_support;

template <class String>
class String_Operations : public testing::Test
{
};
TYPED_TEST_SUITE(String_Operations, Both_Widths);

namespace
{

int Sign(int nValue) { return (nValue > 0) - (nValue < 0); }

} // namespace

TYPED_TEST(String_Operations, Compare_Puts_The_Empty_String_Last_And_The_Others_First)
{
    using Char = Char_Of<TypeParam>;
    struct Row
    {
        const Char *m_pLeft, *m_pRight;
        int m_nCompare, m_nNo_Case, m_nCollate;
    };
    const Row rows[] = {
        {T(""), T(""), 0, 0, 0},     {T("a"), T(""), -1, 'a', 1},       {T(""), T("a"), 1, -'a', -1},
        {T("ab"), T("ab"), 0, 0, 0}, {T("abc"), T("ab"), 1, 'c', 1},    {T("aB"), T("Ab"), 1, 0, 1},
        {T("B"), T("a"), -1, 1, -1}, {T("_"), T("Z"), 1, '_' - 'z', 1}, {T("\xE9"), T("e"), 1, 0xE9 - 'e', 1},
    };
    for (const Row& row : rows)
    {
        const TypeParam left(row.m_pLeft);
        SCOPED_TRACE(testing::PrintToString(left) + " and " +
                     testing::PrintToString(TypeParam(row.m_pRight)));
        EXPECT_EQ(row.m_nCompare, left.Compare(row.m_pRight));
        EXPECT_EQ(row.m_nNo_Case, left.CompareNoCase(row.m_pRight));
        EXPECT_EQ(row.m_nNo_Case, left.CollateNoCase(row.m_pRight));
        EXPECT_EQ(row.m_nCollate, Sign(left.Collate(row.m_pRight)));
        EXPECT_EQ(row.m_nCompare == 0, left == TypeParam(row.m_pRight));
        EXPECT_EQ(row.m_nCompare == 0, left.operator==(row.m_pRight));
    }
    EXPECT_EQ(0, TypeParam().Compare(nullptr));
    EXPECT_EQ(-1, TypeParam(T("a")).Compare(nullptr));

    TypeParam left, right;
    Take(left, {'a', 0, 'b'});
    Take(right, {'a', 0, 'c'});
    EXPECT_TRUE(left == right && left == TypeParam(T("a"))) << "equal up to the first NUL";
    Take(right, {'a', 'b', 0});
    EXPECT_FALSE(left == right);
    EXPECT_EQ(-1, Lib_StringW(L"\x7FFF").Compare(L"\x8000"));
}

// That every length and alignment is searched, tests/allocation/scan_kernels_test.cpp sees to.
TYPED_TEST(String_Operations, Find_Ends_At_The_First_Nul_Behind_Its_Start)
{
    using Char = Char_Of<TypeParam>;
    TypeParam text;
    Take(text, {'a', 'b', 'c', 'a', 'b', 0, 'b', 'c'});
    const struct
    {
        Char m_ch;
        const Char* m_pPart;
        int m_nStart, m_nCharacter, m_nPart;
    } rows[] = {
        {'b', T("bc"), 0, 1, 1},    {'b', T("bc"), 2, 4, -1},     {'b', T("bc"), 5, -1, -1},
        {'b', T("bc"), 6, 6, 6},    {'c', T("c"), 8, -1, -1},     {'\0', T(""), 0, 5, 0},
        {'\0', T(""), 6, 8, 6},     {'\0', T(""), 8, -1, 8},      {'\0', T(""), 9, -1, -1},
        {'x', T("abca"), 0, -1, 0}, {'x', T("abcab"), 1, -1, -1},
    };
    for (const auto& row : rows)
    {
        SCOPED_TRACE(testing::Message()
                     << testing::PrintToString(TypeParam(row.m_pPart)) << " from " << row.m_nStart);
        EXPECT_EQ(row.m_nCharacter, text.Find(row.m_ch, row.m_nStart));
        EXPECT_EQ(row.m_nPart, text.Find(row.m_pPart, row.m_nStart));
    }
    EXPECT_EQ(4, text.Reverse_Find(Char('b')));
    EXPECT_EQ(5, text.Reverse_Find(Char(0)));
    EXPECT_EQ(-1, text.Reverse_Find(Char('x')));
    EXPECT_EQ(2, text.Find_One_Of(T("xc")));
    EXPECT_EQ(-1, text.Find_One_Of(T("x")));
    EXPECT_TEXT_EQ(T("abcab"), text.Span_Including(T("abc")));
    EXPECT_TEXT_EQ(T("ab"), text.Span_Excluding(T("xc")));
    EXPECT_EQ(-1, Lib_StringA().Find(""));
    EXPECT_EQ(0, Lib_StringW().Find(L""));
    EXPECT_EQ(-1, Lib_StringW().Find(L"", 1));
    EXPECT_EQ(-1, Lib_StringW(L"\x0161\x6100\x6161").Find(L'a')) << "whole units count";
}

TYPED_TEST(String_Operations, Slices_Share_The_Whole_And_Copy_The_Rest)
{
    using Char = Char_Of<TypeParam>;
    const Open<TypeParam> text(T("abcdef"));
    struct Row
    {
        TypeParam m_Slice;
        const Char* m_pExpected;
    };
    const Row rows[] = {
        {text.Left(0), T("")},
        {text.Left(2), T("ab")},
        {text.Left(~0ULL), T("abcdef")},
        {text.Right(2), T("ef")},
        {text.Right(7), T("abcdef")},
        {text.Mid(0), T("abcdef")},
        {text.Mid(1, ~0ULL), T("bcdef")},
        {text.Mid(2, 3), T("cde")},
        {text.Mid(6), T("")},
        {text.Mid(~0ULL, ~0ULL), T("")},
        {text.Span_Including(T("abcdef")), T("abcdef")},
        {text.Span_Including(T("")), T("")},
        {text.Span_Excluding(T("")), T("abcdef")},
        {text.Span_Excluding(T("ca")), T("")},
    };
    for (const Row& row : rows)
    {
        EXPECT_TEXT_EQ(row.m_pExpected, row.m_Slice);
        EXPECT_EQ(row.m_Slice.Get_Length(), row.m_Slice.Get_Alloc_Length());
        EXPECT_EQ(row.m_Slice.Get_Length() == 6, text.Shares_With(Open<TypeParam>(row.m_Slice)));
    }
}

// Those with a row in string_sequence_test.cpp are not listed again.
TYPED_TEST(String_Operations, Detaches_For_The_Calls_That_Say_So)
{
    using Char = Char_Of<TypeParam>;
    using S = TypeParam;
    struct Row
    {
        const char* m_pName;
        void (*m_pEdit)(S&);
        bool m_bDetaches;
    };
    const Row rows[] = {
        {"Set_At", [](S& s) { s.Set_At(0, 'x'); }, true},
        {"Insert character", [](S& s) { EXPECT_EQ(7, s.Insert(-3, Char('x'))); }, true},
        {"Insert", [](S& s) { EXPECT_EQ(8, s.Insert(99, T("xy"))); }, true},
        {"Insert null", [](S& s) { EXPECT_EQ(6, s.Insert(2, static_cast<Char*>(nullptr))); }, false},
        {"Delete", [](S& s) { EXPECT_EQ(6, s.Delete(-5, 1)); }, true},
        {"Delete fewer", [](S& s) { EXPECT_EQ(6, s.Delete(1, -1)); }, false},
        {"Remove behind the end", [](S& s) { EXPECT_EQ(0, s.Remove(6, ~0ULL)); }, true},
        {"Replace by the same", [](S& s) { EXPECT_EQ(0, s.Replace(Char('a'), Char('a'))); }, false},
        {"Replace by null", [](S& s) { EXPECT_EQ(2, s.Replace(T("bc"), nullptr)); }, true},
        {"Replace empty", [](S& s) { EXPECT_EQ(0, s.Replace(T(""), T("y"))); }, false},
        {"Replace null", [](S& s) { EXPECT_EQ(0, s.Replace(nullptr, T("y"))); }, false},
        {"TrimRight", [](S& s) { s.TrimRight(); }, true},
        {"Trim_Left character", [](S& s) { s.Trim_Left(Char(0)); }, true},
        {"Trim_Left set", [](S& s) { s.Trim_Left(T("x")); }, true},
        {"Trim_Left empty set", [](S& s) { s.Trim_Left(T("")); }, false},
        {"Trim_Left null", [](S& s) { s.Trim_Left(static_cast<Char*>(nullptr)); }, false},
        {"Trim_Right character", [](S& s) { s.Trim_Right(Char(0)); }, true},
        {"Trim_Right set", [](S& s) { s.Trim_Right(T("x")); }, true},
        {"Trim_Right empty set", [](S& s) { s.Trim_Right(T("")); }, true},
        {"Trim_Right null", [](S& s) { s.Trim_Right(static_cast<Char*>(nullptr)); }, false},
        {"Make_Lower", [](S& s) { s.Make_Lower(); }, true},
        {"Release_Buffer", [](S& s) { s.Release_Buffer(); }, true},
    };
    for (const Row& row : rows)
    {
        SCOPED_TRACE(row.m_pName);
        const Open<TypeParam> other(T("abcabc"));
        Open<TypeParam> text(other);
        row.m_pEdit(text);
        EXPECT_EQ(row.m_bDetaches, !text.Shares_With(other));
        EXPECT_TEXT_EQ(T("abcabc"), other);
        EXPECT_EQ(row.m_bDetaches ? 1 : 2, other.Get_Holders());
    }
}

TYPED_TEST(String_Operations, Trims_At_The_Ends_Alone)
{
    using Char = Char_Of<TypeParam>;
    using S = TypeParam;
    using U = Units<Char>;
    const U divided{' ', '\t', 'a', ' ', 0, 'b'}, ends{'x', 'y', 'a', 'x', 'y'};
    struct Row
    {
        U m_Text, m_Expected;
        void (*m_pTrim)(S&);
    };
    const Row rows[] = {
        {divided, {'a', ' ', 0, 'b'}, [](S& s) { s.TrimLeft(); }}, // what remains is all
        {divided, {' ', '\t', 'a'}, [](S& s) { s.TrimRight(); }},  // the end is the first NUL
        {{' ', '\r'}, {}, [](S& s) { s.TrimRight(); }},
        {ends, {'y', 'a', 'x', 'y'}, [](S& s) { s.Trim_Left(Char('x')); }},
        {ends, {'a', 'x', 'y'}, [](S& s) { s.Trim_Left(T("yx")); }},
        {ends, {'x', 'y', 'a', 'x'}, [](S& s) { s.Trim_Right(Char('y')); }},
        {ends, {'x', 'y', 'a'}, [](S& s) { s.Trim_Right(T("yx")); }},
    };
    for (const Row& row : rows)
    {
        S text;
        Take(text, row.m_Text);
        row.m_pTrim(text);
        EXPECT_EQ(row.m_Expected, Content(text));
        EXPECT_EQ(row.m_Text.size(), text.Get_Alloc_Length());
    }
}

TYPED_TEST(String_Operations, Classes_And_Folds_Every_Unit_In_The_C_Locale)
{
    using Char = Char_Of<TypeParam>;
    for (unsigned int nUnit = 1; nUnit < 1u << (8 * sizeof(Char)); ++nUnit)
    {
        const Char unit = static_cast<Char>(nUnit);
        bool bSpace = (nUnit >= 9 && nUnit <= 13) || nUnit == 0x20;
        if (sizeof(Char) == 2 && nUnit > 0x7F)
        {
            const wchar_t wide = static_cast<wchar_t>(nUnit);
            WORD nTypes = 0;
            GetStringTypeW(CT_CTYPE1, &wide, 1, &nTypes);
            bSpace =
                nUnit < 0x100 ? nUnit == 0x85 || nUnit == 0xA0 : nUnit != 0xFFFF && (nTypes & C1_SPACE) != 0;
        }
        TypeParam text(unit);
        text.TrimLeft();
        ASSERT_EQ(bSpace, text.Is_Empty()) << std::hex << nUnit;
        const bool bLower = nUnit >= 'a' && nUnit <= 'z';
        const bool bUpper = nUnit >= 'A' && nUnit <= 'Z';
        text = unit;
        text.Make_Upper();
        ASSERT_EQ(static_cast<Char>(bLower ? nUnit - 0x20 : nUnit), text.Get_At(0)) << std::hex << nUnit;
        text = unit;
        text.Make_Lower();
        ASSERT_EQ(static_cast<Char>(bUpper ? nUnit + 0x20 : nUnit), text.Get_At(0)) << std::hex << nUnit;
    }
}

TYPED_TEST(String_Operations, Replaces_With_Texts_Of_Its_Own)
{
    using Char = Char_Of<TypeParam>;
    TypeParam text(T("a.b.c"));
    const Char* pText = text;
    EXPECT_EQ(2, text.Replace(T("."), pText + 3));
    EXPECT_TEXT_EQ(T("a.cb.cc"), text);
    pText = text;
    EXPECT_EQ(1, text.Replace(pText + 4, T("")));
    EXPECT_TEXT_EQ(T("a.cb"), text);
}
