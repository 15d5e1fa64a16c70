// Modules by their names, on both targets. qn_test_module has one entry point and one string.

#include "lib_kernel.h"
#include "test_text.h"

#include <vector>

namespace
{

using Next = int (*)(int);

constexpr const wchar_t* MODULE = L"qn_test_module";

DWORD Error_Of(const void* pResult)
{
    EXPECT_EQ(nullptr, pResult);
    return GetLastError();
}

template <class Function>
DWORD Error_Of_Entry(Function* pEntry)
{
    return Error_Of(reinterpret_cast<const void*>(pEntry));
}

bool Is_Loaded() { return GetModuleHandleW(MODULE) != nullptr; }

HINSTANCE Held(const Lib_Library& library) { return static_cast<HINSTANCE>(library); }

} // namespace

TEST(Loading, Counts_Loads)
{
    ASSERT_FALSE(Is_Loaded());
    const HMODULE module = LoadLibraryW(MODULE);
    ASSERT_NE(nullptr, module) << "last error " << GetLastError();
    EXPECT_EQ(module, LoadLibraryW(L"QN_TEST_MODULE.dll")) << "one module, whatever the case and the ending";
    EXPECT_EQ(module, GetModuleHandleW(L"Qn_Test_Module.DLL"));
    std::vector<wchar_t> path(4096);
    const DWORD nLength = GetModuleFileNameW(module, path.data(), 4096);
    ASSERT_LT(0U, nLength);
    EXPECT_EQ(module, LoadLibraryW(path.data()));
    for (int i = 0; i < 3; ++i)
    {
        EXPECT_EQ(module, GetModuleHandleW(path.data())) << "asking for the handle is no load";
        EXPECT_TRUE(FreeLibrary(module));
    }
    EXPECT_EQ(126U, Error_Of(GetModuleHandleW(MODULE)));
    EXPECT_EQ(126U, Error_Of(GetModuleHandleW(path.data())));
    EXPECT_FALSE(FreeLibrary(module));
    EXPECT_EQ(126U, GetLastError());

    const HMODULE again = LoadLibraryW(path.data());
    EXPECT_NE(nullptr, again);
    FreeLibrary(again);
    path[nLength / 2] = L'?';
    EXPECT_EQ(126U, Error_Of(GetModuleHandleW(path.data())));
}

TEST(Loading, Leaves_Modules_Of_The_Program_Alone)
{
    const HMODULE library = GetModuleHandleW(L"qnLib");
    ASSERT_NE(nullptr, library);
    for (int i = 0; i < 3; ++i)
        EXPECT_TRUE(FreeLibrary(library));
    EXPECT_EQ(library, LoadLibraryW(L"qnLib.dll"));
    EXPECT_TRUE(FreeLibrary(library));
}

TEST(Loading, Finds_Entry_Points_And_Strings)
{
    const HMODULE module = LoadLibraryW(MODULE);
    const auto pNext =
        reinterpret_cast<Next>(reinterpret_cast<void*>(GetProcAddress(module, "Qn_Test_Next")));
    ASSERT_NE(nullptr, pNext);
    EXPECT_EQ(42, pNext(41));
    EXPECT_EQ(127U, Error_Of_Entry(GetProcAddress(module, "qn_test_next")));
    EXPECT_EQ(127U, Error_Of_Entry(GetProcAddress(module, "malloc"))) << "an entry of what it is linked with";
    EXPECT_EQ(127U, Error_Of_Entry(GetProcAddress(module, "")));
    EXPECT_EQ(127U, Error_Of_Entry(GetProcAddress(module, nullptr)));
    EXPECT_EQ(127U, Error_Of_Entry(GetProcAddress(module, reinterpret_cast<const char*>(60000))));
    EXPECT_EQ(127U, Error_Of_Entry(GetProcAddress(nullptr, "Qn_Test_Next")));

    wchar_t text[32] = L"";
    EXPECT_EQ(19, LoadStringW(module, 7, text, 32));
    EXPECT_TEXT_EQ(L"seven of the module", static_cast<const wchar_t*>(text));
    EXPECT_EQ(0, LoadStringW(module, 8, text, 32));
    FreeLibrary(module);
    EXPECT_EQ(126U, Error_Of_Entry(GetProcAddress(module, "Qn_Test_Next")));
}

TEST(Loading, Says_Why_There_Is_No_Module)
{
    EXPECT_EQ(126U, Error_Of(LoadLibraryW(L"no_such_module_anywhere")));
    EXPECT_EQ(126U, Error_Of(LoadLibraryW(L"no such folder\\qn_test_module")));
    EXPECT_EQ(126U, Error_Of(LoadLibraryW(L"")));
    EXPECT_EQ(87U, Error_Of(LoadLibraryW(nullptr)));
    EXPECT_EQ(126U, Error_Of(GetModuleHandleW(L"")));
    EXPECT_FALSE(FreeLibrary(nullptr));
    EXPECT_EQ(6U, GetLastError());
    int nNoModule = 0;
    EXPECT_FALSE(FreeLibrary(reinterpret_cast<HMODULE>(&nNoModule)));
    EXPECT_EQ(126U, GetLastError());
}

TEST(Library, Holds_One_Load_And_Frees_It)
{
    {
        Lib_Library library(MODULE);
        ASSERT_NE(nullptr, Held(library));
        EXPECT_EQ(GetModuleHandleW(MODULE), Held(library));
        EXPECT_EQ(nullptr, library.Load(L"no_such_module_anywhere")) << "what it held is free all the same";
        EXPECT_EQ(126U, GetLastError());
        EXPECT_EQ(nullptr, Held(library));
        EXPECT_FALSE(Is_Loaded());
        EXPECT_NE(nullptr, library.Load(MODULE));
        EXPECT_TRUE(Is_Loaded());
    }
    EXPECT_FALSE(Is_Loaded());
    Lib_Library empty;
    empty.Free();
    EXPECT_EQ(nullptr, Held(empty));
}

TEST(Library, Shares_One_Load_After_An_Assignment)
{
    Lib_Library source(MODULE);
    {
        Lib_Library target;
        target = source;
        EXPECT_EQ(Held(source), Held(target));
        source = Lib_Library();
        EXPECT_TRUE(Is_Loaded()) << "an assignment frees nothing";
    }
    EXPECT_FALSE(Is_Loaded()) << "the target had the only claim left";
}

TEST(Library, Finds_Entry_Points_By_Wide_Names)
{
    const Lib_Library library(MODULE);
    const auto pNext = reinterpret_cast<Next>(library.Get_Proc_Address(L"Qn_Test_Next"));
    ASSERT_NE(nullptr, pNext);
    EXPECT_EQ(8, pNext(7));
    for (const wchar_t* pNone : {L"Qn_Test_Next\u0416", static_cast<const wchar_t*>(nullptr)})
    {
        EXPECT_EQ(nullptr, library.Get_Proc_Address(pNone));
        EXPECT_EQ(127U, GetLastError());
    }
    EXPECT_EQ(nullptr, Lib_Library().Get_Proc_Address(L"Qn_Test_Next"));
}
