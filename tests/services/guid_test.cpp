#include "lib_services.h"
#include "test_text.h"

#include <cstring>
#include <set>
#include <string>

namespace
{

constexpr _GUID SAMPLE = {0x01234567, 0x89AB, 0x000F, {0, 1, 0x23, 0xFF, 0x10, 0xA0, 0, 9}};

/// The 16 bytes in the order of the text.
std::string Digits(const _GUID& guid)
{
    const unsigned char* const p = guid.Data4;
    char text[40];
    std::snprintf(text, sizeof text, "%08x-%04x-%04x-%02x%02x-%02x%02x%02x%02x%02x%02x",
                  static_cast<unsigned int>(guid.Data1), guid.Data2, guid.Data3, p[0], p[1], p[2], p[3], p[4],
                  p[5], p[6], p[7]);
    return text;
}

/// What a text leaves in an identifier of 0xAB bytes.
std::string Left_By(const wchar_t* pText, HRESULT expected)
{
    _GUID guid;
    std::memset(&guid, 0xAB, sizeof guid);
    EXPECT_EQ(expected, CLSIDFromString(pText, &guid));
    return Digits(guid);
}

} // namespace

TEST(Guid, Draws_Another_One_Each_Time)
{
    std::set<std::string> drawn;
    Lib_Guid guid;
    for (int i = 0; i < 1000; ++i, guid.Create_New())
        drawn.insert(Digits(guid));
    EXPECT_EQ(1000U, drawn.size());
}

TEST(Guid, Has_Two_Texts)
{
    const Lib_Guid guid(SAMPLE);
    EXPECT_TEXT_EQ(L"{01234567-89AB-000F-0001-23FF10A00009}", guid.Get_Text_Registry_Format());
    EXPECT_TEXT_EQ(L"{ 0x1234567, 0x89ab, 0xf, { 0x0, 0x1, 0x23, 0xff, 0x10, 0xa0, 0x0, 0x9 } }",
                   guid.Get_Text_Static_Const_Format());
    EXPECT_TRUE(guid == Lib_Guid(L"{01234567-89ab-000f-0001-23ff10a00009}"));
}

TEST(Guid, Compares_With_Plain_Values)
{
    Lib_Guid guid(SAMPLE);
    const Lib_Guid copy(guid);
    _GUID other = SAMPLE;
    EXPECT_TRUE(guid == other && other == guid && copy == SAMPLE && SAMPLE == copy && copy == guid);
    EXPECT_FALSE(guid != other || other != guid || copy != SAMPLE || SAMPLE != copy || copy != guid);
    other.Data4[7] ^= 1;
    EXPECT_FALSE(copy == other || other == copy);
    static_cast<_GUID&>(guid).Data4[7] ^= 1;
    EXPECT_TRUE(guid == other && guid != copy);
    guid = SAMPLE;
    EXPECT_TRUE(guid == copy);
}

TEST(Guid, Is_Less_When_Its_Bytes_Are_Greater)
{
    const Lib_Guid lower(_GUID{0x02000001, 0, 0, {}}); // its first byte in memory is 1
    const Lib_Guid upper(_GUID{0x01000002, 0, 0, {}});
    EXPECT_TRUE(upper < lower);
    EXPECT_TRUE(lower > upper);
    EXPECT_FALSE(lower < Lib_Guid(lower));
    EXPECT_TRUE(Lib_Guid(_GUID{0, 0, 0, {0, 0, 0, 0, 0, 0, 0, 0xFF}}) < Lib_Guid(_GUID{}));
}

TEST(Guid, Reads_The_Form_In_Braces_Alone)
{
    EXPECT_EQ("12345678-9abc-def0-1234-56789abcdef0",
              Left_By(L"{12345678-9abc-DEF0-1234-56789AbCdEf0}", S_OK));
    EXPECT_EQ("00000000-0000-0000-0000-000000000000", Left_By(nullptr, S_OK));

    const std::pair<const wchar_t*, const char*> refused[] = {
        {L"", "00000000-0000-0000-0000-000000000000"},
        {L"12345678-9abc-def0-1234-56789abcdef0", "00000000-0000-0000-0000-000000000000"},
        {L"{", "00000000-abab-abab-abab-abababababab"},
        {L"{1234567g-9abc-def0-1234-56789abcdef0}", "01234567-abab-abab-abab-abababababab"},
        {L"{12345678+9abc-def0-1234-56789abcdef0}", "12345678-abab-abab-abab-abababababab"},
        {L"{12345678-9a", "12345678-009a-abab-abab-abababababab"},
        {L"{12345678-9abc-defx-1234-56789abcdef0}", "12345678-9abc-0def-abab-abababababab"},
        {L"{12345678-9abc-def0-12 4-56789abcdef0}", "12345678-9abc-def0-12ab-abababababab"},
        {L"{12345678-9abc-def0-1234-56789abcdef0", "12345678-9abc-def0-1234-56789abcdef0"},
        {L"{12345678-9abc-def0-1234-56789abcdef0}x", "12345678-9abc-def0-1234-56789abcdef0"},
    };
    for (const auto& [pText, pLeft] : refused)
        EXPECT_EQ(pLeft, Left_By(pText, CO_E_CLASSSTRING)) << testing::PrintToString(Lib_String(pText));

    Lib_Guid half(L"{1234");
    EXPECT_EQ("00001234-0000-0000-0000-000000000000", Digits(half)) << "zeros behind the fault";
}
