// The files of the registry: where they are made, who may do what, and what happens to those that are no
// good.

#include "lib_platform.h"
#include "platform/system_calls.h"
#include "registry_stores.h"
#include "test_process.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <optional>
#include <utility>

#include <sched.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace test_support;

namespace
{

constexpr const wchar_t* KEY_PATH = L"Software\\Test";
constexpr uid_t NOBODY = 65534;

LSTATUS read_Store(HKEY root)
{
    HKEY key = nullptr;
    LSTATUS code = RegOpenKeyExW(root, KEY_PATH, 0, KEY_READ, &key);
    if (code == 0)
        code = RegQueryValueExW(key, L"v", nullptr, nullptr, nullptr, nullptr);
    if (key != nullptr)
        RegCloseKey(key);
    return code;
}

LSTATUS write_Store(HKEY root)
{
    HKEY key = nullptr;
    LSTATUS code = RegCreateKeyExW(root, KEY_PATH, 0, nullptr, 0, KEY_WRITE, nullptr, &key, nullptr);
    if (code == 0)
        code = RegSetValueExW(key, L"v", 0, REG_BINARY, reinterpret_cast<const BYTE*>("abc"), 3);
    if (key != nullptr)
        RegCloseKey(key);
    return code;
}

/// In a name space of mounts of its own; false where one may not.
bool mount_Disk(const std::string& folder, unsigned long flags)
{
    return unshare(CLONE_NEWNS) == 0 && mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
           mount("none", folder.c_str(), "tmpfs", flags, "size=512k,mode=700") == 0;
}

constexpr int MAY_NOT = 77;

/// A process settles the places of its stores once: so each test leaves the registry to other processes,
/// which it starts with places of their own.
class Registry_Store : public testing::Test
{
protected:
    void SetUp() override
    {
        char folder[] = "/dev/shm/test-of-registry-XXXXXX"; // in memory: no test waits for the disk
        m_strFolder = mkdtemp(folder);
        chmod(folder, 0755);
        for (const char* pName : {"XDG_DATA_HOME", "QNLIB_MACHINE_STORE", "XDG_STATE_HOME", "HOME"})
        {
            const char* const pValue = std::getenv(pName);
            m_Own.emplace_back(pName, pValue != nullptr ? std::optional<std::string>(pValue) : std::nullopt);
        }
        setenv("XDG_DATA_HOME", m_strFolder.c_str(), 1);
        setenv("QNLIB_MACHINE_STORE", (m_strFolder + "/machine").c_str(), 1);
        m_strFile = m_strFolder + "/qnlib/registry.db";
    }
    void TearDown() override
    {
        for (const auto& [pName, value] : m_Own)
            value ? setenv(pName, value->c_str(), 1) : unsetenv(pName);
        std::filesystem::remove_all(m_strFolder);
    }

    /// What a fresh process gets who reads and writes, of that user.
    static void Expect_Codes(HKEY root, LSTATUS read, LSTATUS write, uid_t user = getuid())
    {
        const int nEnd = In_Other_Process(
            [=]
            {
                if (user != getuid() && (setgid(NOBODY) != 0 || setuid(user) != 0))
                    return MAY_NOT;
                EXPECT_EQ(read, read_Store(root));
                EXPECT_EQ(write, write_Store(root));
                return HasFailure() ? 1 : 0;
            });
        EXPECT_EQ(0, nEnd);
    }

    /// Does something with the registry in a fresh process, whose faults count here.
    template <class Work>
    static void Elsewhere(Work work)
    {
        const int nEnd = In_Other_Process(
            [&]
            {
                const bool permitted = work();
                return HasFailure() ? 1 : permitted ? 0 : MAY_NOT;
            });
        if (nEnd == MAY_NOT)
            GTEST_SKIP() << "only root may mount a disk or leave the root";
        EXPECT_EQ(0, nEnd);
    }

