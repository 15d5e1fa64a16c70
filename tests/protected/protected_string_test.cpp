#include "lib_protected.h"
#include "test_text.h"

#include <type_traits>

static_assert(sizeof(Lib_Protected_String) == sizeof(Lib_Protected_Buffer) &&
              !std::is_polymorphic_v<Lib_Protected_String>);

TEST(Protected_String, Gives_Back_Its_Text_To_The_First_Nul)
{
    const Lib_Protected_String pin(L"3441");
    const Lib_String strText = pin;
    EXPECT_TEXT_EQ(L"3441", strText);

    Lib_Protected_String copy(pin);
    copy = Lib_String(L"a much longer text, \x0416 and \xFFFD, than before");
    EXPECT_TEXT_EQ(L"a much longer text, \x0416 and \xFFFD, than before", copy.Get_String());
    copy = Lib_String(L"short");
    EXPECT_TEXT_EQ(L"short", copy.Get_String());
    copy = pin;
    const Lib_Protected_String& same = copy;
    copy = same;
    EXPECT_TEXT_EQ(L"3441", copy.Get_String());
    copy = Lib_String();
    EXPECT_TEXT_EQ(L"", copy.Get_String());
    EXPECT_TEXT_EQ(L"", Lib_Protected_String().Get_String());

    Lib_String strDivided(L"abcdef");
    strDivided.Set_At(3, L'\0');
    EXPECT_TEXT_EQ(L"abc", Lib_Protected_String(strDivided).Get_String());
    strDivided.Set_At(0, L'\0');
    EXPECT_TEXT_EQ(L"", Lib_Protected_String(strDivided).Get_String());
}
