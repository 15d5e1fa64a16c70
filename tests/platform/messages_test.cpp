// What only this platform's messages promise.

#include "lib_platform.h"
#include "platform/modules/message_tables.h"
#include "test_text.h"

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
    constexpr DWORD codes[] = {
        0,          1,          2,          3,          4,          5,          6,          8,
        18,         50,         87,         120,        122,        123,        126,        127,
        161,        170,        183,        193,        206,        234,        235,        258,
        259,        288,        298,        317,        998,        1004,       1008,       1018,
        1113,       1300,       1305,       1313,       1332,       1336,       1337,       1338,
        1812,       1813,       1814,       1815,       0x80004001, 0x80004005, 0x8007000E, 0x80070057,
        0x80020005, 0x8002000A, 0x80090011, 0x80090027, 0x80090029, 0x800401F3};
    for (const DWORD code : codes)
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
    Expect_Lines(L"abcd efgh", L"abcd efgh", 9);
    Expect_Lines(L"abcd\r\nefgh", L"abcd    efgh   ", 4);
    Expect_Lines(L" abc\r\ndef", L" abcdef", 4);
    Expect_Lines(L"ab% c\r\nd", L"ab%%% c d", 5);
    Expect_Lines(L"abcdefghij\r\nklm\r\nno", L"abcdefghijklm%nno", 10);
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
