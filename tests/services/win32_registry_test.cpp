// The registry under the platform's names, as both targets have it.

#include "lib_platform.h"
#include "test_text.h"

#include <ctime>
#include <string>
#include <utility>
#include <vector>

namespace
{

using Bytes = std::vector<BYTE>;

/// An open key, closed with the object.
class Key
{
public:
    Key() = default;
    explicit Key(HKEY key) : m_Key(key) {}
    Key(Key&& other) noexcept : m_Key(std::exchange(other.m_Key, nullptr)) {}
    Key& operator=(Key&& other) noexcept
    {
        std::swap(m_Key, other.m_Key);
        return *this;
    }
    ~Key()
    {
        if (m_Key != nullptr)
            RegCloseKey(m_Key);
    }

    operator HKEY() const { return m_Key; }

private:
    HKEY m_Key = nullptr;
};

LSTATUS open(HKEY base, const wchar_t* pPath, REGSAM access = KEY_READ)
{
    HKEY key = nullptr;
    const LSTATUS nCode = RegOpenKeyExW(base, pPath, 0, access, &key);
    EXPECT_EQ(nCode == 0, key != nullptr);
    const Key closed(key);
    return nCode;
}

Key made(HKEY base, const wchar_t* pPath, REGSAM access = KEY_ALL_ACCESS)
{
    HKEY key = nullptr;
    EXPECT_EQ(0, RegCreateKeyExW(base, pPath, 0, nullptr, 0, access, nullptr, &key, nullptr));
    return Key(key);
}

LSTATUS set(HKEY key, const wchar_t* pName, const Bytes& data, DWORD nType = REG_BINARY)
{
    return RegSetValueExW(key, pName, 0, nType, data.data(), static_cast<DWORD>(data.size()));
}

LSTATUS ask(HKEY key, const wchar_t* pName)
{
    return RegQueryValueExW(key, pName, nullptr, nullptr, nullptr, nullptr);
}

Bytes get(HKEY key, const wchar_t* pName)
{
    Bytes data(100);
    DWORD nSize = 100;
    EXPECT_EQ(0, RegQueryValueExW(key, pName, nullptr, nullptr, data.data(), &nSize));
    data.resize(nSize);
    return data;
}

/// The names of a key's values or subkeys, each with a semicolon.
template <class Tell>
std::u16string list(Tell tell)
{
    std::u16string strNames;
    wchar_t name[300];
    LSTATUS nCode = 0;
    for (DWORD i = 0;; ++i)
    {
        DWORD nLength = 300;
        nCode = tell(i, name, &nLength);
        if (nCode != 0)
            break;
        strNames.append(name, name + nLength);
        strNames += u';';
    }
    EXPECT_EQ(static_cast<LSTATUS>(ERROR_NO_MORE_ITEMS), nCode);
    return strNames;
}

std::u16string list_Values(HKEY key)
{
    return list([key](DWORD i, wchar_t* pName, LPDWORD pLength)
                { return RegEnumValueW(key, i, pName, pLength, nullptr, nullptr, nullptr, nullptr); });
}

std::u16string list_Keys(HKEY key)
{
    return list([key](DWORD i, wchar_t* pName, LPDWORD pLength)
                { return RegEnumKeyExW(key, i, pName, pLength, nullptr, nullptr, nullptr, nullptr); });
}

void delete_All(HKEY base, const wchar_t* pPath)
{
    {
        const Key key = made(base, pPath);
        wchar_t name[300];
        DWORD nLength = 300;
        while (RegEnumKeyExW(key, 0, name, &nLength, nullptr, nullptr, nullptr, nullptr) == 0)
        {
            delete_All(key, name);
            nLength = 300;
        }
    }
    EXPECT_EQ(0, RegDeleteKeyW(base, pPath));
}

class Win32_Registry : public testing::Test
{
protected:
    static constexpr const wchar_t* Path = L"Software\\qnLib test of the registry";

    void SetUp() override { m_Key = made(HKEY_CURRENT_USER, Path); }
    void TearDown() override
    {
        m_Key = Key();
        delete_All(HKEY_CURRENT_USER, Path);
    }

    Key m_Key;
};

constexpr LSTATUS Ok = 0;
constexpr LSTATUS Missing = 2;
constexpr LSTATUS Denied = 5;
constexpr LSTATUS No_Handle = 6;
constexpr LSTATUS Invalid = 87;
constexpr LSTATUS Bad_Path = 161;
constexpr LSTATUS More = 234;
constexpr LSTATUS Deleted = 1018;

} // namespace