    unsigned int Get_Mode(const std::string& path) const
    {
        struct stat status = {};
        EXPECT_EQ(0, stat((m_strFolder + path).c_str(), &status)) << path;
        return status.st_mode & 0777;
    }

    /// Puts a file in the place of the store; nothing may change it.
    void Expect_Untouched(const std::string& bytes, LSTATUS code)
    {
        std::filesystem::remove_all(m_strFolder + "/qnlib");
        std::filesystem::create_directories(m_strFolder + "/qnlib");
        Write_File(m_strFile, bytes);
        Expect_Codes(HKEY_CURRENT_USER, code, code);
        EXPECT_TRUE(Read_File(m_strFile) == bytes);
    }

    std::string Make_Database(const char* text)
    {
        const std::string strFile = m_strFolder + "/made.db";
        std::filesystem::remove(strFile);
        Query_Store(strFile, text);
        return Read_File(strFile);
    }

    std::string m_strFolder;
    std::string m_strFile;
    std::vector<std::pair<const char*, std::optional<std::string>>> m_Own; ///< of the environment
};

} // namespace

TEST_F(Registry_Store, Is_Made_By_The_First_Write_For_Its_User_Alone)
{
    umask(0);
    Expect_Codes(HKEY_CURRENT_USER, 2, 0);
    umask(022);
    EXPECT_EQ(0700u, Get_Mode("/qnlib"));
    for (const char* pEnd : {"", "-wal", "-shm"})
        EXPECT_EQ(0600u, Get_Mode(std::string("/qnlib/registry.db") + pEnd));
    EXPECT_EQ("ok", Query_Store(m_strFile, "PRAGMA integrity_check"));
    EXPECT_EQ("616263", Query_Store(m_strFile, "SELECT data FROM registry WHERE path = '\\Software\\Test'"));
}

TEST_F(Registry_Store, Of_The_Machine_Is_Read_By_All_And_Written_By_Its_Owner)
{
    umask(077);
    Expect_Codes(HKEY_LOCAL_MACHINE, 2, 0);
    umask(022);
    EXPECT_EQ(0755u, Get_Mode("/machine"));
    EXPECT_EQ(0644u, Get_Mode("/machine/registry.db"));
    if (getuid() != 0)
        GTEST_SKIP() << "only root can become somebody else";
    Expect_Codes(HKEY_LOCAL_MACHINE, 0, 5, NOBODY);
    // While its owner has it open, too.
    const Test_Process owner(
        [](const Talk& talk)
        {
            talk.Say(write_Store(HKEY_LOCAL_MACHINE) == 0 ? '+' : '-');
            return talk.Hear();
        });
    ASSERT_EQ('+', owner.Hear());
    Expect_Codes(HKEY_LOCAL_MACHINE, 0, 5, NOBODY);
    // And by whom the administrator lets: a folder of his, in one that he may not write.
    setenv("QNLIB_MACHINE_STORE", (m_strFolder + "/granted").c_str(), 1);
    std::filesystem::create_directory(m_strFolder + "/granted");
    ASSERT_EQ(0, chown((m_strFolder + "/granted").c_str(), NOBODY, NOBODY));
    Expect_Codes(HKEY_LOCAL_MACHINE, 2, 0, NOBODY);
    EXPECT_EQ(3, std::distance(std::filesystem::directory_iterator(m_strFolder + "/granted"), {}))
        << "the file, its journal and the journal's index";
}

