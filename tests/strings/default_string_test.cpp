#include "string_probe.h"

using namespace test_support;

namespace
{

template <class Left, class Right>
using Sum = decltype(std::declval<Left>() + std::declval<Right>());

using W = Lib_StringW;
using A = Lib_StringA;
using S = Lib_String;
static_assert(std::is_same_v<Sum<S, W>, S> && std::is_same_v<Sum<W, S>, S> && std::is_same_v<Sum<W, W>, W>);
static_assert(std::is_same_v<Sum<const wchar_t*, S>, S> && std::is_same_v<Sum<wchar_t, S>, S>);
static_assert(std::is_same_v<Sum<S, const char*>, S> && std::is_same_v<Sum<W, const char*>, W>);
static_assert(std::is_same_v<Sum<char, A>, A> && std::is_same_v<Sum<const char*, A>, A>);

/// Every comparison of two operands must tell the same order: -1, 0 or 1.
template <class Left, class Right>
void Expect_Order(int nOrder, const Left& left, const Right& right)
{
    EXPECT_EQ(nOrder == 0, left == right);
    EXPECT_EQ(nOrder != 0, left != right);
    EXPECT_EQ(nOrder < 0, left < right);
    EXPECT_EQ(nOrder <= 0, left <= right);
    EXPECT_EQ(nOrder > 0, left > right);
    EXPECT_EQ(nOrder >= 0, left >= right);
}

template <class String>
class Text_Operators : public testing::Test
{
};
using All_Classes = testing::Types<A, W, S>;
TYPED_TEST_SUITE(Text_Operators, All_Classes);

} // namespace

TYPED_TEST(Text_Operators, Order_Strings_And_Texts_In_Every_Form)
{
    using Char = Char_Of<TypeParam>;
    const Char* const texts[] = {T("a"), T("ab"), T("\xE9"), T("")}; // in their order
    for (int i = 0; i < 4; ++i)
        for (int j = 0; j < 4; ++j)
        {
            const int nOrder = (i > j) - (i < j);
            SCOPED_TRACE(testing::Message() << i << " and " << j);
            Expect_Order(nOrder, TypeParam(texts[i]), TypeParam(texts[j]));
            Expect_Order(nOrder, TypeParam(texts[i]), texts[j]);
            Expect_Order(nOrder, texts[i], TypeParam(texts[j]));
        }
    const Char* pNull = nullptr;
    Expect_Order(0, TypeParam(), pNull);
    Expect_Order(1, pNull, TypeParam(T("a")));
}

TYPED_TEST(Text_Operators, Join_Into_A_Block_Of_Their_Own)
{
    using Char = Char_Of<TypeParam>;
    const Char* const pNull = nullptr;
    Open<TypeParam> text;
    Take(text, {'a', 0, 'b'});
    for (const Open<TypeParam>& sum :
         {Open<TypeParam>(text + TypeParam()), Open<TypeParam>(TypeParam() + text),
          Open<TypeParam>(text + pNull), Open<TypeParam>(T("") + text)})
    {
        EXPECT_EQ(Content(text), Content(sum));
        EXPECT_EQ(3U, sum.Get_Alloc_Length());
        EXPECT_FALSE(sum.Shares_With(text));
    }
    EXPECT_EQ(Units<Char>({'a', 0, 'b', 'a', 0, 'b'}), Content(text + text));
    EXPECT_EQ(Units<Char>({'x', 'a', 0, 'b'}), Content(T("x") + text));
    EXPECT_EQ(Units<Char>({'a', 0, 'b', 0}), Content(text + Char(0)));
    EXPECT_EQ(Units<Char>({'x', 'a', 0, 'b'}), Content(Char('x') + text));
    text.Lock_Buffer();
    EXPECT_EQ(4U, (TypeParam(T("x")) + text).Get_Length()) << "the stored length, also of a locked operand";
}

