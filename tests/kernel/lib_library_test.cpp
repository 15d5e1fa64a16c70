#include "lib_kernel.h"
#include "test_text.h"

namespace
{

using Next = int (*)(int);

bool Is_Loaded() { return GetModuleHandleW(L"qn_test_module") != nullptr; }

} // namespace

TEST(Library, Holds_One_Load_And_Frees_It)
{
    {
        const Lib_Library library(L"qn_test_module");
        ASSERT_NE(nullptr, static_cast<HINSTANCE>(library));
        EXPECT_EQ(GetModuleHandleW(L"qn_test_module"), static_cast<HINSTANCE>(library));
    }
    EXPECT_FALSE(Is_Loaded());

    Lib_Library library;
    EXPECT_EQ(nullptr, static_cast<HINSTANCE>(library));
    library.Free();
    const HINSTANCE loaded = library.Load(L"qn_test_module");
    EXPECT_EQ(loaded, static_cast<HINSTANCE>(library));
    EXPECT_TRUE(Is_Loaded());
    library.Free();
    EXPECT_FALSE(Is_Loaded());
    EXPECT_EQ(nullptr, static_cast<HINSTANCE>(library));
}

TEST(Library, Frees_What_It_Held_Even_If_It_Then_Loads_Nothing)
{
    Lib_Library library(L"qn_test_module");
    ASSERT_TRUE(Is_Loaded());
    EXPECT_EQ(nullptr, library.Load(L"no_such_module_anywhere"));
    EXPECT_EQ(126U, GetLastError());
    EXPECT_EQ(nullptr, static_cast<HINSTANCE>(library));
    EXPECT_FALSE(Is_Loaded());
    EXPECT_EQ(nullptr, static_cast<HINSTANCE>(Lib_Library(L"no_such_module_anywhere")));
}

TEST(Library, Shares_One_Load_After_An_Assignment)
{
    Lib_Library source(L"qn_test_module");
    Lib_Library holder(L"qn_test_module");
    holder.Free();
    ASSERT_TRUE(Is_Loaded());
    {
        Lib_Library target;
        target = source;
        EXPECT_EQ(static_cast<HINSTANCE>(source), static_cast<HINSTANCE>(target));
        source = Lib_Library();
        EXPECT_TRUE(Is_Loaded()) << "an assignment frees nothing";
    }
    EXPECT_FALSE(Is_Loaded()) << "the target had the only claim left";
}

TEST(Library, Finds_Entry_Points_By_Wide_Names)
{
    const Lib_Library library(L"qn_test_module");
    const auto pNext = reinterpret_cast<Next>(library.Get_Proc_Address(L"Qn_Test_Next"));
    ASSERT_NE(nullptr, pNext);
    EXPECT_EQ(8, pNext(7));
    EXPECT_EQ(nullptr, library.Get_Proc_Address(L"Qn_Test_Next\u0416"));
    EXPECT_EQ(127U, GetLastError());
    EXPECT_EQ(nullptr, library.Get_Proc_Address(nullptr));
    EXPECT_EQ(127U, GetLastError());
    EXPECT_EQ(nullptr, Lib_Library().Get_Proc_Address(L"Qn_Test_Next"));
}