TEST_F(Registry_Store, Needs_A_Place)
{
    if (getuid() != 0)
        GTEST_SKIP() << "only root can become somebody else";
    Expect_Codes(HKEY_CURRENT_USER, 2, 5, 12345); // the folder is somebody else's
    chmod(m_strFolder.c_str(), 0700);
    setenv("QNLIB_MACHINE_STORE", "/nowhere", 1);
    Expect_Codes(HKEY_CURRENT_USER, 5, 5, 12345);
    Expect_Codes(HKEY_CLASSES_ROOT, 2, 5, 12345);
    chmod(m_strFolder.c_str(), 0755);
    unsetenv("XDG_DATA_HOME");
    unsetenv("HOME");
    Expect_Codes(HKEY_CURRENT_USER, 3, 3, 12345); // whom the user database does not know
    Expect_Codes(HKEY_CLASSES_ROOT, 2, 5, 12345); // there is the machine's
    const auto ask_For_Folders = []
    {
        if (setuid(12345) != 0)
            return MAY_NOT;
        wchar_t path[MAX_PATH];
        wchar_t* found = path;
        EXPECT_EQ(static_cast<HRESULT>(0x80070003),
                  SHGetFolderPathW(nullptr, CSIDL_APPDATA, nullptr, 0, path));
        EXPECT_EQ(0, path[0]);
        EXPECT_EQ(static_cast<HRESULT>(0x80070003),
                  SHGetKnownFolderPath(FOLDERID_LocalAppDataLow, 0, nullptr, &found));
        EXPECT_EQ(nullptr, found);
        return HasFailure() ? 1 : 0;
    };
    unsetenv("XDG_STATE_HOME");
    EXPECT_EQ(0, In_Other_Process(ask_For_Folders));
    setenv("XDG_DATA_HOME", "relative", 1);
    Expect_Codes(HKEY_CURRENT_USER, 3, 3, 12345);
    setenv("HOME", m_strFolder.c_str(), 1);
    Expect_Codes(HKEY_CURRENT_USER, 2, 0);
    EXPECT_EQ(0700u, Get_Mode("/.local/share/qnlib"));
}

TEST_F(Registry_Store, Is_Not_Made_Behind_A_Link_That_Leads_Nowhere)
{
    const std::string strLink = m_strFolder + "/link";
    ASSERT_EQ(0, symlink("/nowhere/at/all", strLink.c_str()));
    setenv("XDG_DATA_HOME", strLink.c_str(), 1);
    Expect_Codes(HKEY_CURRENT_USER, 2, 3);
}

TEST_F(Registry_Store, May_Lie_In_A_New_Folder_At_The_Root)
{
    Elsewhere(
        [this]
        {
            setenv("QNLIB_MACHINE_STORE", "/store", 1);
            RegCloseKey(nullptr); // loads the provider
            if (chroot(m_strFolder.c_str()) != 0)
                return false;
            EXPECT_EQ(0, write_Store(HKEY_LOCAL_MACHINE));
            EXPECT_TRUE(std::filesystem::exists("/store/registry.db"));
            return true;
        });
}

TEST_F(Registry_Store, Is_Not_Overwritten_When_It_Is_No_Good)
{
    const std::string strTable = "CREATE TABLE t(x); INSERT INTO t VALUES (1);";
    const std::string strMark = "PRAGMA application_id = 1903055431;";
    Expect_Untouched(std::string(5000, 'x'), 1009);
    Expect_Untouched("short", 1009);
    Expect_Untouched(Make_Database(strTable.c_str()), 1017);
    Expect_Untouched(Make_Database((strTable + "PRAGMA application_id = 7").c_str()), 1017);
    Expect_Untouched(Make_Database((strTable + strMark + "PRAGMA user_version = 2").c_str()), 1306);
    Expect_Untouched(Make_Database((strTable + strMark + "PRAGMA user_version = 1").c_str()), 1009);
    Expect_Untouched(Make_Database((strTable + strMark).c_str()).substr(0, 4200), 1009);
}

