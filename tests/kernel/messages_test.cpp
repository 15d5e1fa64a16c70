// Message texts, on both targets. The inserts of qnErr's texts and those of texts at hand.

#include "lib_platform.h"
#include "test_text.h"

#include <algorithm>
#include <cstdarg>

using namespace test_support;

namespace
{

constexpr DWORD STRING = FORMAT_MESSAGE_FROM_STRING;
constexpr DWORD ARRAY = FORMAT_MESSAGE_FROM_STRING | FORMAT_MESSAGE_ARGUMENT_ARRAY;
constexpr DWORD IGNORE_ALL = FORMAT_MESSAGE_FROM_STRING | FORMAT_MESSAGE_IGNORE_INSERTS;
constexpr DWORD MODULE = FORMAT_MESSAGE_FROM_HMODULE;
constexpr DWORD SYSTEM = FORMAT_MESSAGE_FROM_SYSTEM;

// A message, or the error for which there is none.
class Message
{
public:
    explicit Message(DWORD dwFlags, const void* pSource, DWORD dwCode = 0, DWORD dwLanguage = 0,
                     std::va_list* pArguments = nullptr)
    {
        SetLastError(0);
        const DWORD nLength = FormatMessageW(dwFlags | FORMAT_MESSAGE_ALLOCATE_BUFFER, pSource, dwCode,
                                             dwLanguage, reinterpret_cast<wchar_t*>(&m_pText), 0, pArguments);
        m_dwError = nLength == 0 ? GetLastError() : 0;
        EXPECT_EQ(nLength == 0, m_pText == nullptr);
        EXPECT_EQ(nLength, Wide_Text(m_pText).m_nLength);
    }
    Message(const Message&) = delete;
    Message& operator=(const Message&) = delete;
    ~Message() { LocalFree(m_pText); }

    const wchar_t* Get_Text() const { return m_pText; }
    DWORD Get_Error() const { return m_dwError; }

private:
    wchar_t* m_pText = nullptr;
    DWORD m_dwError = 0;
};

// A text with the arguments of its inserts behind it.
void Expect(const wchar_t* pExpected, const wchar_t* pText, ...)
{
    std::va_list arguments;
    va_start(arguments, pText);
    EXPECT_TEXT_EQ(pExpected, Message(STRING, pText, 0, 0, &arguments).Get_Text());
    va_end(arguments);
}

DWORD_PTR Value_Of(const void* pText) { return reinterpret_cast<DWORD_PTR>(pText); }

} // namespace

TEST(Messages, Replace_Escapes_And_Break_Lines)
{
    const struct
    {
        const wchar_t* m_pExpected;
        const wchar_t* m_pText;
        DWORD m_dwFlags;
    } rows[] = {
        {L"a\r\nb", L"a%nb", STRING},
        {L"a\rb\tc", L"a%rb%tc", STRING},
        {L"end", L"end%0 not this", STRING},
        {L"100% . ! %1", L"100%% %. %! %%1", STRING},
        {L"a\r\nb\r\nc\r\n\r\n", L"a\nb\rc\r\n\n", STRING},
        {L"a%1!d!b %23 %% %! %.", L"a%1!d!b %23 %% %! %.", IGNORE_ALL},
        {L"a\r\nb", L"a%nb%0c", IGNORE_ALL},
        {L"one two three\r\nfour ", L"one\r\ntwo\nthree%nfour\r\n", IGNORE_ALL | 255},
        {L"one two ", L"one two\r\n", IGNORE_ALL | 40},
    };
    for (const auto& row : rows)
        EXPECT_TEXT_EQ(row.m_pExpected, Message(row.m_dwFlags, row.m_pText).Get_Text());
}

TEST(Messages, Print_Their_Inserts)
{
    Expect(L"two one two", L"%2 %1 %2", L"one", L"two");
    Expect(L"[ -4][0007][2A]", L"[%1!3d!][%2!04u!][%3!X!]", -4, 7, 42);
    Expect(L"[left  ][ right][cu]", L"[%1!-6s!][%2!6s!][%3!.2s!]", L"left", L"right", L"cut");
    Expect(L"narrow, wide", L"%1!S!, %2", "narrow", L"wide");
    Expect(L"123456789a 3", L"%1!I64x! %2!d!", 0x123456789ALL, 3);
    Expect(L"(null)", L"%1", static_cast<const wchar_t*>(nullptr));
    Expect(L"k10!", L"%11%10!d!!", 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, L"k");
    Expect(L"  Bi Bob   Bill", L"%1!*.*s! %3 %4!*s!", 4, 2, L"Bill", L"Bob", 6, L"Bill");
    DWORD_PTR values[] = {4, 2, Value_Of(L"Bill"), Value_Of(L"Bob"), 6, Value_Of(L"Bill")};
    const Message message(ARRAY, L"%1!*.*s! %4 %5!*s!", 0, 0, reinterpret_cast<std::va_list*>(values));
    EXPECT_TEXT_EQ(L"  Bi Bob   Bill", message.Get_Text());
}

