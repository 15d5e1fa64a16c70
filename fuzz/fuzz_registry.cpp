#include "fuzz_input.h"
#include "lib_platform.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <iterator>
#include <map>
#include <optional>
#include <utility>
#include <vector>

#include <unistd.h>

// Names and paths of the registry: random operations on a small tree, beside a model of it. Names are made of
// few letters, in both cases, with backslashes, half surrogates and letters whose counterparts go one way
// only; some are about as long as a name of a key may be.

namespace
{

const std::u16string ALPHABET =
    u"aAbB\\\\\u00E4\u00C4\u0131iI\u03C2\u03C3\u03A3\u01C5\u01C6\xD801\xDC28\xDC00 ./";

constexpr std::size_t MOST_COMPONENT = 255;
constexpr DWORD ROOM = 512; ///< for any name

char16_t fold(char16_t cUnit)
{
    const std::u16string strSmall = u"ab\u00E4i\u03C3\u01C6";
    const std::u16string strCapital = u"AB\u00C4I\u03A3\u01C4";
    const std::size_t nPlace = strSmall.find(cUnit);
    return nPlace != std::u16string::npos ? strCapital[nPlace] : cUnit;
}

std::u16string fold(std::u16string strText)
{
    for (char16_t& cUnit : strText)
        cUnit = fold(cUnit);
    return strText;
}

using Names = std::vector<std::u16string>;

struct Model_Value
{
    std::u16string m_strName;
    std::vector<BYTE> m_Data;
};

struct Model_Key
{
    std::u16string m_strName;
    std::map<std::u16string, Model_Key> m_Keys;
    std::map<std::u16string, Model_Value> m_Values;
};

/// The components; nothing for a path that begins with a backslash.
std::optional<Names> split(const std::u16string& strPath)
{
    if (!strPath.empty() && strPath[0] == u'\\')
        return std::nullopt;
    Names names;
    bool bNew = true;
    for (const char16_t cUnit : strPath)
    {
        if (cUnit == u'\\')
            bNew = true;
        else if (std::exchange(bNew, false))
            names.emplace_back(1, cUnit);
        else
            names.back() += cUnit;
    }
    return names;
}

Model_Key* find(Model_Key& root, const Names& names)
{
    Model_Key* pKey = &root;
    for (const std::u16string& strName : names)
    {
        const auto found = pKey->m_Keys.find(fold(strName));
        if (found == pKey->m_Keys.end())
            return nullptr;
        pKey = &found->second;
    }
    return pKey;
}

class Registry_Fuzz
{
public:
    Registry_Fuzz() { FUZZ_CHECK(create(HKEY_CURRENT_USER, u"Software\\Fuzz", m_Base) == 0); }
    ~Registry_Fuzz()
    {
        delete_All(m_Base, m_Root);
        RegCloseKey(m_Base);
    }

    void Do(Fuzz_Input& Input)
    {
        const std::u16string strPath = take_Name(Input, 12);
        const std::optional<Names> Split = split(strPath);
        const bool bLong =
            Split && std::any_of(Split->begin(), Split->end(),
                                 [](const auto& strName) { return strName.size() > MOST_COMPONENT; });
        if (!Split || bLong)
        {
            const LSTATUS nExpected = bLong ? 87 : 161;
            HKEY key = nullptr;
            FUZZ_CHECK(open(strPath, key) == nExpected && create(m_Base, strPath, key) == nExpected);
            return;
        }
        switch (Input.Take_Choice(4))
        {
        case 0:
            do_Create(strPath, *Split);
            break;
        case 1:
            do_Delete(strPath, *Split);
            break;
        default:
            do_Value(Input, strPath, *Split);
        }
    }

    void Check_All() { check_Key(m_Base, m_Root); }

private:
    static std::u16string take_Name(Fuzz_Input& Input, unsigned int nMost)
    {
        std::u16string strName = Input.Take_Text(ALPHABET, Input.Take_Choice(nMost));
        if (Input.Take_Choice(16) == 15 && !strName.empty())
            strName.append(240 + Input.Take_Choice(24), strName.back());
        return strName;
    }

    static LSTATUS create(HKEY base, const std::u16string& strPath, HKEY& key)
    {
        return RegCreateKeyExW(base, Wide_Text(strPath), 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &key,
                               nullptr);
    }
    LSTATUS open(const std::u16string& strPath, HKEY& key) const
    {
        return RegOpenKeyExW(m_Base, Wide_Text(strPath), 0, KEY_ALL_ACCESS, &key);
    }

    void do_Create(const std::u16string& strPath, const Names& names)
    {
        HKEY key = nullptr;
        FUZZ_CHECK(create(m_Base, strPath, key) == 0);
        FUZZ_CHECK(RegCloseKey(key) == 0);
        Model_Key* pKey = &m_Root;
        for (const std::u16string& strName : names)
        {
            pKey = &pKey->m_Keys[fold(strName)];
            if (pKey->m_strName.empty())
                pKey->m_strName = strName;
        }
    }

