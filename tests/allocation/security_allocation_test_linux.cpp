#include "failing_allocator.h"
#include "lib_services.h"

using namespace test_support;

TEST(Security_Allocation, Gives_Everything_Back_When_Memory_Is_Out)
{
    wchar_t name[] = L".";
    const auto label = [&](unsigned int nNth)
    {
        const bool bFailed =
            Call_Failing(nNth, [&] { Lib_Set_Low_Integrity_Access_Level(name, SE_FILE_OBJECT, 0x1000); })
                .m_bFailed;
        EXPECT_EQ(bFailed ? 8U : 50U, GetLastError());
        return bFailed;
    };
    label(1000); // what is made once
    EXPECT_LE(2U, Fail_Each_Allocation_Without_Loss(label)) << "the label and the file's name at least";
}