TEST_F(Registry_Store, Is_Left_Alone_Once_A_Newer_Version_Has_Changed_Its_Format)
{
    Elsewhere(
        [this]
        {
            HKEY key = nullptr;
            EXPECT_EQ(0, write_Store(HKEY_CURRENT_USER));
            EXPECT_EQ(0, RegOpenKeyExW(HKEY_CURRENT_USER, KEY_PATH, 0, KEY_ALL_ACCESS, &key));
            EXPECT_EQ(0, RegQueryValueExW(key, L"v", nullptr, nullptr, nullptr, nullptr));
            Query_Store(m_strFile, "PRAGMA user_version = 2");
            EXPECT_EQ(1306, RegQueryValueExW(key, L"v", nullptr, nullptr, nullptr, nullptr));
            EXPECT_EQ(1306, RegSetValueExW(key, L"v", 0, REG_NONE, nullptr, 0));
            EXPECT_EQ(1306, RegDeleteKeyW(key, L""));
            EXPECT_EQ("616263", Query_Store(m_strFile, "SELECT hex(data) FROM reg_value"));
            Query_Store(m_strFile, "PRAGMA user_version = 1");
            EXPECT_EQ(0, RegDeleteKeyValueW(key, nullptr, L"v"));
            EXPECT_EQ(2, RegQueryValueExW(key, L"v", nullptr, nullptr, nullptr, nullptr));
            RegCloseKey(key);
            return true;
        });
}

TEST_F(Registry_Store, Tells_Damage_Inside)
{
    Expect_Codes(HKEY_CURRENT_USER, 2, 0);
    Query_Store(m_strFile, "PRAGMA wal_checkpoint(TRUNCATE)");
    std::string strBytes = Read_File(m_strFile);
    std::fill(strBytes.begin() + 4096, strBytes.end(), '\xA5'); // all but the first page
    Expect_Untouched(strBytes, 1009);
}

TEST_F(Registry_Store, Tells_Of_A_Name_That_Is_Listed_And_Not_Found)
{
    Elsewhere(
        [this]
        {
            EXPECT_EQ(0, write_Store(HKEY_CURRENT_USER));
            Query_Store(m_strFile, "UPDATE reg_value SET folded = 'V', data = zeroblob(2000)");
            HKEY key = nullptr;
            EXPECT_EQ(0, RegOpenKeyExW(HKEY_CURRENT_USER, KEY_PATH, 0, KEY_READ, &key));
            wchar_t name[4];
            DWORD nLength = 4;
            std::vector<BYTE> data(3000);
            DWORD nSize = 3000;
            EXPECT_EQ(1009, RegEnumValueW(key, 0, name, &nLength, nullptr, nullptr, data.data(), &nSize));
            RegCloseKey(key);
            return true;
        });
}

TEST_F(Registry_Store, Keeps_What_It_Has_On_A_Full_Disk)
{
    Elsewhere(
        [this]
        {
            if (!mount_Disk(m_strFolder, 0))
                return false;
            EXPECT_EQ(0, write_Store(HKEY_CURRENT_USER));
            HKEY key = nullptr;
            EXPECT_EQ(0, RegCreateKeyExW(HKEY_CURRENT_USER, L"Software\\Full", 0, nullptr, 0, KEY_ALL_ACCESS,
                                         nullptr, &key, nullptr));
            LSTATUS nCode = 0;
            for (wchar_t name[] = L"A"; nCode == 0 && name[0] < L'z'; ++name[0])
                nCode = RegSetValueExW(key, name, 0, REG_BINARY, Make_Whole(200).data(), 20000);
            EXPECT_EQ(112, nCode);
            EXPECT_EQ(0, read_Store(HKEY_CURRENT_USER));
            EXPECT_TRUE(Reads_Whole_Values(key));
            EXPECT_EQ("ok", Query_Store(m_strFile, "PRAGMA integrity_check"));
            return true;
        });
}

TEST_F(Registry_Store, Tells_That_The_Disk_Is_For_Reading)
{
    Elsewhere(
        [this]
        {
            if (!mount_Disk(m_strFolder, MS_RDONLY))
                return false;
            EXPECT_EQ(2, read_Store(HKEY_CURRENT_USER));
            EXPECT_EQ(19, write_Store(HKEY_CURRENT_USER));
            return true;
        });
}

