// The registry: values read and written, a list of a thousand, a deep key. The peers: SQLite called directly
// with prepared statements on one table, which is the limit; QSettings of the native format with a sync and
// GLib's key files, loaded or saved each time, so that they too see what others changed and show what they
// did.

#include <lib_platform.h>

#include "peers.h"
#include "row.h"

#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#if defined(QNLIB_BENCH_QT)
#include <QSettings>
#endif
#if defined(QNLIB_BENCH_SQLITE)
#include <sqlite3.h>
#endif

namespace
{

constexpr int Values = 20;
constexpr int Many = 1000;
constexpr const wchar_t* Path = L"Software\\Vorel Co\\Bench";
constexpr const wchar_t* DeepPath = L"Software\\a\\b\\c\\d\\e\\f\\g\\h\\i\\j";
const std::u16string Sentence = u"C:\\Program Files\\Vorel Co\\Desk\\cards.dll";

/// The folder of all stores of this run, on a disk, and gone with it.
const std::string& folder()
{
    struct Folder
    {
        Folder()
        {
            char name[] = "/tmp/qnlib-bench-XXXXXX";
            m_strPath = mkdtemp(name);
            setenv("XDG_DATA_HOME", name, 1);
        }
        ~Folder() { std::filesystem::remove_all(m_strPath); }
        std::string m_strPath;
    };
    static const Folder made;
    return made.m_strPath;
}

std::string value_Name(int nIndex) { return "value" + std::to_string(nIndex); }

struct Wide_Name
{
    explicit Wide_Name(const std::string& strName) : m_Units(strName.begin(), strName.end())
    {
        m_Units.push_back(0);
    }
    operator const wchar_t*() const { return m_Units.data(); }
    std::vector<wchar_t> m_Units;
};

class Ours
{
public:
    explicit Ours(const wchar_t* pPath = Path)
    {
        folder();
        RegCreateKeyExW(HKEY_CURRENT_USER, pPath, 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &m_Key, nullptr);
    }

    void Fill(int nCount) const
    {
        for (int i = 0; i < nCount; ++i)
            Write_Number(Wide_Name(value_Name(i)), i);
        RegSetValueExW(m_Key, L"text", 0, REG_SZ, reinterpret_cast<const BYTE*>(Sentence.data()),
                       static_cast<DWORD>(Sentence.size() * 2));
    }

    int Write_Number(const wchar_t* pName, int nValue) const
    {
        return RegSetValueExW(m_Key, pName, 0, REG_DWORD, reinterpret_cast<const BYTE*>(&nValue), 4);
    }
    int Write_Text(const wchar_t* pName, const std::u16string& strText) const
    {
        return RegSetValueExW(m_Key, pName, 0, REG_SZ, reinterpret_cast<const BYTE*>(strText.data()),
                              static_cast<DWORD>(strText.size() * 2));
    }

    /// As the library reads: open, ask for the size, ask for the data, close.
    static std::vector<BYTE> Read(const wchar_t* pName)
    {
        HKEY key = nullptr;
        DWORD nSize = 0;
        RegOpenKeyExW(HKEY_CURRENT_USER, Path, 0, KEY_READ, &key);
        RegQueryValueExW(key, pName, nullptr, nullptr, nullptr, &nSize);
        std::vector<BYTE> data(nSize);
        if (RegQueryValueExW(key, pName, nullptr, nullptr, data.data(), &nSize) != 0)
            std::abort();
        RegCloseKey(key);
        return data;
    }

    int List() const
    {
        wchar_t name[64];
        DWORD nIndex = 0;
        DWORD nLength = 64;
        BYTE data[256];
        DWORD nSize = 256;
        while (RegEnumValueW(m_Key, nIndex, name, &nLength, nullptr, nullptr, data, &nSize) == 0)
        {
            ++nIndex;
            nLength = 64;
            nSize = 256;
        }
        return static_cast<int>(nIndex);
    }

private:
    HKEY m_Key = nullptr;
};

#if defined(QNLIB_BENCH_SQLITE)
/// One table of keys, names and data, with statements that are ready.
class Direct
{
public:
    explicit Direct(int nCount, const char* pFile = "direct.db")
    {
        sqlite3_open((folder() + "/" + pFile).c_str(), &m_pDatabase);
        sqlite3_exec(m_pDatabase,
                     "PRAGMA journal_mode = WAL; PRAGMA synchronous = NORMAL;"
                     "CREATE TABLE IF NOT EXISTS entry(key TEXT, name TEXT, type INTEGER, data BLOB, "
                     "PRIMARY KEY(key, name)) WITHOUT ROWID",
                     nullptr, nullptr, nullptr);
        m_pRead =
            prepare("SELECT type, data FROM entry WHERE key = 'Software\\Vorel Co\\Bench' AND name = ?");
        m_pWrite =
            prepare("INSERT INTO entry VALUES ('Software\\Vorel Co\\Bench', ?, ?, ?) ON CONFLICT DO UPDATE "
                    "SET type = excluded.type, data = excluded.data");
        m_pList = prepare(
            "SELECT name, type, data FROM entry WHERE key = 'Software\\Vorel Co\\Bench' ORDER BY name");
        for (int i = 0; i < nCount; ++i)
            Write(value_Name(i), &i, 4);
        Write("text", Sentence.data(), Sentence.size() * 2);
    }

