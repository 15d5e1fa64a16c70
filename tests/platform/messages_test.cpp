// What only this platform's messages promise.

#include "lib_platform.h"
#include "platform/modules/message_tables.h"
#include "test_text.h"

#include <cstdint>
#include <string>
#include <vector>

namespace
{

DWORD Format(DWORD flags, const wchar_t* text, wchar_t* buffer, DWORD size, DWORD_PTR* values = nullptr)
{
    SetLastError(0);
    return FormatMessageW(flags | FORMAT_MESSAGE_FROM_STRING | FORMAT_MESSAGE_ARGUMENT_ARRAY, text, 0, 0,
                          buffer, size, reinterpret_cast<std::va_list*>(values));
}

void Expect_Lines(const wchar_t* expected, const wchar_t* text, DWORD width)
{
    wchar_t buffer[100] = L"";
    Format(width, text, buffer, 100);
    EXPECT_TEXT_EQ(expected, static_cast<const wchar_t*>(buffer)) << "width " << width;
}

} // namespace

TEST(Platform_Messages, Are_There_For_Every_Code_That_The_Layer_Reports)
{
    for (const DWORD code :
         {0u,          1u,          2u,          3u,          4u,          5u,          6u,
          8u,          18u,         50u,         87u,         120u,        122u,        123u,
          126u,        127u,        161u,        170u,        183u,        193u,        206u,
          234u,        235u,        258u,        259u,        288u,        298u,        317u,
          998u,        1004u,       1008u,       1018u,       1113u,       1300u,       1305u,
          1313u,       1332u,       1336u,       1337u,       1338u,       1812u,       1813u,
          1814u,       1815u,       0x80004001u, 0x80004005u, 0x8007000Eu, 0x80070057u, 0x80020005u,
          0x8002000Au, 0x80090011u, 0x80090027u, 0x80090029u, 0x800401F3u})
    {
        for (const DWORD language : {0u, 0x400u, 0x409u, 0x800u})
        {
            const LPCWSTR text = Find_System_Message(code, language).m_pText;
            ASSERT_NE(nullptr, text) << "code " << code << ", language " << language;
            const int length = lstrlenW(text);
            ASSERT_GT(length, 5) << "code " << code;
            EXPECT_TEXT_EQ(L".\r\n", text + length - 3) << "code " << code;
        }
        EXPECT_EQ(1815u, Find_System_Message(code, 0x419).m_nError);
    }
}

TEST(Platform_Messages, Break_Lines_At_Blanks)
{
    Expect_Lines(L"abcd\r\nefgh", L"abcd efgh", 4);
    Expect_Lines(L"abcd\r\ne\r\nfgh", L"abcde fgh", 4);
    Expect_Lines(L"abcd\r\nefgh", L"abcd efgh", 8);
    Expect_Lines(L"abcd efgh", L"abcd efgh", 9);
    Expect_Lines(L"abcd\r\nefgh", L"abcd    efgh   ", 4);
    Expect_Lines(L" abc\r\ndef", L" abcdef", 4);
    Expect_Lines(L"ab% c\r\nd", L"ab%%% c d", 5);
    Expect_Lines(L"abcdefghij\r\nklm\r\nno", L"abcdefghijklm%nno", 10);
}

TEST(Platform_Messages, Blanks_Come_By_Escapes)
{
    wchar_t buffer[20] = L"";
    EXPECT_EQ(3u, Format(0, L"a%bc", buffer, 20));
    EXPECT_TEXT_EQ(L"a c", static_cast<const wchar_t*>(buffer));
}

TEST(Platform_Messages, Refuse_What_Is_Not_Safe_To_Print)
{
    wchar_t buffer[20] = L"before";
    DWORD_PTR values[] = {1, 2, 3, 4};
    for (const wchar_t* text : {L"%1!f!", L"%1!n!", L"%1!%s!", L"%1!d %s!", L"%1!***d!", L"%1!!", L"%1!l!"})
    {
        EXPECT_EQ(0u, Format(0, text, buffer, 20, values));
        EXPECT_EQ(87u, GetLastError());
    }
    EXPECT_EQ(0u, Format(0x4000, L"unknown flag", buffer, 20));
    EXPECT_EQ(87u, GetLastError());
    EXPECT_EQ(0u, Format(0, nullptr, buffer, 20));
    EXPECT_EQ(87u, GetLastError());
    EXPECT_TEXT_EQ(L"before", static_cast<const wchar_t*>(buffer));
}

TEST(Platform_Messages, Have_A_Limit)
{
    std::vector<wchar_t> text(32768, L'x');
    text.back() = L'\0';
    std::vector<wchar_t> buffer(40000);
    EXPECT_EQ(32767u, Format(0, text.data(), buffer.data(), 40000));
    text.back() = L'x';
    text.push_back(L'\0');
    EXPECT_EQ(0u, Format(0, text.data(), buffer.data(), 40000));
    EXPECT_EQ(234u, GetLastError());
    DWORD_PTR values[] = {2000000000, 7};
    EXPECT_EQ(0u, Format(0, L"%1!*d!", buffer.data(), 40000, values));
    EXPECT_EQ(234u, GetLastError());
}

TEST(Platform_Messages, Keep_Arguments_Behind_Stars_Apart)
{
    const auto format = [](const wchar_t* text, ...)
    {
        std::va_list arguments;
        va_start(arguments, text);
        wchar_t buffer[60] = L"";
        FormatMessageW(FORMAT_MESSAGE_FROM_STRING, text, 0, 0, buffer, 60, &arguments);
        va_end(arguments);
        std::string narrow;
        for (const wchar_t* unit = buffer; *unit != 0; ++unit)
            narrow += static_cast<char>(*unit);
        return narrow;
    };
    EXPECT_EQ("   7|   7|next", format(L"%1!*d!|%1!*d!|%2", 4, 7, L"next"));
    EXPECT_EQ("8|   8", format(L"%2!d!|%1!*d!", 4, 8));
}
