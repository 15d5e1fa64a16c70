// Processes and threads that use one store of the registry at once, are forked, and are killed.

#include "lib_platform.h"
#include "registry_stores.h"
#include "sanitizers.h"
#include "test_process.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <ctime>
#include <filesystem>
#include <limits>
#include <memory>
#include <random>
#include <thread>

#include <fcntl.h>
#include <unistd.h>

using namespace test_support;
using std::chrono::milliseconds;
using std::chrono::steady_clock;

namespace
{

constexpr const wchar_t* KEY_PATH = L"Software\\Processes";
constexpr DWORD NAMES = 40;

HKEY make_Key(const wchar_t* path = KEY_PATH, HKEY root = HKEY_CURRENT_USER)
{
    HKEY key = nullptr;
    EXPECT_EQ(0, RegCreateKeyExW(root, path, 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &key, nullptr));
    return key;
}

/// Sets and deletes values, each whole, and makes and deletes keys. False when a call fails as it should not.
bool change_Something(HKEY key, std::minstd_rand& random)
{
    const wchar_t name[] = {L'n', static_cast<wchar_t>(L'A' + random() % NAMES), 0};
    const std::vector<BYTE> data = Make_Whole(static_cast<BYTE>(random() % 60));
    LSTATUS code = 0;
    switch (random() % 8)
    {
    case 0:
        code = RegDeleteKeyValueW(key, nullptr, name);
        break;
    case 1:
        code = RegDeleteKeyW(key, name);
        break;
    case 2:
    {
        HKEY made = nullptr;
        code = RegCreateKeyExW(key, name, 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &made, nullptr);
        RegCloseKey(made);
        break;
    }
    default:
        code = RegSetValueExW(key, name, 0, REG_BINARY, data.data(), static_cast<DWORD>(data.size()));
        return code == 0;
    }
    return code == 0 || code == 2;
}

int change_For(milliseconds time, unsigned int seed)
{
    const HKEY key = make_Key();
    std::minstd_rand random(seed);
    for (const auto end = steady_clock::now() + time; steady_clock::now() < end;)
    {
        if (!change_Something(key, random))
            return 1;
    }
    return 0;
}

DWORD get_Number(HKEY key, const wchar_t* name)
{
    DWORD number = ~0u;
    DWORD size = sizeof number;
    EXPECT_EQ(0, RegQueryValueExW(key, name, nullptr, nullptr, reinterpret_cast<BYTE*>(&number), &size));
    return number;
}

LSTATUS set_Number(HKEY key, const wchar_t* name, DWORD number)
{
    return RegSetValueExW(key, name, 0, REG_DWORD, reinterpret_cast<const BYTE*>(&number), sizeof number);
}

/// How many of this process's descriptors lead to a store.
int count_Descriptors(bool inherited_only)
{
    int count = 0;
    for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd"))
    {
        std::error_code gone;
        const std::string target = std::filesystem::read_symlink(entry.path(), gone).string();
        const int flags = fcntl(std::stoi(entry.path().filename().string()), F_GETFD);
        const bool counts = !inherited_only || (flags & FD_CLOEXEC) == 0;
        count += target.find("registry.db") != std::string::npos && counts ? 1 : 0;
    }
    return count;
}

/// Works on a store that is new; see Registry_Store for why that is another process.
class Registry_Processes : public testing::Test
{
protected:
    void SetUp() override
    {
        char folder[] = "/dev/shm/test-of-registry-XXXXXX";
        m_strFolder = mkdtemp(folder);
        m_strOwn_Home = std::getenv("XDG_DATA_HOME");
        m_strOwn_Machine = std::getenv("QNLIB_MACHINE_STORE");
        setenv("XDG_DATA_HOME", m_strFolder.c_str(), 1);
        setenv("QNLIB_MACHINE_STORE", (m_strFolder + "/machine").c_str(), 1);
        m_strFile = m_strFolder + "/qnlib/registry.db";
    }
    void TearDown() override
    {
        setenv("XDG_DATA_HOME", m_strOwn_Home.c_str(), 1);
        setenv("QNLIB_MACHINE_STORE", m_strOwn_Machine.c_str(), 1);
        std::filesystem::remove_all(m_strFolder);
    }

    template <class Work>
    static void Elsewhere(Work work)
    {
        EXPECT_EQ(0, In_Other_Process(
                         [&]
                         {
                             work();
                             return HasFailure() ? 1 : 0;
                         }));
    }

