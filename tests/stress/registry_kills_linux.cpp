// A process that changes the registry is killed at random moments; the store is whole after each.

#include "child.h"
#include "lib_platform.h"
#include "registry_stores.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <thread>

using namespace test_support;

namespace stress
{

namespace
{

constexpr const wchar_t* KEY_PATH = L"Software\\Killed";

HKEY make_Key()
{
    HKEY key = nullptr;
    RegCreateKeyExW(HKEY_CURRENT_USER, KEY_PATH, 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &key, nullptr);
    return key;
}

DWORD read_Number(HKEY key, const wchar_t* pName)
{
    DWORD nNumber = 0;
    DWORD nSize = sizeof nNumber;
    RegQueryValueExW(key, pName, nullptr, nullptr, reinterpret_cast<BYTE*>(&nNumber), &nSize);
    return nNumber;
}

bool write_Number(HKEY key, const wchar_t* pName, DWORD nNumber)
{
    return RegSetValueExW(key, pName, 0, REG_DWORD, reinterpret_cast<const BYTE*>(&nNumber),
                          sizeof nNumber) == 0;
}

/// Sets two numbers, the first one ahead, and between them a value, a key, or the end of either. Never ends.
unsigned int change_For_Ever()
{
    const HKEY numbers = make_Key();
    HKEY key = nullptr;
    RegCreateKeyExW(numbers, L"values", 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &key, nullptr);
    const DWORD nAhead = read_Number(numbers, L"ahead");
    write_Number(numbers, L"behind", nAhead); // its predecessor did not come to that
    for (DWORD n = nAhead + 1; write_Number(numbers, L"ahead", n); ++n)
    {
        const wchar_t name[] = {static_cast<wchar_t>(L'A' + Random_Below(50)), 0};
        const std::vector<BYTE> data = Make_Whole(static_cast<BYTE>(Random_Below(250)));
        HKEY made = nullptr;
        switch (Random_Below(6))
        {
        case 0:
            RegDeleteKeyValueW(key, nullptr, name);
            break;
        case 1:
            RegCreateKeyExW(key, name, 0, nullptr, 0, KEY_READ, nullptr, &made, nullptr);
            RegCloseKey(made);
            break;
        case 2:
            RegDeleteKeyW(key, name);
            break;
        default:
            RegSetValueExW(key, name, 0, REG_BINARY, data.data(), static_cast<DWORD>(data.size()));
        }
        if (!write_Number(numbers, L"behind", n))
            break;
    }
    return 1;
}

/// 0 when all is well.
unsigned int look_At_Values()
{
    const HKEY numbers = make_Key();
    HKEY key = nullptr;
    RegCreateKeyExW(numbers, L"values", 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &key, nullptr);
    const DWORD nAhead = read_Number(numbers, L"ahead");
    const DWORD nBehind = read_Number(numbers, L"behind");
    return (Reads_Whole_Values(key) ? 0u : 1u) | (nAhead == nBehind || nAhead == nBehind + 1 ? 0u : 2u);
}

} // namespace

// The registry belongs to the children alone: each has places and connections of its own.
TEST(Registry_Kills, Leave_The_Store_Whole)
{
    char folder[] = "/tmp/qnlib-test-kills-XXXXXX";
    ASSERT_NE(nullptr, mkdtemp(folder));
    const std::string strOwn = std::getenv("XDG_DATA_HOME");
    setenv("XDG_DATA_HOME", folder, 1);
    const std::string strFile = std::string(folder) + "/qnlib/registry.db";
    const unsigned int nKills = std::min(Rounds(5), 200u);
    for (unsigned int i = 0; i < nKills; ++i)
    {
        Child writer(change_For_Ever);
        std::this_thread::sleep_for(std::chrono::microseconds(1000 + Random_Below(40000)));
        EXPECT_EQ(Child::Still_There, writer.Get_Result(milliseconds(0))) << "it failed of its own";
        writer.Kill();
        ASSERT_EQ(0u, Child(look_At_Values).Get_Result(milliseconds(20000))) << "after kill " << i;
        ASSERT_EQ("ok", Query_Store(strFile, "PRAGMA integrity_check")) << "after kill " << i;
    }
    if (Is_Long())
        std::printf("registry: %u writers killed, the store whole after each\n", nKills);
    setenv("XDG_DATA_HOME", strOwn.c_str(), 1);
    std::filesystem::remove_all(folder);
}

} // namespace stress
