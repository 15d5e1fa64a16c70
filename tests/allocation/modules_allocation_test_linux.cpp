#include "failing_allocator.h"
#include "lib_foundation.h"
#include "lib_kernel.h"
#include "lib_platform.h"

#include <new>

using namespace test_support;

TEST(Modules_Allocation, A_Load_Fails_Whole)
{
    const auto load = [](unsigned int nNth)
    {
        const Failing_Allocation failure(nNth);
        const HMODULE hModule = LoadLibraryW(L"qn_test_module");
        if (failure.Has_Failed())
        {
            EXPECT_EQ(nullptr, hModule);
            EXPECT_EQ(8U, GetLastError());
        }
        else
        {
            EXPECT_NE(nullptr, hModule);
            FreeLibrary(hModule);
        }
        return failure.Has_Failed();
    };
    EXPECT_LT(0U, Fail_Each_Allocation_Without_Loss(load));
    EXPECT_EQ(nullptr, GetModuleHandleW(L"qn_test_module"));
}

TEST(Modules_Allocation, A_Message_Fails_Whole)
{
    DWORD_PTR values[] = {7};
    const auto format = [&](unsigned int nNth)
    {
        wchar_t text[20] = L"before";
        const Failing_Allocation failure(nNth);
        SetLastError(0);
        const DWORD nLength =
            FormatMessageW(FORMAT_MESSAGE_FROM_STRING | FORMAT_MESSAGE_ARGUMENT_ARRAY, L"seven is %1!d!", 0,
                           0, text, 20, reinterpret_cast<std::va_list*>(values));
        EXPECT_EQ(failure.Has_Failed() ? 0U : 10U, nLength);
        EXPECT_EQ(failure.Has_Failed() ? 8U : 0U, GetLastError());
        EXPECT_EQ(failure.Has_Failed() ? L'b' : L's', text[0]);
        return failure.Has_Failed();
    };
    EXPECT_LT(0U, Fail_Each_Allocation_Without_Loss(format));
}

TEST(Modules_Allocation, A_Result_Loses_No_Text)
{
    const auto tell = [](unsigned int nNth)
    {
        const Lib_Result result(1, 2);
        const Failing_Allocation failure(nNth);
        try
        {
            const Lib_String text = result.Get_Result_Text(0x409);
            EXPECT_TRUE(failure.Has_Failed() || text.Get_Length() == 22);
        }
        catch (const std::bad_alloc&)
        {
            EXPECT_TRUE(failure.Has_Failed());
        }
        return failure.Has_Failed();
    };
    EXPECT_LT(2U, Fail_Each_Allocation_Without_Loss(tell));
    EXPECT_EQ(nullptr, GetModuleHandleW(L"qnErr"));
}
