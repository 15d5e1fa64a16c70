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

/// The searches one unit at a time. A stretch ends at its first NUL.
template <class Char>
struct Naive_Search
{
    const Units<Char>& m_Text;

    std::size_t End_From(std::size_t nStart) const
    {
        const auto from = m_Text.begin() + static_cast<std::ptrdiff_t>(nStart);
        return static_cast<std::size_t>(std::find(from, m_Text.end(), Char(0)) - m_Text.begin());
    }
    int Find(Char ch, std::size_t nStart) const
    {
        if (nStart >= m_Text.size())
            return -1;
        const std::size_t nEnd = End_From(nStart);
        for (std::size_t i = nStart; i < nEnd; ++i)
            if (m_Text[i] == ch)
                return static_cast<int>(i);
        return ch == 0 ? static_cast<int>(nEnd) : -1;
    }
    int Find(const Units<Char>& part, std::size_t nStart) const
    {
        if (nStart > m_Text.size() || (m_Text.empty() && sizeof(Char) == 1))
            return -1;
        const std::size_t nEnd = End_From(nStart);
        for (std::size_t i = nStart; i + part.size() <= nEnd; ++i)
            if (std::equal(part.begin(), part.end(), m_Text.begin() + static_cast<std::ptrdiff_t>(i)))
                return static_cast<int>(i);
        return -1;
    }
    int Reverse_Find(Char ch) const
    {
        for (std::size_t i = End_From(0) + 1; i-- > 0;)
            if ((i == End_From(0) ? Char(0) : m_Text[i]) == ch)
                return static_cast<int>(i);
        return -1;
    }
    /// The leading run of units that stand in the set, or don't.
    std::size_t Run(std::string_view set, bool bInside) const
    {
        std::size_t nRun = 0;
        while (nRun < End_From(0) && (set.find(static_cast<char>(m_Text[nRun])) != set.npos) == bInside)
            ++nRun;
        return nRun;
    }
};

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
        {T(""), T(""), 0, 0, 0},
        {T("a"), T(""), -1, 'a', 1},
        {T(""), T("a"), 1, -'a', -1},
        {T("ab"), T("ab"), 0, 0, 0},
        {T("ab"), T("ac"), -1, -1, -1},
        {T("abc"), T("ab"), 1, 'c', 1},
        {T("aB"), T("Ab"), 1, 0, 1},
        {T("B"), T("a"), -1, 1, -1},
        {T("_"), T("Z"), 1, '_' - 'z', 1},
        {T("\xE9"), T("e"), 1, 0xE9 - 'e', 1},
        {T("\xE9"), T("\xC9"), 1, 0x20, 1},
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

