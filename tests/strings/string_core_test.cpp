#include "string_probe.h"

#include <vector>

using namespace test_support;

// What random sequences (string_sequence_test.cpp) don't come to.

template <class String>
class String_Core : public testing::Test
{
};
TYPED_TEST_SUITE(String_Core, Both_Widths);

static_assert(sizeof(Lib_StringW) == 2 * sizeof(void*) && sizeof(Lib_String) == sizeof(Lib_StringW));
static_assert(std::is_nothrow_default_constructible_v<Lib_StringA>);

TYPED_TEST(String_Core, Is_On_The_Shared_Empty_Block_Without_A_Text)
{
    using Char = Char_Of<TypeParam>;
    const Char* pNull = nullptr;
    Open<TypeParam> strEmpty;
    for (const Open<TypeParam>& text :
         {strEmpty, Open<TypeParam>(pNull), Open<TypeParam>(T("")), Open<TypeParam>(strEmpty + strEmpty)})
    {
        EXPECT_EQ(0U, text.Get_Length());
        EXPECT_EQ(nullptr, static_cast<const Char*>(text));
        EXPECT_TRUE(text.Shares_With(strEmpty));
    }
    strEmpty.Lock_Buffer();
    strEmpty.Unlock_Buffer();
    EXPECT_EQ(-1, strEmpty.Get_Holders()) << "the block of all empty strings is never unlocked";
    EXPECT_EQ(Units<Char>({0}), Content(TypeParam(Char(0)))) << "one character, whatever it is";
}

TYPED_TEST(String_Core, Serves_Every_Operation_Without_Characters)
{
    using Char = Char_Of<TypeParam>;
    using S = Open<TypeParam>;
    for (void (*edit)(S&) :
         {+[](S& s) { s.TrimLeft(), s.TrimRight(), s.Trim_Left(T("a")), s.Trim_Right(Char('a')); },
          +[](S& s) { s.Make_Lower(), s.Make_Upper(), s.Make_Reverse(), s.Format(T("")); },
          +[](S& s) { s.Empty(), s.Flush(), s.Free_Extra(), s.Lock_Buffer(), s.Unlock_Buffer(); },
          +[](S& s) { s.Remove(Char('a')), s.Remove(0, 9), s.Delete(0, 1), s += T(""); },
          +[](S& s) { s.Replace(T("a"), T("b")), s.Replace(Char('a'), Char('b')), s.Insert(0, T("")); },
          +[](S& s) { s.Release_Buffer(), s.Get_Buffer(0), s = S(), s = static_cast<Char*>(nullptr); }})
    {
        S text;
        text.m_pChars = nullptr;
        EXPECT_TRUE(text.Find(Char('a')) == -1 && text.Find_One_Of(T("a")) == -1);
        EXPECT_EQ(-1, text.Reverse_Find(Char('a')));
        EXPECT_TRUE(text.Mid(0).Is_Empty() && text == S() && text.Compare(T("")) == 0);
        edit(text);
        EXPECT_TRUE(text.Is_Empty());
    }
}

TYPED_TEST(String_Core, Takes_And_Appends_Text_Of_Its_Own)
{
    using Char = Char_Of<TypeParam>;
    Open<TypeParam> text(T("abcdef"));
    text = static_cast<const Char*>(text);
    EXPECT_TEXT_EQ(T("abcdef"), text);
    text = static_cast<const Char*>(text) + 2;
    EXPECT_TEXT_EQ(T("cdef"), text);
    text += static_cast<const Char*>(text) + 2;
    EXPECT_TEXT_EQ(T("cdefef"), text) << "where it fits";
    text += text;
    EXPECT_TEXT_EQ(T("cdefefcdefef"), text) << "where the block must grow";
    TypeParam shared(text);
    text += static_cast<const Char*>(text) + 10;
    EXPECT_TEXT_EQ(T("cdefefcdefefef"), text) << "where the block is shared";
    EXPECT_TEXT_EQ(T("cdefefcdefef"), shared);
}

TYPED_TEST(String_Core, Appends_Words_Of_Every_Length)
{
    using Char = Char_Of<TypeParam>;
    constexpr unsigned long long nMost = 40;
    Open<TypeParam> text;
    text.Get_Buffer(nMost * nMost);
    std::vector<Char> expected;
    for (unsigned long long nLength = 1; nLength < nMost; ++nLength)
    {
        std::vector<Char> word;
        for (unsigned long long i = 0; i < nLength; ++i)
            word.push_back(static_cast<Char>('A' + (nLength + i) % 50));
        expected.insert(expected.end(), word.begin(), word.end());
        word.push_back(0);
        text += word.data();
        ASSERT_EQ(expected, std::vector<Char>(text.m_pChars, text.m_pChars + text.Get_Length())) << nLength;
        ASSERT_EQ(0, text.m_pChars[text.Get_Length()]) << nLength;
    }
}

TYPED_TEST(String_Core, Refuses_A_Size_That_Cannot_Be_Counted)
{
    using Char = Char_Of<TypeParam>;
    Open<TypeParam> source(T("abcdef"));
    Open<TypeParam> part;
    source.alloc_Copy(part, 3, 2, 2);
    ASSERT_EQ(5U, part.Get_Length());
    part.m_pChars[3] = part.m_pChars[4] = 'x';
    EXPECT_TEXT_EQ(T("cdexx"), part);
    EXPECT_THROW(source.alloc_Copy(part, 2, 0, ~0ULL - 1), std::bad_alloc);
    EXPECT_THROW(source.Get_Buffer(~0ULL / sizeof(Char)), std::bad_alloc);
    EXPECT_TEXT_EQ(T("abcdef"), source);
}
