#include "lib_protected.h"
#include "test_text.h"

#include <gtest/gtest.h>

#include <type_traits>

using test_support::Wide_Text;

static_assert(sizeof(Lib_Protected_String) == sizeof(Lib_Protected_Buffer) &&
              !std::is_polymorphic_v<Lib_Protected_String>);

TEST(Protected_String, Gives_Back_Its_Text)
{
    const Lib_Protected_String pin(L"3441");
    EXPECT_TEXT_EQ(L"3441", pin.Get_String());
    const Lib_String strText = pin;
    EXPECT_TEXT_EQ(L"3441", strText);

    Lib_Protected_String copy(pin);
    EXPECT_TEXT_EQ(L"3441", copy.Get_String());
    copy = Lib_String(L"a much longer text, \x0416 and \xFFFD, than before");
    EXPECT_TEXT_EQ(L"a much longer text, \x0416 and \xFFFD, than before", copy.Get_String());
    copy = Lib_String(L"short");
    EXPECT_TEXT_EQ(L"short", copy.Get_String());
    const Lib_Protected_String& same = copy;
    copy = same;
    EXPECT_TEXT_EQ(L"short", copy.Get_String());
    copy = pin;
    EXPECT_TEXT_EQ(L"3441", copy.Get_String());
}

TEST(Protected_String, Is_Empty_Without_A_Text)
{
    EXPECT_TEXT_EQ(L"", Lib_Protected_String().Get_String());
    EXPECT_TEXT_EQ(L"", Lib_Protected_String(Lib_String()).Get_String());
    Lib_Protected_String pin(L"3441");
    pin = Lib_String();
    EXPECT_TEXT_EQ(L"", pin.Get_String());
}

TEST(Protected_String, Ends_At_The_First_Nul)
{
    Lib_String strText(L"abcdef");
    strText.Set_At(3, L'\0');
    EXPECT_TEXT_EQ(L"abc", Lib_Protected_String(strText).Get_String());
    strText.Set_At(0, L'\0');
    EXPECT_TEXT_EQ(L"", Lib_Protected_String(strText).Get_String());
}