TYPED_TEST(String_Operations, Find_Agrees_With_A_Plain_Search)
{
    using Char = Char_Of<TypeParam>;
    Random_Text<Char> random(3);
    for (std::size_t nLength = 0; nLength <= 200; ++nLength)
        for (int nRound = 0; nRound < 40; ++nRound)
        {
            const std::string_view alphabets[] = {"aaaaaaab", "ab", "aaabc",
                                                  std::string_view("aaaaaaaaaaaaaaab\0", 17)};
            const Units<Char> units = random.Text(nLength, alphabets[nRound % 4]);
            TypeParam text;
            Take(text, units);
            const Naive_Search<Char> naive{units};
            const std::size_t nStart = nRound % 2 ? random.Below(nLength + 3) : 0;
            Units<Char> part = random.Text(random.Below(6), "aaab");
            if (nRound % 5 == 0 && nLength != 0) // one that certainly occurs, of any length
            {
                const auto from = units.begin() + static_cast<std::ptrdiff_t>(random.Below(nLength));
                part.assign(from, from + static_cast<std::ptrdiff_t>(
                                             random.Below(static_cast<std::size_t>(units.end() - from) + 1)));
                part.resize(
                    static_cast<std::size_t>(std::find(part.begin(), part.end(), Char(0)) - part.begin()));
            }
            const int nFound = naive.Find(part, nStart);
            part.push_back(0);
            ASSERT_EQ(nFound, text.Find(part.data(), static_cast<int>(nStart)))
                << testing::PrintToString(text) << " from " << nStart << ", " << testing::PrintToString(part);
            for (const char ch : {'b', 'c', '\0'})
            {
                const Char wanted = static_cast<Char>(ch);
                ASSERT_EQ(naive.Find(wanted, nStart), text.Find(wanted, static_cast<int>(nStart)))
                    << testing::PrintToString(text) << " from " << nStart;
                ASSERT_EQ(naive.Reverse_Find(wanted), text.Reverse_Find(wanted))
                    << testing::PrintToString(text);
            }
            const std::size_t nOutside = naive.Run("cb", false);
            ASSERT_EQ(nOutside, text.Span_Excluding(T("cb")).Get_Length());
            ASSERT_EQ(nOutside == naive.End_From(0) ? -1 : static_cast<int>(nOutside),
                      text.Find_One_Of(T("cb")));
            ASSERT_EQ(naive.Run("ac", true), text.Span_Including(T("ac")).Get_Length());
        }
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
        {text.Left(6), T("abcdef")},
        {text.Left(~0ULL), T("abcdef")},
        {text.Right(0), T("")},
        {text.Right(2), T("ef")},
        {text.Right(6), T("abcdef")},
        {text.Right(7), T("abcdef")},
        {text.Mid(0), T("abcdef")},
        {text.Mid(0, 6), T("abcdef")},
        {text.Mid(0, ~0ULL), T("abcdef")},
        {text.Mid(0, 5), T("abcde")},
        {text.Mid(1, ~0ULL), T("bcdef")},
        {text.Mid(2, 3), T("cde")},
        {text.Mid(5), T("f")},
        {text.Mid(6), T("")},
        {text.Mid(7), T("")},
        {text.Mid(~0ULL, ~0ULL), T("")},
        {text.Mid(2, 0), T("")},
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
        {"Insert empty", [](S& s) { EXPECT_EQ(6, s.Insert(2, T(""))); }, false},
        {"Insert null", [](S& s) { EXPECT_EQ(6, s.Insert(2, static_cast<Char*>(nullptr))); }, false},
        {"Delete", [](S& s) { EXPECT_EQ(6, s.Delete(-5, 1)); }, true},
        {"Delete none", [](S& s) { EXPECT_EQ(6, s.Delete(1, 0)); }, false},
        {"Delete fewer", [](S& s) { EXPECT_EQ(6, s.Delete(1, -1)); }, false},
        {"Delete at the end", [](S& s) { EXPECT_EQ(6, s.Delete(6, 1)); }, false},
        {"Remove no character", [](S& s) { EXPECT_EQ(0, s.Remove(Char('x'))); }, true},
        {"Remove behind the end", [](S& s) { EXPECT_EQ(0, s.Remove(6, ~0ULL)); }, true},
        {"Remove an endless range", [](S& s) { EXPECT_EQ(5, s.Remove(1, ~0ULL)); }, true},
        {"Replace no character", [](S& s) { EXPECT_EQ(0, s.Replace(Char('x'), Char('y'))); }, true},
        {"Replace by the same", [](S& s) { EXPECT_EQ(0, s.Replace(Char('a'), Char('a'))); }, false},
        {"Replace", [](S& s) { EXPECT_EQ(2, s.Replace(T("a"), T("aa"))); }, true},
        {"Replace by null", [](S& s) { EXPECT_EQ(2, s.Replace(T("bc"), nullptr)); }, true},
        {"Replace nothing found", [](S& s) { EXPECT_EQ(0, s.Replace(T("x"), T("y"))); }, false},
        {"Replace empty", [](S& s) { EXPECT_EQ(0, s.Replace(T(""), T("y"))); }, false},
        {"Replace null", [](S& s) { EXPECT_EQ(0, s.Replace(nullptr, T("y"))); }, false},
        {"TrimLeft", [](S& s) { s.TrimLeft(); }, true},
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
        {"Make_Upper", [](S& s) { s.Make_Upper(); }, true},
        {"Make_Reverse", [](S& s) { s.Make_Reverse(); }, true},
        {"Release_Buffer", [](S& s) { s.Release_Buffer(); }, true},
        {"Lock_Buffer", [](S& s) { s.Lock_Buffer(); }, true},
        {"Format", [](S& s) { s.Format(T("x")); }, true},
        {"Free_Extra", [](S& s) { s.Free_Extra(); }, false},
        {"Append nothing", [](S& s) { s += T(""); }, false},
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
    const auto Trimmed = [](const Units<Char>& units, auto trim)
    {
        TypeParam text;
        Take(text, units);
        trim(text);
        EXPECT_EQ(units.size(), text.Get_Alloc_Length());
        return Content(text);
    };
    using S = TypeParam;
    using U = Units<Char>;
    const U blanks{' ', '\t', 'a', ' ', 'b', '\n', ' '};
    EXPECT_EQ(U({'a', ' ', 'b', '\n', ' '}), Trimmed(blanks, [](S& s) { s.TrimLeft(); }));
    EXPECT_EQ(U({' ', '\t', 'a', ' ', 'b'}), Trimmed(blanks, [](S& s) { s.TrimRight(); }));
    EXPECT_EQ(U(), Trimmed({' ', '\r'}, [](S& s) { s.TrimLeft(); }));
    EXPECT_EQ(U(), Trimmed({' ', '\r'}, [](S& s) { s.TrimRight(); }));
    const U ends{'x', 'y', 'a', 'x', 'y'};
    EXPECT_EQ(U({'y', 'a', 'x', 'y'}), Trimmed(ends, [](S& s) { s.Trim_Left(Char('x')); }));
    EXPECT_EQ(U({'a', 'x', 'y'}), Trimmed(ends, [](S& s) { s.Trim_Left(T("yx")); }));
    EXPECT_EQ(U({'x', 'y', 'a', 'x'}), Trimmed(ends, [](S& s) { s.Trim_Right(Char('y')); }));
    EXPECT_EQ(U({'x', 'y', 'a'}), Trimmed(ends, [](S& s) { s.Trim_Right(T("yx")); }));
    const U divided{' ', 'a', ' ', 0, 'b'};
    EXPECT_EQ(U({'a', ' ', 0, 'b'}), Trimmed(divided, [](S& s) { s.TrimLeft(); })) << "what remains is all";
    EXPECT_EQ(U({' ', 'a'}), Trimmed(divided, [](S& s) { s.TrimRight(); })) << "the end is the first NUL";
    EXPECT_EQ(U({'a', 0, ' '}), Trimmed({'a', 0, ' '}, [](S& s) { s.TrimRight(); }));
    EXPECT_EQ(U({'B', 'A', 0, 'c'}),
              Trimmed({'a', 'b', 0, 'c'}, [](S& s) { s.Make_Reverse(), s.Make_Upper(); }));
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
        text = unit;
        text.TrimRight();
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
    EXPECT_EQ('b', Lib_StringA("abc")[1]);
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
