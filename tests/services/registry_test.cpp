// The registry's functions without their sequences of calls, on both targets.

#include "lib_services.h"
#include "test_text.h"

#include <cstring>
#include <vector>

namespace
{

constexpr wchar_t HOME[] = L"Software\\qnLib Tests\\Functions";
constexpr long ALONE = 4711; ///< an error that nobody has written

class Registry : public testing::Test
{
protected:
    Registry()
    {
        remove_Home();
        EXPECT_TRUE(Lib_Reg_Create_Key(HKEY_CURRENT_USER, HOME, nullptr, m_hKey, nullptr));
    }
    ~Registry() override
    {
        EXPECT_TRUE(Lib_Reg_Close_Key(m_hKey, nullptr));
        remove_Home();
    }

    static void remove_Home()
    {
        for (const wchar_t* pPath :
             {L"Software\\qnLib Tests\\Functions\\Sub\\Deep", L"Software\\qnLib Tests\\Functions\\Sub", HOME,
              L"Software\\qnLib Tests"})
            RegDeleteKeyW(HKEY_CURRENT_USER, pPath);
    }

    bool write(const wchar_t* pName, std::vector<unsigned char> bytes, unsigned long ulType = REG_BINARY)
    {
        return Lib_Reg_Write(m_hKey, nullptr, pName, ulType, static_cast<unsigned long>(bytes.size()),
                             bytes.data(), nullptr);
    }

    bool reads_String(const wchar_t* pName, const wchar_t* pExpected)
    {
        Lib_String strText(L"before");
        return Lib_Reg_Read_String(m_hKey, nullptr, pName, strText, nullptr) && strText == pExpected;
    }