TEST(Messages, Refuse_Texts_That_Cannot_Be_Printed)
{
    EXPECT_EQ(87U, Message(IGNORE_ALL, L"a%").Get_Error());
    for (const wchar_t* pText : {L"a%", L"no %1", L"%1!d!"})
        EXPECT_EQ(87U, Message(STRING, pText).Get_Error());
    DWORD_PTR values[] = {Value_Of(L"one")};
    for (const wchar_t* pText : {L"%1!s", L"%1!"})
        EXPECT_EQ(87U, Message(ARRAY, pText, 0, 0, reinterpret_cast<std::va_list*>(values)).Get_Error());
}

TEST(Messages, Fill_The_Callers_Buffer_Or_Leave_It)
{
    wchar_t text[8] = L"unused!";
    EXPECT_EQ(5U, FormatMessageW(STRING, L"hello", 0, 0, text, 6, nullptr));
    EXPECT_TEXT_EQ(L"hello", static_cast<const wchar_t*>(text));
    EXPECT_EQ(L'!', text[6]);
    EXPECT_EQ(0U, FormatMessageW(STRING, L"hello", 0, 0, text, 5, nullptr));
    EXPECT_EQ(122U, GetLastError());
    EXPECT_EQ(L'!', text[6]);
    EXPECT_EQ(0U, FormatMessageW(STRING, L"hello", 0, 0, nullptr, 8, nullptr));
    EXPECT_EQ(87U, GetLastError());
    EXPECT_EQ(0U, FormatMessageW(0, L"hello", 0, 0, text, 8, nullptr));
    EXPECT_EQ(87U, GetLastError());
    EXPECT_EQ(0U, FormatMessageW(STRING, L"", 0, 0, text, 8, nullptr));
    EXPECT_EQ(L'\0', text[0]);
}

TEST(Messages, Come_From_A_Modules_Table_Or_From_The_Platform)
{
    const HMODULE module = LoadLibraryW(L"qnErr.dll");
    ASSERT_NE(nullptr, module) << "last error " << GetLastError();
    const HMODULE without = LoadLibraryW(L"qn_test_module"); // has strings but no messages
    int nNoModule = 0;
    const Message denied(SYSTEM, nullptr, 5, 0x409);
    const struct
    {
        DWORD m_dwFlags;
        const void* m_pSource;
        DWORD m_dwCode;
        DWORD m_dwLanguage;
        const wchar_t* m_pExpected;
        DWORD m_dwError;
    } rows[] = {
        {MODULE, module, 1, 0x409, L"The card is blocked.\r\n", 0},
        {MODULE, module, 1, 0, L"The card is blocked.\r\n", 0},
        {MODULE, module, 1000, 0x409, L"The desk is closed", 0},
        {MODULE, module, 1000, 0x419, L"", 317},
        {MODULE, module, 99, 0x409, L"", 317},
        {MODULE, module, 99, 0, L"", 317},
        {MODULE, module, 1, 0xFFFF, L"", 1815},
        {MODULE, module, 2, 0x409, L"", 87},
        {MODULE, without, 1, 0x409, L"", 1813},
        {MODULE, &nNoModule, 1, 0x409, L"", 1812},
        {SYSTEM, nullptr, 12345678, 0, L"", 317},
        {SYSTEM, nullptr, 5, 0xFFFF, L"", 1815},
        {SYSTEM, nullptr, 0x80070005, 0x409, denied.Get_Text(), 0},
        {MODULE | SYSTEM, module, 5, 0x409, denied.Get_Text(), 0},
        {MODULE | SYSTEM, module, 1, 0x409, L"The card is blocked.\r\n", 0},
    };
    for (const auto& row : rows)
    {
        SCOPED_TRACE(testing::Message() << "flags " << row.m_dwFlags << ", code " << row.m_dwCode
                                        << ", language " << row.m_dwLanguage);
        const Message message(row.m_dwFlags, row.m_pSource, row.m_dwCode, row.m_dwLanguage);
        EXPECT_TEXT_EQ(row.m_pExpected, message.Get_Text());
        EXPECT_EQ(row.m_dwError, message.Get_Error());
    }
    DWORD_PTR values[] = {3};
    const Message message(MODULE | FORMAT_MESSAGE_ARGUMENT_ARRAY, module, 2, 0x409,
                          reinterpret_cast<std::va_list*>(values));
    EXPECT_TEXT_EQ(L"The PIN is wrong; 3 more attempts are left.\r\n", message.Get_Text());
    FreeLibrary(without);
    FreeLibrary(module);
}

TEST(Messages, Take_Blocks_Of_The_Platform)
{
    auto* const pBlock = static_cast<unsigned char*>(LocalAlloc(LPTR, 1000));
    ASSERT_NE(nullptr, pBlock);
    EXPECT_TRUE(std::all_of(pBlock, pBlock + 1000, [](unsigned char cByte) { return cByte == 0; }));
    EXPECT_EQ(nullptr, LocalFree(pBlock));
    const HLOCAL empty = LocalAlloc(LMEM_FIXED, 0);
    EXPECT_NE(nullptr, empty);
    EXPECT_EQ(nullptr, LocalFree(empty));
    EXPECT_EQ(nullptr, LocalFree(nullptr));
    EXPECT_EQ(nullptr, LocalAlloc(LMEM_FIXED, 1ULL << 60));
    EXPECT_EQ(8U, GetLastError());
}