    std::vector<BYTE> Read(const std::string& strName) const
    {
        sqlite3_bind_text(m_pRead, 1, strName.data(), static_cast<int>(strName.size()), SQLITE_STATIC);
        if (sqlite3_step(m_pRead) != SQLITE_ROW)
            std::abort();
        const auto* pData = static_cast<const BYTE*>(sqlite3_column_blob(m_pRead, 1));
        std::vector<BYTE> data(pData, pData + sqlite3_column_bytes(m_pRead, 1));
        sqlite3_reset(m_pRead);
        return data;
    }

    int Write(const std::string& strName, const void* pData, std::size_t nSize) const
    {
        sqlite3_bind_text(m_pWrite, 1, strName.data(), static_cast<int>(strName.size()), SQLITE_STATIC);
        sqlite3_bind_int(m_pWrite, 2, 4);
        sqlite3_bind_blob(m_pWrite, 3, pData, static_cast<int>(nSize), SQLITE_STATIC);
        const int nResult = sqlite3_step(m_pWrite);
        sqlite3_reset(m_pWrite);
        return nResult;
    }

    int List() const
    {
        int nCount = 0;
        while (sqlite3_step(m_pList) == SQLITE_ROW)
            nCount += sqlite3_column_bytes(m_pList, 0) != 0 && sqlite3_column_blob(m_pList, 2) != nullptr;
        sqlite3_reset(m_pList);
        return nCount;
    }

private:
    sqlite3_stmt* prepare(const char* pText) const
    {
        sqlite3_stmt* pStatement = nullptr;
        sqlite3_prepare_v2(m_pDatabase, pText, -1, &pStatement, nullptr);
        return pStatement;
    }