    HKEY m_hKey = nullptr;
};

TEST_F(Registry, Tells_Its_Error_When_The_Function_Says_So)
{
    HKEY hKey = nullptr;
    Lib_Buffer Data;
    Lib_String strText;
    unsigned long ulType = 0;
    unsigned long ulValue = 0;
    unsigned char aByte[1] = {};
    EXPECT_TRUE(Lib_Reg_Write_DWord(m_hKey, nullptr, L"There", 7, nullptr));

    const auto expect = [](long nExpected, bool bTrue, auto&& call)
    {
        long nError = ALONE;
        EXPECT_EQ(bTrue, call(&nError));
        EXPECT_EQ(nExpected, nError);
        call(nullptr);
    };
    expect(0, true, [&](long* p) { return Lib_Reg_Read(m_hKey, nullptr, L"There", ulType, Data, p); });
    expect(2, false, [&](long* p) { return Lib_Reg_Read(m_hKey, nullptr, L"Not", ulType, Data, p); });
    expect(2, false, [&](long* p) { return Lib_Reg_Read(m_hKey, L"Not", L"There", ulType, Data, p); });
    expect(2, false, [&](long* p) { return Lib_Reg_Read_String(m_hKey, nullptr, L"Not", strText, p); });
    expect(259, false, [&](long* p) { return Lib_Reg_Read_Binary(m_hKey, nullptr, 1, strText, Data, p); });
    expect(259, false, [&](long* p) { return Lib_Reg_Read_Binary(m_hKey, nullptr, -1, strText, Data, p); });
    expect(0, true, [&](long* p) { return Lib_Reg_Read_DWord(m_hKey, nullptr, L"There", ulValue, p); });
    expect(ALONE, true, [&](long* p) { return Lib_Reg_Write_DWord(m_hKey, nullptr, L"There", 7, p); });
    expect(6, false, [&](long* p) { return Lib_Reg_Write_Binary(nullptr, nullptr, L"X", 1, aByte, p); });
    expect(6, false, [&](long* p) { return Lib_Reg_Create_Key(nullptr, L"X", nullptr, hKey, p); });
    expect(2, false, [&](long* p) { return Lib_Reg_Open_Key(m_hKey, true, L"Not", hKey, p); });
    expect(2, false, [&](long* p) { return Lib_Reg_Delete_Key_Value(m_hKey, L"Not", p); });
    expect(ALONE, false, [&](long* p) { return Lib_Reg_Delete_Key_Value(nullptr, L"There", p); });
    expect(6, false, [&](long* p) { return Lib_Reg_Close_Key(nullptr, p); });

    long nError = ALONE;
    EXPECT_TRUE(Lib_Reg_Open_Key(m_hKey, true, nullptr, hKey, &nError));
    EXPECT_EQ(ALONE, nError);
    EXPECT_FALSE(Lib_Reg_Write_DWord(hKey, nullptr, L"There", 8, &nError)) << "opened for reading";
    EXPECT_EQ(5, nError);
    EXPECT_TRUE(Lib_Reg_Close_Key(hKey, &nError));
    EXPECT_EQ(0, nError);
    nError = ALONE;
    EXPECT_TRUE(Lib_Reg_Open_Key(m_hKey, false, nullptr, hKey, nullptr));
    EXPECT_FALSE(Lib_Reg_Read_DWord(hKey, nullptr, L"There", ulValue, &nError)) << "opened for writing";
    EXPECT_EQ(5, nError);
    EXPECT_TRUE(Lib_Reg_Delete_Key_Value(hKey, L"There", &nError));
    EXPECT_EQ(0, nError);
    EXPECT_TRUE(Lib_Reg_Close_Key(hKey, nullptr));
}

TEST_F(Registry, Reads_What_Was_Written_Whatever_Its_Type)
{
    unsigned long ulType = ALONE;
    Lib_Buffer Data(3);
    EXPECT_FALSE(Lib_Reg_Read(m_hKey, nullptr, L"Not", ulType, Data, nullptr));
    EXPECT_EQ(3U, Data.Get_Size());
    EXPECT_EQ(static_cast<unsigned long>(ALONE), ulType);
    EXPECT_TRUE(write(L"Bytes", {1, 2, 3, 4}));
    EXPECT_TRUE(Lib_Reg_Read(m_hKey, nullptr, L"BYTES", ulType, Data, nullptr));
    EXPECT_EQ(REG_BINARY, ulType);
    EXPECT_TRUE(Data.Is_Equals("\1\2\3\4", 4));
    unsigned long ulValue = 0;
    EXPECT_TRUE(Lib_Reg_Read_DWord(m_hKey, nullptr, L"Bytes", ulValue, nullptr));
    EXPECT_EQ(0x04030201U, ulValue);

    long nError = ALONE;
    EXPECT_TRUE(write(L"Eight", std::vector<unsigned char>(8)));
    EXPECT_FALSE(Lib_Reg_Read_DWord(m_hKey, nullptr, L"Eight", ulValue, &nError));
    EXPECT_EQ(0, nError) << "the reading itself went well";
    EXPECT_EQ(0x04030201U, ulValue);

    EXPECT_TRUE(write(L"Empty", {}));
    EXPECT_TRUE(Lib_Reg_Read_Binary(m_hKey, nullptr, L"Empty", Data, nullptr));
    EXPECT_EQ(0U, Data.Get_Size());
}

TEST_F(Registry, Keeps_Texts_Within_Their_Bytes)
{
    for (const wchar_t* pText : {L"text \x0416", L""})
    {
        EXPECT_TRUE(Lib_Reg_Write_String(m_hKey, nullptr, L"Text", pText, nullptr));
        EXPECT_TRUE(reads_String(L"Text", pText));
        Lib_Buffer Data;
        EXPECT_TRUE(Lib_Reg_Read_Binary(m_hKey, nullptr, L"Text", Data, nullptr));
        const unsigned int nSize = 2 * static_cast<unsigned int>(lstrlenW(pText));
        EXPECT_TRUE(Data.Get_Size() == nSize || Data.Get_Size() == nSize + 2) << "a reader may add the end";
    }
    EXPECT_TRUE(Lib_Reg_Write_String(m_hKey, nullptr, L"Text", nullptr, nullptr));
    EXPECT_TRUE(reads_String(L"Text", L""));
    EXPECT_TRUE(write(L"Ended", {'a', 0, 'b', 0, 0, 0, 'c', 0}, REG_SZ));
    EXPECT_TRUE(reads_String(L"Ended", L"ab"));
    EXPECT_TRUE(write(L"Half", {'a', 0, 'b'}));
    EXPECT_TRUE(reads_String(L"Half", L"a"));
}

TEST_F(Registry, Fills_An_Array_And_No_More)
{
    EXPECT_TRUE(write(L"Three", {1, 2, 3}));
    EXPECT_TRUE(write(L"Empty", {}));
    unsigned char aBytes[6] = {9, 9, 9, 9, 9, 9};
    const auto read = [&](const wchar_t* pName, unsigned long& ulSize, long* pError)
    { return Lib_Reg_Read_Binary(m_hKey, nullptr, pName, ulSize, aBytes, pError); };

    unsigned long ulSize = 5;
    EXPECT_TRUE(read(L"Three", ulSize, nullptr));
    EXPECT_EQ(3U, ulSize);
    EXPECT_EQ(0, std::memcmp(aBytes, "\1\2\3\0\0\x9", 6));
    long nError = 0;
    ulSize = 2;
    EXPECT_FALSE(read(L"Three", ulSize, &nError));
    EXPECT_EQ(234, nError);
    EXPECT_FALSE(read(L"Not", ulSize, &nError));
    EXPECT_EQ(2, nError);
    EXPECT_EQ(2U, ulSize);
    EXPECT_EQ(0, std::memcmp(aBytes, "\1\2\3\0\0\x9", 6));
    EXPECT_TRUE(read(L"Empty", ulSize, nullptr));
    EXPECT_EQ(0U, ulSize);
    EXPECT_EQ(0, std::memcmp(aBytes, "\0\0\3\0\0\x9", 6));
    ulSize = 5;
    EXPECT_FALSE(Lib_Reg_Read_Binary(m_hKey, nullptr, L"Three", ulSize, nullptr, &nError));
    EXPECT_EQ(234, nError) << "null has no room";
}

TEST_F(Registry, Lists_Names_That_Have_Room)
{
    EXPECT_TRUE(write(L"One", {1}));
    EXPECT_TRUE(write(L"Two", {2, 2}));
    Lib_Buffer Data;
    Lib_String strName;
    unsigned long ulType = 0;
    long nError = ALONE;
    for (unsigned long i = 0; i < 2; ++i)
    {
        EXPECT_TRUE(Lib_Reg_Read(HKEY_CURRENT_USER, HOME, i, strName, ulType, Data, &nError));
        EXPECT_EQ(i + 1, Data.Get_Size());
        EXPECT_EQ(0, strName.Compare(i == 0 ? L"One" : L"Two"));
        EXPECT_EQ(0, nError);
    }
    EXPECT_FALSE(Lib_Reg_Read(HKEY_CURRENT_USER, HOME, 2UL, strName, ulType, Data, &nError));
    EXPECT_EQ(259, nError);
    EXPECT_EQ(0, strName.Compare(L"Two"));

    Lib_String strLong;
    for (int i = 0; i < 259; ++i)
        strLong += L'z';
    EXPECT_TRUE(write(strLong, {3}));
    EXPECT_TRUE(Lib_Reg_Read_Binary(m_hKey, nullptr, 2, strName, Data, nullptr));
    EXPECT_EQ(0, strName.Compare(strLong));
    EXPECT_TRUE(Lib_Reg_Delete_Key_Value(m_hKey, strLong, nullptr));
    strLong += L"zz";
    EXPECT_TRUE(write(strLong, {3}));
    EXPECT_FALSE(Lib_Reg_Read_Binary(m_hKey, nullptr, 2, strName, Data, &nError));
    EXPECT_EQ(234, nError);
}

TEST_F(Registry, Makes_What_Is_Missing_On_The_Way)
{
    HKEY hKey = nullptr;
    unsigned long ulValue = 0;
    EXPECT_FALSE(Lib_Reg_Read_DWord(m_hKey, L"Sub\\Deep", L"V", ulValue, nullptr));
    EXPECT_TRUE(Lib_Reg_Write_DWord(m_hKey, L"Sub\\Deep", L"V", 0xFFFFFFFF, nullptr));
    EXPECT_TRUE(Lib_Reg_Create_Key(m_hKey, L"Sub", L"Deep", hKey, nullptr)) << "one backslash between";
    EXPECT_TRUE(Lib_Reg_Read_DWord(hKey, nullptr, L"V", ulValue, nullptr));
    EXPECT_EQ(0xFFFFFFFFU, ulValue);
    EXPECT_TRUE(Lib_Reg_Write_DWord(hKey, nullptr, L"V", 1, nullptr)) << "for reading and writing";
    EXPECT_TRUE(Lib_Reg_Close_Key(hKey, nullptr));
    for (const auto& [pFirst, pSecond] :
         {std::pair{L"Sub\\Deep", (const wchar_t*)nullptr}, std::pair{(const wchar_t*)nullptr, L"Sub\\Deep"}})
    {
        EXPECT_TRUE(Lib_Reg_Create_Key(m_hKey, pFirst, pSecond, hKey, nullptr));
        EXPECT_TRUE(Lib_Reg_Read_DWord(hKey, nullptr, L"V", ulValue, nullptr));
        EXPECT_TRUE(Lib_Reg_Close_Key(hKey, nullptr));
    }
    EXPECT_EQ(1U, ulValue);
}

} // namespace