TEST_F(Win32_Registry, Finds_Keys_By_Their_Paths)
{
    made(m_Key, L"One\\Two");
    for (const wchar_t* pPath : {L"One\\Two", L"oNE\\tWO", L"One\\Two\\", L"One\\\\Two\\\\", L"", L"One"})
        EXPECT_EQ(Ok, open(m_Key, pPath)) << test_support::Readable(test_support::Wide_Text(pPath));
    EXPECT_EQ(Ok, open(m_Key, nullptr));
    for (const wchar_t* pPath : {L"Two", L"One/Two", L"One\\Two\\Three", L"One Two"})
        EXPECT_EQ(Missing, open(m_Key, pPath)) << test_support::Readable(test_support::Wide_Text(pPath));
    for (const wchar_t* pPath : {L"\\", L"\\One"})
        EXPECT_EQ(Bad_Path, open(m_Key, pPath));
}

TEST_F(Win32_Registry, Keeps_The_Case_Of_Names_And_Matches_Without_It)
{
    made(m_Key, L"Sch\x00F6n");
    made(m_Key, L"SCH\x00D6N");
    EXPECT_EQ(u"Sch\x00F6n;", list_Keys(m_Key));
    EXPECT_EQ(Ok, set(m_Key, L"\x0416\x0451", {1}));
    EXPECT_EQ(Ok, set(m_Key, L"\x0436\x0401", {2}));
    EXPECT_EQ(u"\x0416\x0451;", list_Values(m_Key));
    EXPECT_EQ(Bytes{2}, get(m_Key, L"\x0436\x0451"));
    // Counterparts one way only, and letters beyond 16 bits, are different names.
    for (const auto& [pOne, pOther] :
         {std::pair(L"\x0131", L"i"), std::pair(L"\x00B5", L"\x039C"),
          std::pair(L"\xD801\xDC00", L"\xD801\xDC28"), std::pair(L"\x00DF", L"\x1E9E")})
    {
        EXPECT_EQ(Ok, set(m_Key, pOne, {3}));
        EXPECT_EQ(Missing, ask(m_Key, pOther));
    }
}

TEST_F(Win32_Registry, Keeps_Unpaired_Surrogates)
{
    EXPECT_EQ(Ok, set(made(m_Key, L"\xDC00\xD800"), L"\xD83D", {7}));
    EXPECT_EQ(u"\xDC00\xD800;", list_Keys(m_Key));
    EXPECT_EQ(Bytes{7}, get(made(m_Key, L"\xDC00\xD800"), L"\xD83D"));
    EXPECT_EQ(Missing, open(m_Key, L"\xDC00\xD801"));
}

TEST_F(Win32_Registry, Tells_Whether_A_Key_Was_Made)
{
    HKEY key = nullptr;
    DWORD nDisposition = 0;
    for (const DWORD nExpected : {REG_CREATED_NEW_KEY, REG_OPENED_EXISTING_KEY})
    {
        EXPECT_EQ(Ok,
                  RegCreateKeyExW(m_Key, L"a\\b\\c", 0, nullptr, 0, KEY_READ, nullptr, &key, &nDisposition));
        EXPECT_EQ(nExpected, nDisposition);
        EXPECT_EQ(Ok, RegCloseKey(key));
    }
    EXPECT_EQ(Ok, RegCreateKeyExW(m_Key, nullptr, 0, nullptr, 0, KEY_READ, nullptr, &key, nullptr));
    EXPECT_EQ(Ok, RegCloseKey(key));
    EXPECT_EQ(Invalid, RegCreateKeyExW(m_Key, L"d", 1, nullptr, 0, KEY_READ, nullptr, &key, nullptr));
    EXPECT_EQ(Bad_Path, RegCreateKeyExW(m_Key, L"\\d", 0, nullptr, 0, KEY_READ, nullptr, &key, nullptr));
    EXPECT_EQ(u"a;", list_Keys(m_Key));
}

