#include "failing_allocator.h"
#include "lib_foundation.h"
#include "lib_platform.h"

using namespace test_support;

TEST(Modules_Allocation, A_Load_Fails_Whole)
{
    const auto load = [](unsigned int nNth)
    {
        HMODULE hModule = nullptr;
        const bool bFailed = Call_Failing(nNth, [&] { hModule = LoadLibraryW(L"qn_test_module"); }).m_bFailed;
        EXPECT_EQ(bFailed, hModule == nullptr);
        EXPECT_TRUE(bFailed ? GetLastError() == 8 : FreeLibrary(hModule));
        return bFailed;
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
        SetLastError(0);
        DWORD nLength = 0;
        const bool bFailed =
            Call_Failing(nNth,
                         [&]
                         {
                             nLength = FormatMessageW(
                                 FORMAT_MESSAGE_FROM_STRING | FORMAT_MESSAGE_ARGUMENT_ARRAY,
                                 L"seven is %1!d!", 0, 0, text, 20, reinterpret_cast<std::va_list*>(values));
                         })
                .m_bFailed;
        EXPECT_EQ(bFailed ? 0U : 10U, nLength);
        EXPECT_EQ(bFailed ? L'b' : L's', text[0]);
        EXPECT_TRUE(!bFailed || GetLastError() == 8);
        return bFailed;
    };
    EXPECT_LT(0U, Fail_Each_Allocation_Without_Loss(format));
}

TEST(Modules_Allocation, A_Result_Loses_No_Text)
{
    const auto tell = [](unsigned int nNth)
    {
        const Lib_Result result(1, 2);
        unsigned long long nLength = 0;
        const Outcome outcome =
            Call_Failing(nNth, [&] { nLength = result.Get_Result_Text(0x409).Get_Length(); });
        EXPECT_TRUE(outcome.m_bFailed || nLength == 22);
        return outcome.m_bFailed;
    };
    EXPECT_LT(2U, Fail_Each_Allocation_Without_Loss(tell));
    EXPECT_EQ(nullptr, GetModuleHandleW(L"qnErr"));
}
