#include "lib_foundation.h"
#include "lib_platform.h"
#include "test_text.h"

#include <type_traits>

static_assert(std::has_virtual_destructor_v<Lib_Result>);
static_assert(sizeof(Lib_Result) == sizeof(void*) + 3 * sizeof(unsigned int) + 4 + sizeof(Lib_String));

TEST(Result, Compares_By_Source_And_Code)
{
    Lib_Result left(5, 1);
    Lib_Result right(5, 1);
    left.Set_Additional_Info(7);
    right.Set_Error_Info(L"text");
    EXPECT_TRUE(left == right);
    EXPECT_FALSE(left != right);
    EXPECT_TRUE(left != Lib_Result(5, 2));
    EXPECT_TRUE(left != Lib_Result(6, 1));
    EXPECT_TRUE(Lib_Result(0, 1).Is_Success());
    EXPECT_FALSE(Lib_Result(0x80090011, 0).Is_Success());
}

TEST(Result, Keeps_What_Is_The_Callers)
{
    Lib_Result result(5, 2);
    result.Set_Additional_Info(7);
    result.Set_Error_Info(L"what was tried");
    result.Set_Result(3, 4);
    const Lib_Result copy(result);
    result.Reset_Result();
    EXPECT_TRUE(result == Lib_Result());
    EXPECT_EQ(7U, result.Get_Additional_Info());
    EXPECT_TEXT_EQ(L"what was tried", result.Get_Error_Info());

    result = Lib_Result();
    EXPECT_EQ(0U, result.Get_Additional_Info());
    EXPECT_TRUE(result.Get_Error_Info().Is_Empty());
    result = copy;
    const Lib_Result& self = result;
    result = self;
    EXPECT_TRUE(result == Lib_Result(3, 4));
    EXPECT_EQ(7U, result.Get_Additional_Info());
    EXPECT_TEXT_EQ(L"what was tried", result.Get_Error_Info());
}

TEST(Result, Tells_The_Platforms_Text)
{
    for (const unsigned int nCode : {2U, 170U, 0x80070057U})
        for (const unsigned int nLanguage : {0U, 0x409U})
        {
            const Lib_String text = Lib_Result(nCode, 1).Get_Result_Text(nLanguage);
            EXPECT_TRUE(text.Get_Length() > 5) << "code " << nCode << " in language " << nLanguage;
            EXPECT_TEXT_EQ(L".\r\n", text.Right(3)) << "code " << nCode << " in language " << nLanguage;
        }
    EXPECT_TRUE(Lib_Result(12345678, 1).Get_Result_Text(0).Is_Empty());
    EXPECT_TRUE(Lib_Result(5, 1).Get_Result_Text(0xFFFF).Is_Empty());
}

TEST(Result, Tells_The_Text_Of_The_Sibling_Module)
{
    EXPECT_TEXT_EQ(L"The card is blocked.\r\n", Lib_Result(1, 2).Get_Result_Text(0x409));
    EXPECT_TEXT_EQ(L"\u041A\u0430\u0440\u0442\u0430 "
                   L"\u0437\u0430\u0431\u043B\u043E\u043A\u0438\u0440\u043E\u0432\u0430\u043D\u0430.\r\n",
                   Lib_Result(1, 2).Get_Result_Text(0x419));
    EXPECT_TEXT_EQ(L"The card is blocked.\r\n", Lib_Result(1, 2).Get_Result_Text(0));
    EXPECT_TEXT_EQ(L"The desk is closed", Lib_Result(1000, 2).Get_Result_Text(0x409));
    EXPECT_TRUE(Lib_Result(1000, 2).Get_Result_Text(0x419).Is_Empty()) << "not in this language";
    EXPECT_TRUE(Lib_Result(2, 2).Get_Result_Text(0x409).Is_Empty()) << "its insert has no argument";
    EXPECT_EQ(nullptr, GetModuleHandleW(L"qnErr")) << "the module is still loaded";
}

TEST(Result, Asks_Nobody_For_Other_Sources)
{
    for (const unsigned int nSource : {0U, 3U})
    {
        SetLastError(4711);
        EXPECT_TRUE(Lib_Result(5, nSource).Get_Result_Text(0).Is_Empty());
        EXPECT_EQ(4711U, GetLastError());
    }
}