TEST_F(Win32_Registry, Answers_Questions_For_A_Value_Step_By_Step)
{
    const Bytes data = {1, 2, 3, 4, 5, 6, 7, 8};
    EXPECT_EQ(Ok, set(m_Key, L"Value", data, 77));
    DWORD nType = 0;
    DWORD nSize = 0;
    EXPECT_EQ(Ok, RegQueryValueExW(m_Key, L"Value", nullptr, &nType, nullptr, &nSize));
    EXPECT_EQ(77u, nType);
    EXPECT_EQ(8u, nSize);
    Bytes read(8, 0xEE);
    nSize = 7;
    nType = 0;
    EXPECT_EQ(More, RegQueryValueExW(m_Key, L"Value", nullptr, &nType, read.data(), &nSize));
    EXPECT_EQ(77u, nType);
    EXPECT_EQ(8u, nSize);
    EXPECT_EQ(Bytes(8, 0xEE), read);
    EXPECT_EQ(Ok, RegQueryValueExW(m_Key, L"Value", nullptr, nullptr, read.data(), &nSize));
    EXPECT_EQ(data, read);
    EXPECT_EQ(Ok, ask(m_Key, L"Value"));
    EXPECT_EQ(Invalid, RegQueryValueExW(m_Key, L"Value", nullptr, &nType, read.data(), nullptr));
    EXPECT_EQ(Invalid, RegQueryValueExW(m_Key, L"Value", &nType, nullptr, nullptr, &nSize));

    nType = 99;
    nSize = 5;
    EXPECT_EQ(Missing, RegQueryValueExW(m_Key, L"Other", nullptr, &nType, read.data(), &nSize));
    EXPECT_EQ(99u, nType);
    EXPECT_EQ(5u, nSize);
}

TEST_F(Win32_Registry, Has_A_Default_Value_Once_It_Was_Set)
{
    EXPECT_EQ(Missing, ask(m_Key, nullptr));
    EXPECT_EQ(Ok, set(m_Key, nullptr, {1, 2}));
    EXPECT_EQ((Bytes{1, 2}), get(m_Key, L""));
    EXPECT_EQ(u";", list_Values(m_Key));
    EXPECT_EQ(Ok, RegDeleteKeyValueW(m_Key, nullptr, nullptr));
    EXPECT_EQ(Missing, ask(m_Key, L""));
}

TEST_F(Win32_Registry, Keeps_Values_Of_Any_Size)
{
    EXPECT_EQ(Ok, RegSetValueExW(m_Key, L"empty", 0, REG_NONE, nullptr, 0));
    EXPECT_EQ(Bytes{}, get(m_Key, L"empty"));
    EXPECT_EQ(static_cast<LSTATUS>(ERROR_NOACCESS), RegSetValueExW(m_Key, L"empty", 0, REG_NONE, nullptr, 4));
    for (const std::size_t nSize : {1000u, 1024u, 1025u, 5000u, 300000u})
    {
        Bytes data(nSize);
        for (std::size_t i = 0; i < nSize; ++i)
            data[i] = static_cast<BYTE>(i * 7 + i / 255);
        EXPECT_EQ(Ok, set(m_Key, L"large", data));
        Bytes read(nSize);
        DWORD nRoom = static_cast<DWORD>(nSize);
        EXPECT_EQ(Ok, RegQueryValueExW(m_Key, L"large", nullptr, nullptr, read.data(), &nRoom));
        EXPECT_TRUE(data == read) << nSize;
    }
}

TEST_F(Win32_Registry, Goes_Through_Values_In_Steps)
{
    EXPECT_EQ(Ok, set(m_Key, L"first", {1, 2, 3}, REG_DWORD));
    EXPECT_EQ(Ok, set(m_Key, L"second", Bytes(2000, 9), REG_BINARY));
    EXPECT_EQ(u"first;second;", list_Values(m_Key));

    wchar_t name[20] = L"?";
    DWORD nLength = 5; // no room for the NUL
    DWORD nType = 0;
    DWORD nSize = 0;
    EXPECT_EQ(More, RegEnumValueW(m_Key, 0, name, &nLength, nullptr, &nType, nullptr, &nSize));
    EXPECT_TEXT_EQ(L"?", name);
    nLength = 6;
    EXPECT_EQ(Ok, RegEnumValueW(m_Key, 0, name, &nLength, nullptr, &nType, nullptr, &nSize));
    EXPECT_TEXT_EQ(L"first", name);
    EXPECT_EQ(5u, nLength);
    EXPECT_EQ(REG_DWORD, nType);
    EXPECT_EQ(3u, nSize);

    Bytes data(2000);
    nLength = 20;
    nSize = 1999;
    EXPECT_EQ(More, RegEnumValueW(m_Key, 1, name, &nLength, nullptr, nullptr, data.data(), &nSize));
    EXPECT_EQ(2000u, nSize);
    nLength = 20;
    EXPECT_EQ(Ok, RegEnumValueW(m_Key, 1, name, &nLength, nullptr, nullptr, data.data(), &nSize));
    EXPECT_EQ(Bytes(2000, 9), data);
    nLength = 20;
    EXPECT_EQ(259, RegEnumValueW(m_Key, 2, name, &nLength, nullptr, nullptr, nullptr, nullptr));
    EXPECT_EQ(Invalid, RegEnumValueW(m_Key, 0, nullptr, &nLength, nullptr, nullptr, nullptr, nullptr));
    EXPECT_EQ(Invalid, RegEnumValueW(m_Key, 0, name, nullptr, nullptr, nullptr, nullptr, nullptr));
    EXPECT_EQ(Invalid, RegEnumValueW(m_Key, 0, name, &nLength, &nType, nullptr, nullptr, nullptr));
    EXPECT_EQ(Invalid, RegEnumValueW(m_Key, 0, name, &nLength, nullptr, nullptr, data.data(), nullptr));
}