TEST(Default_String, Shares_With_The_String_It_Is_Made_From)
{
    const Open<W> wide(L"abc");
    Lib_String text(wide);
    EXPECT_EQ(wide.GetW(), text.GetW());
    text.Set_At(0, L'x');
    EXPECT_TEXT_EQ(L"abc", wide);
    text = wide;
    EXPECT_EQ(2, wide.Get_Holders());
}

namespace
{

/// Compares by the length, and reads as another text.
class By_Length : public Lib_String
{
public:
    using Lib_String::Lib_String;
    int Compare(const wchar_t* pText) const override
    {
        return static_cast<int>(Get_Length()) - static_cast<int>(Lib_String(pText).Get_Length());
    }
    operator const wchar_t*() const override { return L"four"; }
};

} // namespace

TEST(Default_String, Lets_A_Derived_Class_Change_The_Operators)
{
    const By_Length longer(L"aaa");
    EXPECT_TRUE(longer == L"bbb");
    EXPECT_TRUE(L"zz" < longer);
    EXPECT_TRUE(Lib_String(L"four") <= longer) << "the right operand counts as what it casts to";
    EXPECT_FALSE(Lib_String(L"four").operator==(longer)) << "the member compares the texts themselves";
}

TEST(Width_Conversion, Makes_Strings_Of_The_Other_Width)
{
    EXPECT_TRUE(Lib_String(static_cast<const char*>(nullptr)).Is_Empty());
    EXPECT_TRUE(Lib_StringA(static_cast<const wchar_t*>(nullptr)).Is_Empty());
    EXPECT_TEXT_EQ(L"a\x20AC\xE9", Lib_String("a\x80\xE9"));
    EXPECT_TEXT_EQ("a\x80\xE9?", Lib_StringA(L"a\x20AC\xE9\x4E2D"));
    for (const std::size_t nLength : {127U, 128U, 255U, 256U, 1000U})
    {
        const std::string narrow(nLength, '\xE9');
        EXPECT_EQ(nLength, Lib_StringW(narrow.c_str()).Get_Alloc_Length());
        EXPECT_TEXT_EQ(narrow.c_str(), Lib_StringA(Lib_StringW(narrow.c_str()).GetW()));
    }
}

TEST(Width_Conversion, Hands_Out_Buffers_Of_The_Told_Size)
{
    const auto Holds = [](const Lib_Buffer& buffer, const auto& units)
    { return buffer.Is_Equals(units, sizeof(units)); };
    const Lib_StringA narrow("a\x80");
    EXPECT_TRUE(Holds(narrow.Get(), L"a\x20AC"));
    EXPECT_TRUE(Holds(narrow.operator LibT_Buffer<wchar_t>(), L"a\x20AC"));
    EXPECT_TRUE(Holds(narrow.GetW(), L"a\x20AC\0\0\0")) << "zeros behind the text";
    const Lib_StringW wide(L"a\x20AC");
    EXPECT_TRUE(Holds(wide.Get(), L"a\x20AC"));
    EXPECT_TRUE(Holds(wide.GetA(), "a\x80"));
    for (const Lib_Buffer& buffer : {Lib_Buffer(Lib_StringA().Get()), Lib_Buffer(Lib_StringA().GetW()),
                                     Lib_Buffer(Lib_StringW().Get()), Lib_Buffer(Lib_StringW().GetA())})
        EXPECT_EQ(0U, buffer.Get_Size());

    Lib_StringA divided;
    Take(divided, {'a', 0, 'b'});
    EXPECT_TRUE(Holds(divided.Get(), L"a")) << "up to the first NUL";
    EXPECT_EQ(8U, divided.GetW().Get_Size());
}

TEST(Width_Conversion, Turns_Ansi_Into_Oem_In_Place)
{
    Lib_StringA text;
    Take(text, {'a', '\xE9', 0, '\xE9'});
    const Lib_StringA other(text);
    text.ANSI_To_OEM();
    EXPECT_EQ(Units<char>({'a', '\x82', 0, '\xE9'}), Content(text));
    text.OEM_To_ANSI();
    EXPECT_EQ(Content(other), Content(text));
    EXPECT_NE(other.GetA(), text.GetA());
}
