#include "lib_platform.h"
#include "lib_services.h"
#include "test_text.h"

namespace
{

bool Ends_With(const Lib_StringW& strPath, const wchar_t* pEnd)
{
    return strPath.Right(static_cast<unsigned long long>(lstrlenW(pEnd))).Compare(pEnd) == 0;
}

TEST(Directories, Lie_Below_One_Another)
{
    const Lib_StringW strCompany = companyDirectory();
    EXPECT_EQ(0, strCompany.Compare(localLowDirectoryPath() + L"\\Vorel Co"));
    EXPECT_EQ(0, pinCacheDirectory().Compare(strCompany + L"\\Quillon"));
    EXPECT_FALSE(localDirectoryPath().Is_Empty());
    EXPECT_NE(0, localDirectoryPath().Compare(localLowDirectoryPath()));
    EXPECT_FALSE(Ends_With(localDirectoryPath(), L"Vorel Co"));
}

TEST(Directories, Are_Made_Once_And_Found_Again)
{
    const Lib_StringW strMade = createPinCacheDirectory();
    EXPECT_EQ(0, strMade.Compare(pinCacheDirectory()));
    EXPECT_EQ(0, strMade.Compare(createPinCacheDirectory()));
    EXPECT_TRUE(Ends_With(strMade, L"\\Vorel Co\\Quillon"));
    EXPECT_NE(0, SHCreateDirectory(nullptr, strMade));
    EXPECT_EQ(DWORD{ERROR_ALREADY_EXISTS}, GetLastError());
}

} // namespace
