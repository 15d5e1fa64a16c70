// Modules by their names, on both targets. qn_test_module has one entry point and one string.

#include "lib_platform.h"
#include "test_text.h"

#include <vector>

namespace
{

using Next = int (*)(int);

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

} // namespace

TEST(Loading, Counts_Loads)
{
    ASSERT_EQ(nullptr, GetModuleHandleW(L"qn_test_module"));
    const HMODULE module = LoadLibraryW(L"qn_test_module");
    ASSERT_NE(nullptr, module) << "last error " << GetLastError();
    EXPECT_EQ(module, LoadLibraryW(L"QN_TEST_MODULE.dll")) << "one module, whatever the case and the ending";
    EXPECT_EQ(module, GetModuleHandleW(L"Qn_Test_Module.DLL"));
    EXPECT_TRUE(FreeLibrary(module));
    EXPECT_EQ(module, GetModuleHandleW(L"qn_test_module"))
        << "asking for the handle is no load, freeing is one";
    EXPECT_TRUE(FreeLibrary(module));
    EXPECT_EQ(nullptr, GetModuleHandleW(L"qn_test_module"));
    EXPECT_EQ(126U, GetLastError());
    EXPECT_FALSE(FreeLibrary(module));
    EXPECT_EQ(126U, GetLastError());
}

TEST(Loading, Takes_The_Path_That_A_Module_Tells)
{
    const HMODULE module = LoadLibraryW(L"qn_test_module");
    std::vector<wchar_t> path(4096);
    const DWORD nLength = GetModuleFileNameW(module, path.data(), 4096);
    ASSERT_LT(0U, nLength);
    ASSERT_NE(L'\0', path[0]);
    EXPECT_EQ(module, GetModuleHandleW(path.data()));
    EXPECT_EQ(module, LoadLibraryW(path.data()));
    FreeLibrary(module);
    FreeLibrary(module);
    EXPECT_EQ(nullptr, GetModuleHandleW(path.data()));

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
    EXPECT_EQ(library, GetModuleHandleW(L"qnLib.dll"));
    EXPECT_EQ(library, LoadLibraryW(L"qnLib"));
    EXPECT_TRUE(FreeLibrary(library));
}

TEST(Loading, Finds_Entry_Points_By_Their_Exact_Names)
{
    const HMODULE module = LoadLibraryW(L"qn_test_module");
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

TEST(Loading, Loads_Strings_Of_A_Module)
{
    const HMODULE module = LoadLibraryW(L"qn_test_module");
    wchar_t text[32] = L"";
    EXPECT_EQ(19, LoadStringW(module, 7, text, 32));
    EXPECT_TEXT_EQ(L"seven of the module", static_cast<const wchar_t*>(text));
    EXPECT_EQ(0, LoadStringW(module, 8, text, 32));
    FreeLibrary(module);
}
