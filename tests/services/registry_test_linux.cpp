// What has room in this target's sizes alone.

#include "lib_services.h"
#include "test_text.h"

TEST(Registry_On_Linux, Refuses_More_Than_Four_Gigabytes_After_Making_The_Key)
{
    constexpr wchar_t PATH[] = L"Software\\qnLib Tests of size";
    constexpr unsigned long SIZE = (1ul << 32) + 1; // its low half would be one byte
    unsigned char byte = 7;
    long nError = 0;
    EXPECT_FALSE(Lib_Reg_Write_Binary(HKEY_CURRENT_USER, PATH, L"Huge", SIZE, &byte, &nError));
    EXPECT_EQ(1450, nError);
    EXPECT_EQ(2, RegDeleteKeyValueW(HKEY_CURRENT_USER, PATH, L"Huge"));
    EXPECT_EQ(0, RegDeleteKeyW(HKEY_CURRENT_USER, PATH));
    EXPECT_FALSE(Lib_Reg_Write_Binary(nullptr, nullptr, L"Huge", SIZE, &byte, &nError));
    EXPECT_EQ(6, nError);
}
