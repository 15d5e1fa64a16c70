// Loads from the program's own string table: string_table_linux.cpp, or string_table.rc on Windows.

#include "string_probe.h"

using namespace test_support;

TEST(Load_String, Takes_A_Text_Of_Any_Length)
{
    for (const auto& [nId, nCapacity] : {std::pair(254U, 254U), std::pair(255U, 511U), std::pair(600U, 767U)})
    {
        Lib_String text(L"before");
        const Lib_String other(text);
        ASSERT_EQ(1, text.Load_String(nId, nullptr));
        ASSERT_EQ(nId, text.Get_Length());
        for (unsigned int i = 0; i < nId; ++i)
            ASSERT_EQ(L'0' + static_cast<int>(i % 10), text.Get_At(i)) << "unit " << i << " of " << nId;
        EXPECT_EQ(nCapacity, text.Get_Alloc_Length()) << "a short text comes without spare room";
        EXPECT_TEXT_EQ(L"before", other);
    }
}

TEST(Load_String, Asks_The_Module_That_It_Is_Given)
{
    const HMODULE hModule = LoadLibraryW(L"qn_test_module");
    Lib_String text;
    EXPECT_EQ(1, text.Load_String(7, nullptr));
    EXPECT_TEXT_EQ(L"seven", text);
    EXPECT_EQ(1, text.Load_String(7, hModule));
    EXPECT_TEXT_EQ(L"seven of the module", text);
    EXPECT_EQ(0, text.Load_String(254, hModule)) << "a text that the program has";
    EXPECT_TRUE(text.Is_Empty());
    FreeLibrary(hModule);
}