TEST_F(Registry_Store, Takes_Values_Up_To_64_MiB)
{
    Elsewhere(
        []
        {
            HKEY key = nullptr;
            EXPECT_EQ(0, RegCreateKeyExW(HKEY_CURRENT_USER, KEY_PATH, 0, nullptr, 0, KEY_ALL_ACCESS, nullptr,
                                         &key, nullptr));
            std::vector<BYTE> data((64u << 20) + 1, 0x5A);
            EXPECT_EQ(1450, RegSetValueExW(key, L"huge", 0, REG_BINARY, data.data(), (64u << 20) + 1));
            EXPECT_EQ(0, RegSetValueExW(key, L"huge", 0, REG_BINARY, data.data(), 64u << 20));
            std::fill(data.begin(), data.end(), BYTE{0});
            DWORD nSize = static_cast<DWORD>(data.size());
            EXPECT_EQ(0, RegQueryValueExW(key, L"huge", nullptr, nullptr, data.data(), &nSize));
            EXPECT_EQ(64u << 20, nSize);
            EXPECT_EQ(64 << 20, std::count(data.begin(), data.end(), 0x5A));
            EXPECT_EQ(0, RegDeleteKeyValueW(key, nullptr, L"huge"));
            RegCloseKey(key);
            return true;
        });
}