    std::string m_strFolder;
    /// Six processes that find no store, and then make one key in it at once.
    void Make_Store_Together(HKEY root, const std::string& strFolder)
    {
        std::vector<std::unique_ptr<Test_Process>> makers;
        for (DWORD i = 0; i < 6; ++i)
            makers.push_back(std::make_unique<Test_Process>(
                [=](const Talk& owner)
                {
                    HKEY none = nullptr;
                    for (int n = 0; n < 2; ++n)
                        EXPECT_EQ(2, RegOpenKeyExW(root, KEY_PATH, 0, KEY_READ, &none));
                    owner.Say('+');
                    owner.Hear();
                    const wchar_t name[] = {static_cast<wchar_t>(L'0' + i), 0};
                    EXPECT_EQ(2, RegOpenKeyExW(root, L"Software\\Not there", 0, KEY_READ, &none));
                    const bool set = set_Number(make_Key(KEY_PATH, root), name, i) == 0;
                    return set && RegOpenKeyExW(root, KEY_PATH, 0, KEY_READ, &none) == 0 && !HasFailure() ? 0
                                                                                                          : 1;
                }));
        for (const auto& maker : makers)
            EXPECT_EQ('+', maker->Hear());
        for (const auto& maker : makers)
            maker->Say('+');
        for (const auto& maker : makers)
            EXPECT_EQ(0, maker->Get_End());
        EXPECT_EQ(3, std::distance(std::filesystem::directory_iterator(strFolder), {})) << "no drafts";
        EXPECT_EQ("6", Query_Store(strFolder + "/registry.db", "SELECT count(*) FROM reg_value"));
    }

    std::string m_strFile;
    std::string m_strOwn_Home;
    std::string m_strOwn_Machine;
};

} // namespace

TEST_F(Registry_Processes, Write_And_List_At_Once)
{
    constexpr milliseconds Time{2000};
    Test_Process one([=](const Talk&) { return change_For(Time, 1); });
    Test_Process other([=](const Talk&) { return change_For(Time, 2); });
    Elsewhere(
        [=]
        {
            const HKEY key = make_Key();
            for (const auto end = steady_clock::now() + Time; steady_clock::now() < end;)
                ASSERT_TRUE(Reads_Whole_Values(key));
        });
    EXPECT_EQ(0, one.Get_End());
    EXPECT_EQ(0, other.Get_End());
    EXPECT_EQ("ok", Query_Store(m_strFile, "PRAGMA integrity_check"));
}

TEST_F(Registry_Processes, Make_One_Store_Together)
{
    Make_Store_Together(HKEY_CURRENT_USER, m_strFolder + "/qnlib");
    Make_Store_Together(HKEY_LOCAL_MACHINE, m_strFolder + "/machine");
}

TEST_F(Registry_Processes, See_Each_Others_Changes_At_Once)
{
    Test_Process other(
        [](const Talk& owner)
        {
            const HKEY key = make_Key();
            for (DWORD i = 0; i < 200; ++i)
            {
                if (set_Number(key, L"turn", i) != 0)
                    return 1;
                owner.Say('+');
                if (owner.Hear() != '+')
                    return 2;
            }
            return 0;
        });
    Elsewhere(
        [&other]
        {
            HKEY key = nullptr;
            for (DWORD i = 0; i < 200; ++i)
            {
                ASSERT_EQ('+', other.Hear());
                if (key == nullptr)
                    key = make_Key();
                ASSERT_EQ(i, get_Number(key, L"turn"));
                ASSERT_EQ(i, get_Number(key, L"turn"));
                other.Say('+');
            }
        });
    EXPECT_EQ(0, other.Get_End());
}

TEST_F(Registry_Processes, Are_Killed_While_They_Write)
{
    std::minstd_rand random(7);
    for (int i = 0; i < 12; ++i)
    {
        Test_Process writer([i](const Talk&)
                            { return change_For(milliseconds(60000), static_cast<unsigned int>(i)); });
        std::this_thread::sleep_for(std::chrono::microseconds(2000 + random() % 20000));
        writer.Kill();
        Elsewhere([] { EXPECT_TRUE(Reads_Whole_Values(make_Key())); });
        ASSERT_EQ("ok", Query_Store(m_strFile, "PRAGMA integrity_check")) << "after kill " << i;
    }
}

TEST_F(Registry_Processes, Wait_For_Their_Turn_To_Write_And_Never_To_Read)
{
    Elsewhere(
        [this]
        {
            const HKEY key = make_Key();
            EXPECT_EQ(0, set_Number(key, L"v", 1));
            sqlite3* holder = nullptr;
            sqlite3_open(m_strFile.c_str(), &holder);
            sqlite3_exec(holder, "BEGIN IMMEDIATE", nullptr, nullptr, nullptr);
            std::atomic<bool> released = false;
            std::thread writer(
                [&]
                {
                    EXPECT_EQ(0, set_Number(key, L"v", 2));
                    EXPECT_TRUE(released);
                });
            std::this_thread::sleep_for(milliseconds(50));
            EXPECT_EQ(1u, get_Number(key, L"v"));
            EXPECT_EQ(2, RegQueryValueExW(key, L"not there", nullptr, nullptr, nullptr, nullptr));
            released = true;
            sqlite3_exec(holder, "COMMIT", nullptr, nullptr, nullptr);
            writer.join();
            EXPECT_EQ(2u, get_Number(key, L"v"));
            sqlite3_close(holder);
        });
}

