#include "lib_platform.h"
#include "test_text.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace
{

wchar_t Unit_Of(UINT page, int byte)
{
    const char text = static_cast<char>(byte);
    wchar_t unit = 0;
    EXPECT_EQ(1, MultiByteToWideChar(page, MB_ERR_INVALID_CHARS, &text, 1, &unit, 1));
    return unit;
}

/// The byte of a unit, or -1 for what the page lacks.
int Byte_Of(UINT page, wchar_t unit)
{
    char byte = 0;
    BOOL used = 2;
    EXPECT_EQ(1, WideCharToMultiByte(page, WC_NO_BEST_FIT_CHARS, &unit, 1, &byte, 1, nullptr, &used));
    EXPECT_TRUE(used == FALSE || (used == TRUE && byte == '?'));
    return used == TRUE ? -1 : static_cast<unsigned char>(byte);
}

DWORD Error_After(int result)
{
    EXPECT_EQ(0, result);
    const DWORD error = GetLastError();
    SetLastError(0);
    return error;
}

} // namespace

TEST(Code_Pages, Know_Their_Characters)
{
    EXPECT_EQ(1252u, GetACP());
    EXPECT_EQ(437u, GetOEMCP());
    const struct
    {
        UINT page;
        int byte;
        wchar_t unit;
    } known[] = {{CP_ACP, 0x80, 0x20AC}, {CP_ACP, 0x9F, 0x0178}, {CP_ACP, 0xFF, 0x00FF},
                 {1252, 0x81, 0x0081},   {CP_OEMCP, 0x80, 0xC7}, {CP_OEMCP, 0x01, 0x0001},
                 {437, 0xB0, 0x2591},    {437, 0xE6, 0x00B5},    {437, 0xFF, 0x00A0}};
    for (const auto& item : known)
    {
        EXPECT_EQ(item.unit, Unit_Of(item.page, item.byte)) << item.page << ' ' << item.byte;
    }
    // Every byte comes back, and nothing but the characters of the 256 bytes goes.
    for (const UINT page : {1252u, 437u})
    {
        std::vector<int> byte_of(0x10000, -1);
        for (int byte = 0; byte < 256; ++byte)
        {
            byte_of[Unit_Of(page, byte)] = byte;
        }
        for (unsigned int unit = 0; unit < 0x10000; ++unit)
        {
            ASSERT_EQ(byte_of[unit], Byte_Of(page, static_cast<wchar_t>(unit))) << page << ' ' << unit;
        }
    }
}

TEST(Code_Pages, Convert_The_Same_In_Blocks_As_Alone)
{
    for (const UINT page : {1252u, 437u})
    {
        for (int odd = 0; odd < 256; ++odd)
        {
            std::string text(67, 'x');
            text[static_cast<std::size_t>(odd) % text.size()] = static_cast<char>(odd);
            const int size = static_cast<int>(text.size());
            std::vector<wchar_t> wide(text.size() + 1, L'#');
            ASSERT_EQ(size, MultiByteToWideChar(page, 0, text.data(), size, wide.data(), size));
            ASSERT_EQ(Unit_Of(page, odd), wide[static_cast<std::size_t>(odd) % text.size()]);
            ASSERT_EQ(L'#', wide.back());
            std::string back(text.size() + 1, '#');
            ASSERT_EQ(size,
                      WideCharToMultiByte(page, 0, wide.data(), size, back.data(), size, nullptr, nullptr));
            ASSERT_EQ(text + '#', back);
        }
    }
}

TEST(Code_Pages, Replace_What_They_Lack)
{
    char text[64];
    BOOL used = TRUE;
    EXPECT_EQ(4, WideCharToMultiByte(CP_ACP, 0, L"a\u0416\u20AC", -1, text, 4, nullptr, nullptr));
    EXPECT_STREQ("a?\x80", text);
    EXPECT_EQ(35, WideCharToMultiByte(437, 0, L"a long text with \u0416 and one \xD83D\xDE00 pair", -1, text,
                                      64, "_", &used));
    EXPECT_STREQ("a long text with _ and one __ pair", text);
    EXPECT_EQ(TRUE, used);
    EXPECT_EQ(3, WideCharToMultiByte(437, 0, L"abc", 3, text, 64, "_", &used));
    EXPECT_EQ(FALSE, used);
}

TEST(Code_Pages, Refuse_Bad_Arguments)
{
    char narrow[4] = "abc";
    wchar_t wide[4] = L"abc";
    for (const UINT page : {437u, CP_UTF8})
    {
        const struct
        {
            const void* source;
            int size;
            void* target;
            int capacity;
            DWORD flags, error;
        } refused[] = {{nullptr, 1, wide, 4, 0, 87},   {narrow, 0, wide, 4, 0, 87},
                       {narrow, -2, wide, 4, 0, 87},   {narrow, 3, wide, -1, 0, 87},
                       {narrow, 3, nullptr, 4, 0, 87}, {wide, 3, wide, 4, 0, 87},
                       {narrow, -1, wide, 3, 0, 122},  {narrow, 3, wide, 4, 0x4040, 1004}};
        const auto other = [&](const void* block) -> void* {
            return block == nullptr ? nullptr : block == narrow ? static_cast<void*>(wide) : narrow;
        };
        for (const auto& row : refused)
        {
            EXPECT_EQ(row.error, Error_After(MultiByteToWideChar(
                                     page, row.flags, static_cast<const char*>(row.source), row.size,
                                     static_cast<wchar_t*>(row.target), row.capacity)));
            EXPECT_EQ(row.error,
                      Error_After(WideCharToMultiByte(
                          page, row.flags, static_cast<const wchar_t*>(other(row.source)), row.size,
                          static_cast<char*>(other(row.target)), row.capacity, nullptr, nullptr)));
        }
    }
    BOOL used = FALSE;
    EXPECT_EQ(87u, Error_After(MultiByteToWideChar(1253, 0, narrow, 3, wide, 4)));
    EXPECT_EQ(87u, Error_After(WideCharToMultiByte(CP_UTF8, 0, wide, 3, narrow, 4, nullptr, &used)));
    EXPECT_EQ(1004u, Error_After(MultiByteToWideChar(CP_UTF8, MB_PRECOMPOSED, narrow, 3, wide, 4)));
    EXPECT_EQ(3, MultiByteToWideChar(CP_ACP, MB_PRECOMPOSED, "abc", 3, wide, 4));
}

TEST(Code_Pages, Turn_Ansi_Into_Oem_And_Back)
{
    char text[] = "\xC4rger \xDF \x80 \xA9"; // Ärger ß € ©
    EXPECT_TRUE(CharToOemA(text, text));
    EXPECT_STREQ("\x8Erger \xE1 ? ?", text);
    char back[sizeof text];
    EXPECT_TRUE(OemToCharA(text, back));
    EXPECT_STREQ("\xC4rger \xDF ? ?", back);
    EXPECT_FALSE(CharToOemA(nullptr, back));
    EXPECT_FALSE(OemToCharA(text, nullptr));
}