TEST_F(Registry_Store, Shows_Itself_Under_Other_Roots)
{
    Elsewhere(
        []
        {
            const auto create = [](HKEY root, const wchar_t* path, const char* value)
            {
                HKEY key = nullptr;
                const LSTATUS code =
                    RegCreateKeyExW(root, path, 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &key, nullptr);
                if (code == 0)
                    RegSetValueExW(key, L"v", 0, REG_BINARY, reinterpret_cast<const BYTE*>(value), 1);
                return code == 0 ? RegCloseKey(key) : code;
            };
            const auto read = [](HKEY root, const wchar_t* path)
            {
                HKEY key = nullptr;
                char value[2] = "-";
                DWORD size = 1;
                if (RegOpenKeyExW(root, path, 0, KEY_READ, &key) == 0)
                    RegQueryValueExW(key, L"v", nullptr, nullptr, reinterpret_cast<BYTE*>(value), &size);
                RegCloseKey(key);
                return std::string(value);
            };
            // A key is made beside its parent, however far the path.
            EXPECT_EQ(0, create(HKEY_CURRENT_USER, L"Software\\Classes\\mine", "u"));
            EXPECT_EQ(0, create(HKEY_CLASSES_ROOT, L"mine\\a\\b", "x"));
            EXPECT_EQ("x", read(HKEY_CURRENT_USER, L"Software\\Classes\\mine\\a\\b"));
            EXPECT_EQ(0, create(HKEY_CLASSES_ROOT, L"new\\a", "y"));
            EXPECT_EQ("y", read(HKEY_LOCAL_MACHINE, L"Software\\Classes\\new\\a"));
            // Both lists are in one order, whatever the letters: no name comes twice.
            for (const wchar_t* path : {L"Software\\Classes\\both\\A", L"Software\\Classes\\both\\\x0101"})
                EXPECT_EQ(0, create(HKEY_LOCAL_MACHINE, path, "m"));
            EXPECT_EQ(0, create(HKEY_CURRENT_USER, L"Software\\Classes\\both\\A", "u"));
            EXPECT_EQ(0, create(HKEY_CURRENT_USER, L"Software\\Classes\\both", "u"));
            EXPECT_EQ(0, create(HKEY_LOCAL_MACHINE, L"Software\\Classes\\both\\machine", "m"));
            EXPECT_EQ(0, create(HKEY_LOCAL_MACHINE, L"Software\\Classes\\both", "m"));
            EXPECT_EQ(0, create(HKEY_CURRENT_USER, L"Software\\Classes\\both\\user", "u"));
            EXPECT_EQ("u", read(HKEY_CLASSES_ROOT, L"both"));
            EXPECT_EQ("m", read(HKEY_CLASSES_ROOT, L"both\\machine"));
            EXPECT_EQ("u", read(HKEY_CLASSES_ROOT, L"both\\user"));
            HKEY key = nullptr;
            EXPECT_EQ(0, RegOpenKeyExW(HKEY_CLASSES_ROOT, L"both", 0, KEY_READ, &key));
            std::u16string strNames;
            wchar_t name[20];
            for (DWORD i = 0, nLength = 20;
                 RegEnumKeyExW(key, i, name, &nLength, nullptr, nullptr, nullptr, nullptr) == 0;
                 ++i, nLength = 20)
                strNames.append(name, name + nLength) += u';';
            EXPECT_EQ(u"\x0101;A;machine;user;", strNames);
            DWORD nLength = 20;
            EXPECT_EQ(0, RegEnumValueW(key, 0, name, &nLength, nullptr, nullptr, nullptr, nullptr));
            nLength = 20;
            EXPECT_EQ(259, RegEnumValueW(key, 1, name, &nLength, nullptr, nullptr, nullptr, nullptr));
            // When one of its two keys goes, a handle shows the other one.
            for (const wchar_t* path : {L"both\\user", L"both\\A", L"both"})
                EXPECT_EQ(0, RegDeleteKeyW(HKEY_CLASSES_ROOT, path));
            EXPECT_EQ(0, RegQueryValueExW(key, L"v", nullptr, nullptr, nullptr, nullptr));
            nLength = 20;
            EXPECT_EQ(0, RegEnumKeyExW(key, 2, name, &nLength, nullptr, nullptr, nullptr, nullptr));
            EXPECT_EQ(u"machine", std::u16string(name, name + nLength));
            RegCloseKey(key);

            nLength = 20;
            EXPECT_EQ(0, RegEnumKeyExW(HKEY_USERS, 0, name, &nLength, nullptr, nullptr, nullptr, nullptr));
            const std::u16string strSid(name, name + nLength);
            std::u16string strPath = strSid + u"\\Software\\Made by SID";
            std::vector<wchar_t> path(strPath.begin(), strPath.end());
            path.push_back(0);
            EXPECT_EQ(0, create(HKEY_USERS, path.data(), "s"));
            EXPECT_EQ("s", read(HKEY_CURRENT_USER, L"Software\\Made by SID"));
            EXPECT_EQ(5, create(HKEY_USERS, L"S-1-22-1-99999\\Software", "s"));
            EXPECT_EQ(5, create(HKEY_USERS, L"other", "s"));

            EXPECT_EQ(0, create(HKEY_CURRENT_CONFIG, L"c", "c"));
            EXPECT_EQ("c",
                      read(HKEY_LOCAL_MACHINE, L"SYSTEM\\CurrentControlSet\\Hardware Profiles\\Current\\C"));
            return true;
        });
}

TEST_F(Registry_Store, Goes_On_With_One_Key_Of_Two_When_The_Other_Is_Deleted)
{
    Elsewhere(
        []
        {
            const auto make = [](HKEY root, const wchar_t* path)
            {
                HKEY key = nullptr;
                EXPECT_EQ(0,
                          RegCreateKeyExW(root, path, 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &key, nullptr));
                return key;
            };
            const auto open = [](HKEY key)
            {
                HKEY below = nullptr;
                return RegOpenKeyExW(key, L"missing", 0, KEY_READ, &below);
            };
            const auto set = [](HKEY key) { return RegSetValueExW(key, L"v", 0, REG_NONE, nullptr, 0); };
            for (const auto& [gone, left] : {std::pair{HKEY_LOCAL_MACHINE, HKEY_CURRENT_USER},
                                             std::pair{HKEY_CURRENT_USER, HKEY_LOCAL_MACHINE}})
            {
                for (const HKEY root : {gone, left})
                    RegCloseKey(make(root, L"Software\\Classes\\two"));
                const HKEY key = make(HKEY_CLASSES_ROOT, L"two");
                EXPECT_EQ(0, RegDeleteKeyW(gone, L"Software\\Classes\\two"));
                EXPECT_EQ(2, open(key));
                RegCloseKey(make(key, L"new"));
                EXPECT_EQ(0, RegDeleteKeyW(left, L"Software\\Classes\\two\\new"));
                EXPECT_EQ(0, set(key));
                EXPECT_EQ(0, RegDeleteKeyValueW(left, L"Software\\Classes\\two", L"v"));
                EXPECT_EQ(0, RegDeleteKeyW(key, L""));
                EXPECT_EQ(1018, open(key));
                EXPECT_EQ(1018, set(key));
                RegCloseKey(key);
            }
            return true;
        });
}

