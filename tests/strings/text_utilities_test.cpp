#include "byte_text.h"
#include "string_probe.h"

using namespace test_support;

namespace
{

Lib_String Written(Bytes bytes, wchar_t chSeparator)
{
    Lib_String strOutput(L"before");
    Lib_Write_Buffer(bytes.size(), bytes.data(), strOutput, chSeparator);
    return strOutput;
}

Bytes Read(const wchar_t* pText, wchar_t chSeparator)
{
    Lib_Buffer output(2);
    Lib_Read_Buffer(pText, output, chSeparator);
    return To_Bytes(output);
}

} // namespace

TEST(Text_Utilities, Turn_Values_Into_Text_And_Back)
{
    EXPECT_TEXT_EQ(L"a\\b", Lib_Combine_Path(L"a", L"b"));
    EXPECT_TEXT_EQ(L"a\\\\b", Lib_Combine_Path(L"a\\", L"b"));
    EXPECT_TEXT_EQ(L"(null)\\", Lib_Combine_Path(nullptr, L""));
    EXPECT_TEXT_EQ(L"-2147483648", Lib_Int_To_String(-2147483647 - 1));
    EXPECT_TEXT_EQ(L"0.000000", Lib_Double_To_String(0));
    struct Row
    {
        const wchar_t* m_pText;
        int m_nBase, m_nValue;
    };
    const Row rows[] = {
        {L"12abc", 10, 12}, {L"", 10, 0},   {L"99999999999", 10, 2147483647},
        {L"0xfF", 16, 255}, {L"010", 0, 8}, {L"7", 1, 0},
        {L"7", 37, 0},      {L"7", -10, 0}, {L"0x", 16, 0},
        {L"0x1F", 0, 31},   {L"10", 0, 10}, {nullptr, 10, 0},
    };
    for (const Row& row : rows)
    {
        SCOPED_TRACE(testing::PrintToString(Lib_String(row.m_pText)));
        EXPECT_EQ(row.m_nValue, Lib_String_To_Int(row.m_pText, row.m_nBase));
        EXPECT_EQ(Lib_String_To_Int(row.m_pText, 10), Lib_String_To_Int(row.m_pText));
    }
    for (const auto& [pText, dValue] :
         {std::pair(L"2.5x", 2.5), std::pair(L"", 0.0), std::pair(L" -1e3", -1000.0), std::pair(L"x", 0.0),
          std::pair(L".5\x4E2D", 0.5)})
        EXPECT_EQ(dValue, Lib_String_To_Double(pText));
    EXPECT_EQ(0.0, Lib_String_To_Double(nullptr));
}

TEST(Text_Utilities, Increment_Makes_The_Next_Name)
{
    const std::pair<const wchar_t*, const wchar_t*> rows[] = {
        {nullptr, L"0"},
        {L"x", L"x0"},
        {L"a1", L"a2"},
        {L"a09", L"a10"},
        {L"a007", L"a8"},
        {L"99", L"910"},
        {L"a-5", L"a-6"},
        {L"a2147483647", L"a-2147483648"},
        {L"a99999999999", L"a-2147483648"},
    };
    for (const auto& [pText, pNext] : rows)
        EXPECT_TEXT_EQ(pNext, Lib_Increment_String(pText)) << testing::PrintToString(Lib_String(pText));
}

TEST(Text_Utilities, Hex_Text_Is_Written_And_Read)
{
    EXPECT_TEXT_EQ(L"01abff", Written({1, 0xAB, 0xFF}, 0));
    EXPECT_TEXT_EQ(L"01:ab:ff", Written({1, 0xAB, 0xFF}, L':'));
    EXPECT_TEXT_EQ(L"0f", Written({15}, L':'));
    EXPECT_TEXT_EQ(L"", Written({}, L':'));
    Lib_String strOutput(L"before");
    Lib_Write_Buffer(3, nullptr, strOutput, 0);
    EXPECT_TRUE(strOutput.Is_Empty());
    EXPECT_EQ(Bytes(2), Read(nullptr, 0)) << "left as it was";
    EXPECT_EQ(Bytes(2), Read(L"", L':'));

    const std::pair<const wchar_t*, Bytes> plain[] = {
        {L"0a0B", {10, 11}}, {L"abc", {0xAB, 0x0C}}, {L"zz1z", {0, 1}}, {L"-1+2", {255, 2}}, {L" 3x", {3, 0}},
    };
    for (const auto& [pText, bytes] : plain)
        EXPECT_EQ(bytes, Read(pText, 0)) << testing::PrintToString(Lib_String(pText));
    const std::pair<const wchar_t*, Bytes> separated[] = {
        {L"01:ab:FF", {1, 0xAB, 0xFF}},
        {L"abc:de", {0xAB, 0xDE}},
        {L"ab::cd", {0xAB, 0xCD}},
        {L"ab:c", {0xAB, 0x0C}},
        {L":ab", {0xAB}},
        {L"1:2:3", {0x12, 3}},
        {L"a:", {}},
        {L"ab:", {0xAB}},
    };
    for (const auto& [pText, bytes] : separated)
        EXPECT_EQ(bytes, Read(pText, L':')) << testing::PrintToString(Lib_String(pText));

    Random_Text<char> random(5);
    for (std::size_t nSize = 1; nSize < 300; nSize += 1 + nSize / 9) // on every road of the kernels
    {
        Bytes bytes(nSize);
        for (unsigned char& character : bytes)
            character = static_cast<unsigned char>(random.Below(256));
        EXPECT_EQ(bytes, Read(Written(bytes, 0), 0));
        EXPECT_EQ(bytes, Read(Written(bytes, L'-'), L'-'));
        Lib_String strFaulty = Written(bytes, 0);
        const std::size_t nFault = random.Below(nSize);
        strFaulty.Set_At(2 * nFault + 1, L'\x0130');
        bytes[nFault] >>= 4;
        EXPECT_EQ(bytes, Read(strFaulty, 0)) << "a unit that is no digit, at byte " << nFault;
    }
}

