#include "failing_allocator.h"
#include "lib_strings.h"
#include "test_text.h"

using namespace test_support;

// 600 units, for which the string has to grow twice.
#define FIFTY L"01234567890123456789012345678901234567890123456789"
#define TWO_HUNDRED FIFTY FIFTY FIFTY FIFTY

QN_STRING_TABLE({600, TWO_HUNDRED TWO_HUNDRED TWO_HUNDRED});

TEST(Load_String_Allocation, Leaves_The_Old_Text_Or_None)
{
    const auto load = [](unsigned int nNth)
    {
        Lib_String strText(L"before");
        const Outcome outcome = Call_Failing(nNth, [&] { strText.Load_String(600, nullptr); });
        EXPECT_EQ(!outcome.m_bThrown ? 600U : nNth == 1 ? 6U : 0U, strText.Get_Length());
        EXPECT_EQ(0, strText.Get_At(strText.Get_Length())) << "the text ends where its length says";
        return outcome.m_bFailed;
    };
    EXPECT_EQ(2U, Fail_Each_Allocation_Without_Loss(load));
}