TEST_F(Registry_Store, Fails_Without_Its_Provider)
{
    Elsewhere(
        []
        {
            system_calls.open_module = [](const char*, int) -> void* { return nullptr; };
            EXPECT_EQ(126, write_Store(HKEY_CURRENT_USER));
            EXPECT_EQ(126, RegCloseKey(nullptr));
            return true;
        });
}

TEST_F(Registry_Store, Refuses_What_It_Does_Not_Have)
{
    Elsewhere(
        []
        {
            HKEY key = nullptr;
            const auto create = [&key](DWORD options, REGSAM access, LPSECURITY_ATTRIBUTES attributes)
            {
                return RegCreateKeyExW(HKEY_CURRENT_USER, L"Software\\x", 0, nullptr, options, access,
                                       attributes, &key, nullptr);
            };
            EXPECT_EQ(50, create(REG_OPTION_VOLATILE, KEY_READ, nullptr));
            EXPECT_EQ(50, create(REG_OPTION_CREATE_LINK, KEY_READ, nullptr));
            EXPECT_EQ(87, create(0x40, KEY_READ, nullptr));
            EXPECT_EQ(87, create(0, 0x400000, nullptr));
            int descriptor = 0;
            SECURITY_ATTRIBUTES Attributes{sizeof Attributes, &descriptor, FALSE};
            EXPECT_EQ(50, create(0, KEY_READ, &Attributes));
            EXPECT_EQ(87, RegOpenKeyExW(HKEY_CURRENT_USER, L"Software", 0, 0x40, &key));
            key = HKEY_CURRENT_USER;
            EXPECT_EQ(87, RegOpenKeyExW(HKEY_CURRENT_USER, L"Software", 1, KEY_READ, &key));
            EXPECT_EQ(nullptr, key);
            EXPECT_EQ(87, RegOpenKeyExW(HKEY_CURRENT_USER, L"Software", 0, KEY_READ, nullptr));
            EXPECT_EQ(2, RegOpenKeyExW(HKEY_CURRENT_USER, L"Software\\x", 0, KEY_READ, &key));
            std::vector<wchar_t> deep;
            for (int i = 0; i < 513; ++i)
                deep.insert(deep.end(), {L'd', L'\\'});
            deep.push_back(0);
            EXPECT_EQ(206, RegCreateKeyExW(HKEY_CURRENT_USER, deep.data(), 0, nullptr, 0, KEY_READ, nullptr,
                                           &key, nullptr));
            const std::vector<wchar_t> long_name(256, L'k');
            std::vector<wchar_t> ended = long_name;
            ended.push_back(0);
            EXPECT_EQ(87, RegCreateKeyExW(HKEY_CURRENT_USER, ended.data(), 0, nullptr, 0, KEY_READ, nullptr,
                                          &key, nullptr));
            EXPECT_EQ(0, RegOpenKeyExW(HKEY_CURRENT_USER, L"Software", 0, MAXIMUM_ALLOWED, &key));
            EXPECT_EQ(0, RegSetValueExW(key, L"v", 0, REG_NONE, nullptr, 0));
            RegCloseKey(key);
            return true;
        });
}
