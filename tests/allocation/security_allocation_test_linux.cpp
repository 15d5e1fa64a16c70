#include "failing_allocator.h"
#include "lib_services.h"

#include <gtest/gtest.h>

using test_support::Fail_Each_Allocation_Without_Loss;
using test_support::Failing_Allocation;

TEST(Security_Allocation, Gives_Everything_Back_When_Memory_Is_Out)
{
    wchar_t name[] = L".";
    EXPECT_FALSE(Lib_Set_Low_Integrity_Access_Level(name, SE_FILE_OBJECT, 0x1000)); // what is made once
    EXPECT_EQ(50U, GetLastError());
    const unsigned int nFailed = Fail_Each_Allocation_Without_Loss(
        [&](unsigned int nNth)
        {
            const Failing_Allocation failure(nNth);
            EXPECT_FALSE(Lib_Set_Low_Integrity_Access_Level(name, SE_FILE_OBJECT, 0x1000));
            const bool bFailed = failure.Has_Failed();
            EXPECT_EQ(bFailed ? 8U : 50U, GetLastError());
            return bFailed;
        });
    EXPECT_LE(2U, nFailed) << "the label and the file's name at least";
}
