#include "named_objects.h"

#include <gtest/gtest.h>

#include <filesystem>

#include <unistd.h>

namespace stress
{

namespace
{

LPCWSTR wide(const std::u16string& strName) { return reinterpret_cast<LPCWSTR>(strName.c_str()); }

Object made(HANDLE handle)
{
    EXPECT_NE(nullptr, handle) << "error " << GetLastError();
    return Object(handle);
}

} // namespace

std::string Token()
{
    static const std::string strToken = "qnlib-stress-" + std::to_string(getpid()) + '-';
    return strToken;
}

std::u16string New_Name()
{
    static unsigned int nNames = 0;
    const std::string strName = "Local\\" + Token() + std::to_string(++nNames);
    return std::u16string(strName.begin(), strName.end());
}

Object Event(const std::u16string& strName, bool bManual, bool bSet)
{
    return made(CreateEventW(nullptr, bManual, bSet, wide(strName)));
}

Object Mutex(const std::u16string& strName, bool bOwned)
{
    return made(CreateMutexW(nullptr, bOwned, wide(strName)));
}

Object Open_Mutex(const std::u16string& strName)
{
    return Object(OpenMutexW(SYNCHRONIZE, FALSE, wide(strName)));
}

unsigned int Count_Files()
{
    unsigned int nFiles = 0;
    for (const auto& entry : std::filesystem::directory_iterator("/dev/shm"))
        nFiles += entry.path().filename().string().find(Token()) != std::string::npos;
    return nFiles;
}

void Expect_Name_Is_Free(const std::u16string& strName)
{
    const unsigned int nFiles = Count_Files();
    EXPECT_FALSE(Open_Mutex(strName)) << "the name outlives its last user";
    EXPECT_EQ(2U, GetLastError());
    {
        const Object mutex = Mutex(strName, true);
        EXPECT_EQ(0U, GetLastError()) << "made afresh, it was there already";
        EXPECT_TRUE(mutex && ReleaseMutex(mutex.get()));
        EXPECT_GT(Count_Files(), 0U) << "files of the objects are not found";
    }
    EXPECT_FALSE(Open_Mutex(strName)) << "the name outlives the last handle";
    EXPECT_LE(Count_Files(), nFiles);
}

} // namespace stress