TEST_F(Win32_Registry, Lists_Many_Values_Whatever_Happens_Between)
{
    std::u16string strExpected;
    wchar_t name[] = L"v000";
    for (int i = 0; i < 150; ++i)
    {
        name[1] = static_cast<wchar_t>(L'0' + i / 100);
        name[2] = static_cast<wchar_t>(L'0' + i / 10 % 10);
        name[3] = static_cast<wchar_t>(L'0' + i % 10);
        EXPECT_EQ(Ok, set(m_Key, name, {1}));
        strExpected.append(name, name + 4) += u';';
    }
    EXPECT_EQ(strExpected, list_Values(m_Key));
    // From the end, deleting each.
    for (DWORD i = 150; i-- > 0;)
    {
        DWORD nLength = 5;
        ASSERT_EQ(Ok, RegEnumValueW(m_Key, i, name, &nLength, nullptr, nullptr, nullptr, nullptr)) << i;
        EXPECT_EQ(Ok, RegDeleteKeyValueW(m_Key, nullptr, name));
    }
    EXPECT_EQ(u"", list_Values(m_Key));
}

TEST_F(Win32_Registry, Tells_Class_And_Time_Of_Keys)
{
    const long long nBefore = std::time(nullptr) + 11644473600;
    HKEY key = nullptr;
    wchar_t class_name[] = L"Cards";
    EXPECT_EQ(Ok, RegCreateKeyExW(m_Key, L"Sub", 0, class_name, 0, KEY_WRITE, nullptr, &key, nullptr));
    EXPECT_EQ(Ok, set(key, L"v", {1}));
    EXPECT_EQ(Ok, RegCloseKey(key));
    wchar_t name[20];
    wchar_t found[20];
    DWORD nName = 20;
    DWORD nClass = 20;
    FILETIME Written{};
    EXPECT_EQ(Ok, RegEnumKeyExW(m_Key, 0, name, &nName, nullptr, found, &nClass, &Written));
    EXPECT_TEXT_EQ(L"Cards", found);
    EXPECT_EQ(5u, nClass);
    const auto as_Seconds = [](const FILETIME& time)
    { return (static_cast<long long>(time.dwHighDateTime) << 32 | time.dwLowDateTime) / 10000000; };
    EXPECT_LE(nBefore, as_Seconds(Written));
    EXPECT_GE(nBefore + 60, as_Seconds(Written));
    nName = 3;
    EXPECT_EQ(More, RegEnumKeyExW(m_Key, 0, name, &nName, nullptr, nullptr, nullptr, nullptr));
    nName = 4;
    EXPECT_EQ(Ok, RegEnumKeyExW(m_Key, 0, name, &nName, nullptr, nullptr, nullptr, nullptr));
    EXPECT_EQ(Invalid, RegEnumKeyExW(m_Key, 0, name, &nName, &nName, nullptr, nullptr, nullptr));
}

TEST_F(Win32_Registry, Holds_Handles_To_What_They_Were_Opened_For)
{
    EXPECT_EQ(Ok, set(m_Key, L"v", {1}));
    const Key reader = made(m_Key, nullptr, KEY_READ);
    EXPECT_EQ(Denied, set(reader, L"v", {2}));
    EXPECT_EQ(Denied, RegDeleteKeyValueW(reader, nullptr, L"v"));
    EXPECT_EQ(Bytes{1}, get(reader, L"v"));
    const Key writer = made(m_Key, nullptr, KEY_WRITE);
    wchar_t name[20];
    DWORD nLength = 20;
    EXPECT_EQ(Denied, ask(writer, L"v"));
    EXPECT_EQ(Denied, RegEnumValueW(writer, 0, name, &nLength, nullptr, nullptr, nullptr, nullptr));
    EXPECT_EQ(Denied, RegEnumKeyExW(writer, 0, name, &nLength, nullptr, nullptr, nullptr, nullptr));
    // Keys are made and deleted by the rights of the store.
    made(reader, L"sub");
    EXPECT_EQ(Ok, RegDeleteKeyW(reader, L"sub"));
}

