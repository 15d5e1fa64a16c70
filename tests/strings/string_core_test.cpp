#include "string_probe.h"

using namespace test_support;

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
    Open<TypeParam> strNull_Chars(T("x"));
    strNull_Chars.Flush();
    strNull_Chars.m_pChars = nullptr;
    for (const Open<TypeParam>& text :
         {strEmpty, Open<TypeParam>(pNull), Open<TypeParam>(T("")), Open<TypeParam>(strNull_Chars),
          Open<TypeParam>(strEmpty.Left(0)), Open<TypeParam>(strEmpty + strEmpty)})
    {
        EXPECT_TRUE(text.Is_Empty());
        EXPECT_EQ(0U, text.Get_Length());
        EXPECT_EQ(0U, text.Get_Alloc_Length());
        EXPECT_EQ(nullptr, static_cast<const Char*>(text));
        EXPECT_TRUE(text.Shares_With(strEmpty));
        EXPECT_EQ(-1, text.Get_Holders());
        EXPECT_EQ(0, text.Get_At(0));
    }
    strEmpty.Lock_Buffer();
    strEmpty.Unlock_Buffer();
    EXPECT_EQ(-1, strEmpty.Get_Holders()) << "the block of all empty strings is never unlocked";
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
        edit(text);
        EXPECT_TRUE(text.Is_Empty());
    }
    S text;
    text.m_pChars = nullptr;
    EXPECT_EQ(-1, text.Find(Char('a')));
    EXPECT_EQ(-1, text.Find_One_Of(T("a")));
    EXPECT_EQ(-1, text.Reverse_Find(Char('a')));
    EXPECT_TRUE(text.Mid(0).Is_Empty() && text == S() && text.Compare(T("")) == 0);
    text += T("b");
    EXPECT_TEXT_EQ(T("b"), text);
}

TYPED_TEST(String_Core, Is_Made_With_A_Block_That_Fits_Exactly)
{
    using Char = Char_Of<TypeParam>;
    for (const Open<TypeParam>& text :
         {Open<TypeParam>(T("abc")), Open<TypeParam>(TypeParam(T("ab")) + Char('c')),
          Open<TypeParam>(TypeParam() + T("abc")), Open<TypeParam>(TypeParam(T("xabcx")).Mid(1, 3))})
    {
        EXPECT_TEXT_EQ(T("abc"), text);
        EXPECT_EQ(3U, text.Get_Alloc_Length());
    }
    EXPECT_EQ(Units<Char>({0}), Content(TypeParam(Char(0)))) << "one character, whatever it is";
    EXPECT_EQ(1U, TypeParam(Char(0)).Get_Alloc_Length());
}

TYPED_TEST(String_Core, Takes_And_Appends_Text_Of_Its_Own)
{
    using Char = Char_Of<TypeParam>;
    Open<TypeParam> text(T("abcdef"));
    const Open<TypeParam>& same = text;
    text = same;
    text = static_cast<const Char*>(text);
    EXPECT_TEXT_EQ(T("abcdef"), text);
    text = static_cast<const Char*>(text) + 2;
    EXPECT_TEXT_EQ(T("cdef"), text);
    EXPECT_EQ(6U, text.Get_Alloc_Length());
    text += static_cast<const Char*>(text) + 2;
    EXPECT_TEXT_EQ(T("cdefef"), text) << "where it fits";
    text += text;
    EXPECT_TEXT_EQ(T("cdefefcdefef"), text) << "where the block must grow";
    EXPECT_EQ(12U, text.Get_Alloc_Length());
    TypeParam shared(text);
    text += static_cast<const Char*>(text) + 10;
    EXPECT_TEXT_EQ(T("cdefefcdefefef"), text) << "where the block is shared";
    EXPECT_TEXT_EQ(T("cdefefcdefef"), shared);
    text.Get_Buffer(100);
    text += text;
    EXPECT_TEXT_EQ(T("cdefefcdefefefcdefefcdefefef"), text);
}

TYPED_TEST(String_Core, Keeps_A_Lock_As_Long_As_The_Text_Fits)
{
    using Char = Char_Of<TypeParam>;
    Open<TypeParam> text(T("abc"));
    text.Get_Buffer(8);
    Char* pLocked = text.Lock_Buffer();
    Open<TypeParam> copy(text);
    *pLocked = 'x';
    EXPECT_TEXT_EQ(T("abc"), copy) << "a copy of a locked string has a block of its own";
    EXPECT_EQ(3U, copy.Get_Alloc_Length());
    pLocked[1] = 0;
    EXPECT_TEXT_EQ(T("x"), Open<TypeParam>(text)) << "up to the NUL when copied";
    copy = text;
    EXPECT_EQ(Units<Char>({'x', 0, 'c'}), Content(copy)) << "as long as it is when assigned";

    text = Open<TypeParam>(T("12345"));
    text += T("678");
    text.Empty();
    text.Insert(0, T("12345678"));
    EXPECT_EQ(pLocked, text.m_pChars);
    EXPECT_EQ(-1, text.Get_Holders());
    text += T("9");
    EXPECT_EQ(1, text.Get_Holders()) << "growing ends it";

    for (void (*end)(Open<TypeParam>&) :
         {+[](Open<TypeParam>& s) { s.Unlock_Buffer(); }, +[](Open<TypeParam>& s) { s.Get_Buffer(100); },
          +[](Open<TypeParam>& s) { s.Insert(0, T("0123456789")); },
          +[](Open<TypeParam>& s) { s = T("0123456789"); }, +[](Open<TypeParam>& s) { s.Free_Extra(); }})
    {
        Open<TypeParam> locked(T("abcdef"));
        locked.Delete(0, 1);
        locked.Lock_Buffer();
        end(locked);
        EXPECT_EQ(1, locked.Get_Holders());
        EXPECT_TRUE(locked.Shares_With(Open<TypeParam>(locked)));
    }
}

TYPED_TEST(String_Core, Builds_On_Blocks_For_Derived_Classes)
{
    using Char = Char_Of<TypeParam>;
    const Open<TypeParam> source(T("abcdef"));
    Open<TypeParam> part;
    source.alloc_Copy(part, 3, 2, 2);
    ASSERT_EQ(5U, part.Get_Length());
    part.m_pChars[3] = part.m_pChars[4] = 'x';
    EXPECT_TEXT_EQ(T("cdexx"), part);
    Open<TypeParam> empty;
    source.alloc_Copy(empty, 0, 2, 0);
    empty.concat_Copy(0, nullptr, 0, nullptr);
    EXPECT_TRUE(empty.Shares_With(Open<TypeParam>()));
    EXPECT_THROW(source.alloc_Copy(empty, 2, 0, ~0ULL - 1), std::bad_alloc);
    EXPECT_THROW(part.Get_Buffer(~0ULL / sizeof(Char)), std::bad_alloc) << "a size that can't be counted";
    EXPECT_TEXT_EQ(T("cdexx"), part);
}
