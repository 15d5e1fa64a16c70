#include "lib_foundation.h"
#include "platform/system_calls.h"
#include "test_text.h"

#include <cstring>

#include <dlfcn.h>

QN_MESSAGE_TABLE({1, 0x409, L"of the program\r\n"});

TEST(Result_Text, Of_A_Missing_Module_Is_The_Programs_Own_Or_Empty)
{
    const System_Calls saved = system_calls;
    system_calls.open_module = [](const char* path, int mode)
    { return path != nullptr && std::strstr(path, "qnErr") != nullptr ? nullptr : dlopen(path, mode); };
    EXPECT_EQ(nullptr, LoadLibraryW(L"qnErr.dll"));
    EXPECT_TEXT_EQ(L"", Lib_Result(1, 2).Get_Result_Text(0x409)) << "the program exports no table";
    EXPECT_TEXT_EQ(L"", Lib_Result(5, 2).Get_Result_Text(0)) << "the platform is not asked";
    system_calls.find_symbol = [](void*, const char* name) -> void*
    {
        const bool bTable = std::strcmp(name, "qn_message_table") == 0;
        return bTable ? const_cast<Lib_Message_Table_Entry*>(qn_message_table) : nullptr;
    };
    EXPECT_TEXT_EQ(L"of the program\r\n", Lib_Result(1, 2).Get_Result_Text(0x409));
    EXPECT_TEXT_EQ(L"", Lib_Result(3, 2).Get_Result_Text(0x409)) << "a code of qnErr's alone";
    system_calls = saved;
    EXPECT_TEXT_EQ(L"The card is blocked.\r\n", Lib_Result(1, 2).Get_Result_Text(0x409));
}