    void do_Delete(const std::u16string& strPath, const Names& names)
    {
        Model_Key* const pKey = find(m_Root, names);
        if (names.empty())
            return;
        const LSTATUS nCode = RegDeleteKeyW(m_Base, Wide_Text(strPath));
        FUZZ_CHECK(nCode == (pKey == nullptr ? 2 : pKey->m_Keys.empty() ? 0 : 5));
        if (nCode == 0)
            find(m_Root, {names.begin(), names.end() - 1})->m_Keys.erase(fold(names.back()));
    }

    void do_Value(Fuzz_Input& Input, const std::u16string& strPath, const Names& names)
    {
        Model_Key* const pKey = find(m_Root, names);
        HKEY key = nullptr;
        FUZZ_CHECK(open(strPath, key) == (pKey != nullptr ? 0 : 2));
        if (pKey == nullptr)
            return;
        const std::u16string strName = take_Name(Input, 5);
        const auto found = pKey->m_Values.find(fold(strName));
        const bool bExists = found != pKey->m_Values.end();
        if (Input.Take_Choice(4) == 0)
        {
            FUZZ_CHECK(RegDeleteKeyValueW(key, nullptr, Wide_Text(strName)) == (bExists ? 0 : 2));
            if (bExists)
                pKey->m_Values.erase(found);
        }
        else
        {
            const std::vector<BYTE> data(Input.Take_Choice(8) * 70u, static_cast<BYTE>(Input.Take_Byte()));
            FUZZ_CHECK(RegSetValueExW(key, Wide_Text(strName), 0, REG_BINARY, data.data(),
                                      static_cast<DWORD>(data.size())) == 0);
            Model_Value& Value = pKey->m_Values[fold(strName)];
            if (!bExists)
                Value.m_strName = strName;
            Value.m_Data = data;
        }
        check_Key(key, *pKey);
        RegCloseKey(key);
    }

    static void check_Key(HKEY key, const Model_Key& Model)
    {
        wchar_t name[ROOM];
        DWORD nLength = ROOM;
        std::vector<BYTE> data(1000);
        DWORD nSize = 1000;
        DWORD nValues = 0;
        while (RegEnumValueW(key, nValues, name, &nLength, nullptr, nullptr, data.data(), &nSize) == 0)
        {
            const std::u16string strName(name, name + nLength);
            const auto found = Model.m_Values.find(fold(strName));
            FUZZ_CHECK(found != Model.m_Values.end() && found->second.m_strName == strName);
            FUZZ_CHECK(nSize == found->second.m_Data.size() &&
                       std::equal(found->second.m_Data.begin(), found->second.m_Data.end(), data.begin()));
            ++nValues;
            nLength = ROOM;
            nSize = 1000;
        }
        FUZZ_CHECK(nValues == Model.m_Values.size());
        DWORD nKeys = 0;
        nLength = ROOM;
        while (RegEnumKeyExW(key, nKeys, name, &nLength, nullptr, nullptr, nullptr, nullptr) == 0)
        {
            const std::u16string strName(name, name + nLength);
            const auto found = Model.m_Keys.find(fold(strName));
            FUZZ_CHECK(found != Model.m_Keys.end() && found->second.m_strName == strName);
            ++nKeys;
            nLength = ROOM;
        }
        FUZZ_CHECK(nKeys == Model.m_Keys.size());
    }

    static void delete_All(HKEY key, const Model_Key& Model)
    {
        for (const auto& [strFolded, Below] : Model.m_Keys)
        {
            HKEY below = nullptr;
            FUZZ_CHECK(RegOpenKeyExW(key, Wide_Text(strFolded), 0, KEY_READ, &below) == 0);
            delete_All(below, Below);
            RegCloseKey(below);
        }
        FUZZ_CHECK(RegDeleteKeyW(key, L"") == 0);
    }

    HKEY m_Base = nullptr;
    Model_Key m_Root;
};

/// A store of this process's own, in memory.
bool take_Own_Home()
{
    char folder[] = "/dev/shm/fuzz-of-registry-XXXXXX";
    FUZZ_CHECK(mkdtemp(folder) != nullptr);
    setenv("XDG_DATA_HOME", folder, 1);
    return std::atexit([] { std::filesystem::remove_all(std::getenv("XDG_DATA_HOME")); }) == 0;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t nSize)
{
    static const bool home = take_Own_Home();
    FUZZ_CHECK(home);
    Fuzz_Input Input(pData, nSize);
    Registry_Fuzz fuzz;
    for (int i = 0; i < 24 && Input.Get_Left() != 0; ++i)
        fuzz.Do(Input);
    fuzz.Check_All();
    return 0;
}