namespace
{

// Characters of every length in UTF-8 between stretches of ASCII.
Units<wchar_t> Long_Text(std::size_t nRounds)
{
    Units<wchar_t> units{L'a'};
    for (std::size_t i = 0; i < nRounds; ++i)
    {
        units.insert(units.end(), {L'\xE9', L'\x20AC', L'\xD83D', L'\xDE00'});
        units.insert(units.end(), i % 40, L'a');
    }
    return units;
}

} // namespace

TEST(Text_Utilities, Utf8_Takes_Texts_There_And_Back)
{
    Units<wchar_t> deceptive(1000, L'a'); // ASCII where one looks
    deceptive[7] = L'\x20AC';
    Lib_Buffer utf8(3);
    Lib_String text;
    for (const Units<wchar_t>& units : {Long_Text(1), Long_Text(5000), Long_Text(3000), deceptive,
                                        Units<wchar_t>(5, L'a'), Units<wchar_t>(1000, L'a')})
    {
        ASSERT_TRUE(Lib_WString_To_UTF8_Buffer(units.data(), static_cast<unsigned long>(units.size()), utf8));
        Bytes bytes = To_Bytes(utf8); // a block that ends with the text
        ASSERT_TRUE(Lib_UTF8_Buffer_To_WString(bytes.data(), static_cast<unsigned long>(bytes.size()), text));
        ASSERT_EQ(units, Content(text));
    }
    EXPECT_TRUE(Lib_WString_To_UTF8_Buffer(L"a\xD800", 2, utf8));
    EXPECT_EQ(Bytes({'a', 0xEF, 0xBF, 0xBD}), To_Bytes(utf8));
    EXPECT_FALSE(Lib_WString_To_UTF8_Buffer(nullptr, 2, utf8));
    EXPECT_EQ(0U, utf8.Get_Size());
    utf8.Set_Size(3);
    EXPECT_TRUE(Lib_WString_To_UTF8_Buffer(nullptr, 0, utf8));
    EXPECT_EQ(0U, utf8.Get_Size());
}

TEST(Text_Utilities, Utf8_Marks_Bad_Sequences_And_Stops_At_A_Nul)
{
    unsigned char bytes[] = {'a', 0xFF, 0xE2, 0x82, 0, 'b'};
    Open<Lib_String> output(L"before");
    EXPECT_TRUE(Lib_UTF8_Buffer_To_WString(bytes, sizeof bytes, output));
    EXPECT_TEXT_EQ(L"a\xFFFD\xFFFD", output);
    EXPECT_FALSE(Lib_UTF8_Buffer_To_WString(nullptr, 3, output));
    EXPECT_TRUE(output.Is_Empty());
    output.Get_Buffer(20);
    EXPECT_TRUE(Lib_UTF8_Buffer_To_WString(nullptr, 0, output));
    EXPECT_EQ(0U, output.Get_Alloc_Length()) << "flushed";
}

TEST(Text_Utilities, Narrow_What_Looks_Like_Wide_Text)
{
    const auto Converted = [](const void* pData, std::size_t nSize)
    { return To_Bytes(convertWcharToChar(Lib_Buffer(nSize, const_cast<void*>(pData), true))); };
    const wchar_t wide[] = L"A plain text of some words.";
    const char narrow[] = "A plain text of some words.";
    const Bytes expected(narrow, narrow + sizeof(narrow) - 1);
    EXPECT_EQ(expected, Converted(wide, sizeof(wide))) << "up to its NUL";
    EXPECT_EQ(expected, Converted(narrow, sizeof(narrow) - 1)) << "8-bit text stays";
    EXPECT_EQ(Bytes(), To_Bytes(convertWcharToChar(Lib_Buffer())));
}