TEST_F(Registry_Processes, Fork_While_Threads_Are_At_Work)
{
    if (!Forks_Beside_Threads)
        GTEST_SKIP() << NO_FORK;
    Elsewhere(
        []
        {
            const HKEY key = make_Key();
            EXPECT_EQ(0, set_Number(key, L"v", 0));
            std::minstd_rand random(3);
            // Finds the worker's functions, so that it loads no module when the forks come.
            for (int n = 0; n < 100; ++n)
                EXPECT_TRUE(change_Something(key, random));
            std::atomic<bool> end = false;
            std::thread worker(
                [&]
                {
                    const HKEY own = make_Key(L"Software\\Of the thread");
                    while (!end)
                        EXPECT_TRUE(change_Something(own, random));
                });
            for (DWORD i = 1; i <= 10; ++i)
            {
                const auto in_Child = [key, i]
                {
                    const bool clean = count_Descriptors(false) == 0;
                    const bool sees = get_Number(key, L"v") == i - 1;
                    return clean && sees && set_Number(key, L"v", i) == 0 && get_Number(key, L"v") == i ? 0
                                                                                                        : 1;
                };
                EXPECT_EQ(0, In_Other_Process(in_Child));
                EXPECT_EQ(i, get_Number(key, L"v"));
            }
            end = true;
            worker.join();
            EXPECT_LT(0, count_Descriptors(false));
            EXPECT_EQ(0, count_Descriptors(true)) << "nothing is left to a program that is executed";
        });
    EXPECT_EQ("ok", Query_Store(m_strFile, "PRAGMA integrity_check"));
}

TEST_F(Registry_Processes, Share_A_Handle_Among_Threads)
{
    Elsewhere(
        []
        {
            const HKEY key = make_Key();
            const HKEY steady = make_Key(L"Software\\Steady");
            EXPECT_EQ(0, set_Number(steady, L"v", 77));
            std::atomic<int> writers = 2;
            std::vector<std::thread> threads;
            for (unsigned int i = 0; i < 2; ++i)
                threads.emplace_back(
                    [&, i]
                    {
                        std::minstd_rand random(i);
                        for (int n = 0; n < 200; ++n)
                            EXPECT_TRUE(change_Something(key, random));
                        --writers;
                    });
            for (int i = 0; i < 2; ++i)
                threads.emplace_back(
                    [&]
                    {
                        while (writers != 0)
                        {
                            HKEY own = nullptr;
                            EXPECT_EQ(0, RegOpenKeyExW(HKEY_CURRENT_USER, KEY_PATH, 0, KEY_READ, &own));
                            EXPECT_TRUE(Reads_Whole_Values(own));
                            EXPECT_EQ(77u, get_Number(steady, L"v"));
                            EXPECT_EQ(0, RegCloseKey(own));
                        }
                    });
            for (std::thread& thread : threads)
                thread.join();
        });
}

TEST_F(Registry_Processes, List_A_Thousand_Values_In_Steps_Of_One_Cost)
{
    Elsewhere(
        []
        {
            const HKEY key = make_Key();
            wchar_t name[] = L"0000";
            for (int i = 0; i < 2000; ++i)
            {
                for (int digit = 3, rest = i; digit >= 0; --digit, rest /= 10)
                    name[digit] = static_cast<wchar_t>(L'0' + rest % 10);
                ASSERT_EQ(0, set_Number(key, name, 1));
            }
            const auto time_Of = [key](DWORD first, DWORD count)
            {
                auto best = std::numeric_limits<std::clock_t>::max(); // of the processor, however busy it is
                for (int round = 0; round < 5; ++round)
                {
                    set_Number(key, L"changed", 1); // nothing is known any more
                    const std::clock_t start = std::clock();
                    for (DWORD i = first; i < first + count; ++i)
                    {
                        wchar_t found[20];
                        DWORD length = 20;
                        EXPECT_EQ(0,
                                  RegEnumValueW(key, i, found, &length, nullptr, nullptr, nullptr, nullptr));
                    }
                    best = std::min(best, std::clock() - start);
                }
                return best;
            };
            EXPECT_LT(time_Of(1800, 200), 6 * time_Of(0, 200));
        });
}