    sqlite3* m_pDatabase = nullptr;
    sqlite3_stmt* m_pRead = nullptr;
    sqlite3_stmt* m_pWrite = nullptr;
    sqlite3_stmt* m_pList = nullptr;
};
#endif

#if defined(QNLIB_BENCH_QT)
std::shared_ptr<QSettings> make_Settings(int nCount)
{
    const auto pSettings = std::make_shared<QSettings>(QString::fromStdString(folder() + "/settings.conf"),
                                                       QSettings::NativeFormat);
    for (int i = 0; i < nCount; ++i)
        pSettings->setValue(QString::fromStdString("Bench/" + value_Name(i)), i);
    pSettings->setValue("Bench/text", QString::fromUtf16(Sentence.c_str()));
    pSettings->sync();
    return pSettings;
}
#endif

#if defined(QNLIB_BENCH_GLIB)
class Key_File
{
public:
    explicit Key_File(int nCount)
        : m_strFile(folder() + "/keys" + std::to_string(nCount)), m_pFile(g_key_file_new(), g_key_file_unref)
    {
        for (int i = 0; i < nCount; ++i)
            g_key_file_set_integer(m_pFile.get(), "Bench", value_Name(i).c_str(), i);
        g_key_file_save_to_file(m_pFile.get(), m_strFile.c_str(), nullptr);
    }
    int Read(const char* pName) const
    {
        g_key_file_load_from_file(m_pFile.get(), m_strFile.c_str(), G_KEY_FILE_NONE, nullptr);
        return g_key_file_get_integer(m_pFile.get(), "Bench", pName, nullptr);
    }
    int Write(const char* pName, int nValue) const
    {
        g_key_file_set_integer(m_pFile.get(), "Bench", pName, nValue);
        return g_key_file_save_to_file(m_pFile.get(), m_strFile.c_str(), nullptr);
    }
    int List() const
    {
        g_key_file_load_from_file(m_pFile.get(), m_strFile.c_str(), G_KEY_FILE_NONE, nullptr);
        gsize nCount = 0;
        g_strfreev(g_key_file_get_keys(m_pFile.get(), "Bench", &nCount, nullptr));
        return static_cast<int>(nCount);
    }

private:
    std::string m_strFile;
    std::shared_ptr<GKeyFile> m_pFile;
};
#endif

void add_Reads()
{
    Row number("registry: read a number, unchanged", 0.5);
    Row text("registry: read a text, unchanged", 0.5);
    Row changed("registry: write a number and read another", 0);
    changed.Mark_Against("SQLite, 2 connections", 0.5); // as if another process had written
    Ours().Fill(Values);
    number.Add(Row::Ours, [] { return Ours::Read(L"value7"); });
    text.Add(Row::Ours, [] { return Ours::Read(L"text"); });
    changed.Add(Row::Ours,
                [ours = Ours(), n = 0]() mutable
                {
                    ours.Write_Number(L"value3", ++n);
                    return Ours::Read(L"value7");
                });
#if defined(QNLIB_BENCH_SQLITE)
    number.Add("SQLite", [direct = Direct(Values), name = value_Name(7)] { return direct.Read(name); });
    text.Add("SQLite", [direct = Direct(Values)] { return direct.Read("text"); });
    changed.Add("SQLite",
                [direct = Direct(Values), name = value_Name(7), other = value_Name(3), n = 0]() mutable
                {
                    ++n;
                    direct.Write(other, &n, 4);
                    return direct.Read(name);
                });
    changed.Add("SQLite, 2 connections",
                [direct = Direct(Values), writer = Direct(0), name = value_Name(7), other = value_Name(3),
                 n = 0]() mutable
                {
                    ++n;
                    writer.Write(other, &n, 4);
                    return direct.Read(name);
                });
#endif
#if defined(QNLIB_BENCH_QT)
    number.Add("QSettings",
               [pSettings = make_Settings(Values)]
               {
                   pSettings->sync();
                   return pSettings->value("Bench/value7").toInt();
               });
    text.Add("QSettings",
             [pSettings = make_Settings(Values)]
             {
                 pSettings->sync();
                 return pSettings->value("Bench/text").toString();
             });
#endif
#if defined(QNLIB_BENCH_GLIB)
    number.Add("GLib", [file = Key_File(Values)] { return file.Read("value7"); });
#endif
}

void add_Writes()
{
    Row number("registry: write a number", 1 / 1.2);
    Row text("registry: write a text", 1 / 1.2);
    number.Mark_Against("QSettings", 10);
    number.Add(Row::Ours, [ours = Ours(), n = 0]() mutable { return ours.Write_Number(L"value7", ++n); });
    text.Add(Row::Ours,
             [ours = Ours(), text = Sentence]() mutable
             {
                 ++text[0]; // SQLite does not write what is there already
                 return ours.Write_Text(L"text", text);
             });
#if defined(QNLIB_BENCH_SQLITE)
    number.Add("SQLite",
               [direct = Direct(Values), name = value_Name(7), n = 0]() mutable
               {
                   ++n;
                   return direct.Write(name, &n, 4);
               });
    text.Add("SQLite",
             [direct = Direct(Values), text = Sentence]() mutable
             {
                 ++text[0];
                 return direct.Write("text", text.data(), text.size() * 2);
             });
#endif
#if defined(QNLIB_BENCH_QT)
    number.Add("QSettings",
               [pSettings = make_Settings(Values), n = 0]() mutable
               {
                   pSettings->setValue("Bench/value7", ++n);
                   pSettings->sync();
                   return n;
               });
#endif
#if defined(QNLIB_BENCH_GLIB)
    number.Add("GLib", [file = Key_File(Values), n = 0]() mutable { return file.Write("value7", ++n); });
#endif
}

void add_Lists()
{
    Row again("registry: list 1,000 values, unchanged", 0);
    Row changed("registry: write a value and list 1,000", 0);
    Ours(L"Software\\Many").Fill(Many);
    again.Add(Row::Ours, [ours = Ours(L"Software\\Many")] { return ours.List(); });
    changed.Add(Row::Ours,
                [ours = Ours(L"Software\\Many"), n = 0]() mutable
                {
                    ours.Write_Number(L"value7", ++n);
                    return ours.List();
                });
#if defined(QNLIB_BENCH_SQLITE)
    again.Add("SQLite", [direct = Direct(Many, "many.db")] { return direct.List(); });
    changed.Add("SQLite",
                [direct = Direct(Many, "many.db"), name = value_Name(7), n = 0]() mutable
                {
                    ++n;
                    direct.Write(name, &n, 4);
                    return direct.List();
                });
#endif
#if defined(QNLIB_BENCH_GLIB)
    again.Add("GLib", [file = Key_File(Many)] { return file.List(); });
#endif
}

void add_Deep_Key()
{
    Ours(DeepPath).Fill(1);
    const auto open = []
    {
        HKEY key = nullptr;
        RegOpenKeyExW(HKEY_CURRENT_USER, DeepPath, 0, KEY_READ, &key);
        return RegCloseKey(key);
    };
    Row("registry: open a key of 11 levels, unchanged", 0).Add(Row::Ours, open);
    Row("registry: write a value, open a key of 11 levels", 0)
        .Add(Row::Ours,
             [open, ours = Ours(), n = 0]() mutable
             {
                 ours.Write_Number(L"value3", ++n);
                 return open();
             });
}

} // namespace

void Add_Registry_Rows()
{
    add_Reads();
    add_Writes();
    add_Lists();
    add_Deep_Key();
}