TEST_F(Win32_Registry, Knows_Its_Handles)
{
    HKEY key = nullptr;
    ASSERT_EQ(Ok, RegOpenKeyExW(m_Key, nullptr, 0, KEY_ALL_ACCESS, &key));
    EXPECT_EQ(Ok, RegCloseKey(key));
    EXPECT_EQ(No_Handle, RegCloseKey(key));
    EXPECT_EQ(No_Handle, ask(key, L"v"));
    HANDLE event = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    for (HKEY closed : {HKEY(), reinterpret_cast<HKEY>(event), reinterpret_cast<HKEY>(0x1234)})
    {
        EXPECT_EQ(No_Handle, ask(closed, L"v"));
        EXPECT_EQ(No_Handle, set(closed, L"v", {1}));
        EXPECT_EQ(No_Handle, open(closed, L"v"));
        EXPECT_EQ(No_Handle, RegDeleteKeyW(closed, L"v"));
    }
    EXPECT_EQ(No_Handle, RegCloseKey(nullptr));
    EXPECT_EQ(Ok, RegCloseKey(HKEY_CURRENT_USER));
    EXPECT_EQ(Ok, open(HKEY_CURRENT_USER, L"Software"));
    CloseHandle(event);
}

TEST_F(Win32_Registry, Answers_For_A_Deleted_Key)
{
    const Key parent = made(m_Key, L"parent");
    Key key = made(parent, L"key");
    EXPECT_EQ(Ok, set(key, L"v", {1}));
    EXPECT_EQ(Denied, RegDeleteKeyW(m_Key, L"parent")) << "it has a key below it";
    EXPECT_EQ(Invalid, RegDeleteKeyW(m_Key, nullptr));
    EXPECT_EQ(Missing, RegDeleteKeyW(m_Key, L"none"));
    EXPECT_EQ(Denied, RegDeleteKeyW(HKEY_CURRENT_USER, L""));
    EXPECT_EQ(Ok, RegDeleteKeyW(key, L""));
    const Key again = made(parent, L"key"); // another one
    wchar_t name[20];
    DWORD nLength = 20;
    EXPECT_EQ(Deleted, ask(key, L"v"));
    EXPECT_EQ(Deleted, set(key, L"v", {1}));
    EXPECT_EQ(Deleted, RegEnumValueW(key, 0, name, &nLength, nullptr, nullptr, nullptr, nullptr));
    EXPECT_EQ(Deleted, RegEnumKeyExW(key, 0, name, &nLength, nullptr, nullptr, nullptr, nullptr));
    EXPECT_EQ(Deleted, open(key, nullptr));
    EXPECT_EQ(Deleted, open(key, L"sub"));
    HKEY below = nullptr;
    EXPECT_EQ(Deleted, RegCreateKeyExW(key, L"sub", 0, nullptr, 0, KEY_READ, nullptr, &below, nullptr));
    EXPECT_EQ(Deleted, RegDeleteKeyW(key, L"sub"));
    EXPECT_EQ(Deleted, RegDeleteKeyW(key, L""));
    EXPECT_EQ(Deleted, RegDeleteKeyValueW(key, nullptr, L"v"));
    EXPECT_EQ(u"", list_Values(again));
}

TEST_F(Win32_Registry, Takes_Names_Up_To_Their_Limits)
{
    const std::u16string strKey(255, u'k');
    const std::u16string strValue(16383, u'v');
    const auto as_Wide = [](const std::u16string& strText)
    {
        std::vector<wchar_t> text(strText.begin(), strText.end());
        text.push_back(0);
        return text;
    };
    const Key key = made(m_Key, as_Wide(strKey).data());
    EXPECT_EQ(strKey + u';', list_Keys(m_Key));
    EXPECT_EQ(Ok, set(key, as_Wide(strValue).data(), {1}));
    EXPECT_EQ(Bytes{1}, get(key, as_Wide(strValue).data()));
    EXPECT_EQ(Invalid, set(key, as_Wide(strValue + u'v').data(), {1}));
    EXPECT_EQ(Missing, ask(key, as_Wide(strValue + u'v').data()));
    wchar_t name[261];
    DWORD nLength = 260;
    EXPECT_EQ(More, RegEnumValueW(key, 0, name, &nLength, nullptr, nullptr, nullptr, nullptr));
}
