#ifndef QNLIB_SRC_PLATFORM_PROVIDERS_ADVAPI32_CONNECTION_H
#define QNLIB_SRC_PLATFORM_PROVIDERS_ADVAPI32_CONNECTION_H

#include "platform/providers/advapi32/registry_name.h"

#include <array>
#include <string>

#include <sqlite3.h>

// SQLite as a store of the registry uses it: a connection with its prepared statements. One thread at a time.

namespace qn_advapi32
{

using qn_platform::BYTE;

/// A key's number in its store. Numbers are never used again, so that a handle to a deleted key stays one.
using Id = long long;

inline constexpr Id NO_KEY = 0;
inline constexpr Id ROOT_KEY = 1;

enum class Query : unsigned int
{
    begin_read,
    begin_write,
    commit,
    rollback,
    format,        ///< version
    find_key,      ///< parent, folded: id
    has_key,       ///< id: parent
    has_subkeys,   ///< parent: 1
    find_value,    ///< key, folded, most: type, size, data if it is no larger
    values_from,   ///< key, offset, count, most: folded, name, type, size, data
    values_behind, ///< key, folded, count, most: the same
    keys_from,     ///< parent, offset, count: folded, name, class
    keys_behind,   ///< parent, folded, count: the same
    key_changed,   ///< parent, folded: when
    add_key,       ///< parent, folded, name, class, when
    remove_key,    ///< id
    remove_values, ///< key
    touch_key,     ///< when, id
    set_value,     ///< key, folded, name, type, when, data: nothing changes without the key
    remove_value,  ///< key, folded
    count          ///< of queries
};

class Connection
{
public:
    Connection() = default;
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;
    ~Connection() { Close(); }

    /// Opens a file that is there, for writing as well if it may be, and looks at its format: 1009, 1017,
    /// 1306. On failure the connection is closed.
    DWORD Open(const std::string& file);

    /// Opens a store in memory that begins with `seed`.
    DWORD Open_Memory(const char* seed);

    /// Makes an empty file a store that begins with `seed`, unless another process does it first.
    DWORD Make_Store(const char* seed);

    /// Leaves the file as it is: nothing is moved between it and its journal.
    void Close();

    bool Is_Open() const { return m_pDatabase != nullptr; }

    /// Whether the format is still that of this version, which another program may have changed: 1306, 1009.
    /// Within a transaction it stays so until the end of that.
    DWORD Check_Format();

    /// False for an empty file, which somebody is about to make a store.
    bool Has_Store() const { return m_bStore; }

    bool Is_Read_Only() const { return sqlite3_db_readonly(m_pDatabase, "main") != 0; }
    bool Is_In_Transaction() const { return sqlite3_get_autocommit(m_pDatabase) == 0; }
    int Get_Changes() const { return sqlite3_changes(m_pDatabase); }
    Id Get_Last_Id() const { return sqlite3_last_insert_rowid(m_pDatabase); }

    /// The statement, prepared at its first use. Null on failure, with the code.
    sqlite3_stmt* Get_Statement(Query query, DWORD& error);

    DWORD Get_Code(int result) const;

    sqlite3* Get_Database() const { return m_pDatabase; }

private:
    static int st_Wait_Turn(void* connection, int turns);

    DWORD open(const char* file, int flags);
    DWORD execute(const char* text) const;
    DWORD read_Number(const char* text, long long& number) const;
    DWORD look_At_Format();
    DWORD switch_To_Journal() const;
    DWORD fill(const char* seed) const;

    sqlite3* m_pDatabase = nullptr;
    bool m_bStore = false;
    std::array<sqlite3_stmt*, static_cast<std::size_t>(Query::count)> m_Statements{};
    long long m_nWaiting_Since = 0; ///< milliseconds of a steady clock
};

/// One run of a statement, which ends with the object. Parameters are bound in their order; what they point
/// to must last until then.
class Run
{
public:
    Run(Connection& connection, Query query)
        : m_Connection(connection), m_pStatement(connection.Get_Statement(query, m_nError))
    {
    }
    Run(const Run&) = delete;
    Run& operator=(const Run&) = delete;
    ~Run() { sqlite3_reset(m_pStatement); }

    Run& Bind(long long number);
    Run& Bind(Text_View text) { return Bind(text.data(), text.size() * sizeof(char16_t)); }
    Run& Bind(const void* bytes, std::size_t size);

    /// True for a row; false at the end and on failure.
    bool Step();

    /// To the end; the answer is the code.
    DWORD Finish();

    DWORD Get_Error() const { return m_nError; }

    long long Get_Number(int column) const { return sqlite3_column_int64(m_pStatement, column); }
    Text_View Get_Text(int column) const;
    bool Is_Null(int column) const { return sqlite3_column_type(m_pStatement, column) == SQLITE_NULL; }

    /// The bytes of a column; valid until the next step. Null for NULL, for none, and when memory is short.
    const BYTE* Get_Bytes(int column) const
    {
        return static_cast<const BYTE*>(sqlite3_column_blob(m_pStatement, column));
    }
    std::size_t Get_Size(int column) const
    {
        return static_cast<std::size_t>(sqlite3_column_bytes(m_pStatement, column));
    }

private:
    Connection& m_Connection;
    DWORD m_nError = 0;
    sqlite3_stmt* m_pStatement;
    int m_nBound = 0;
};

/// A transaction that is taken back unless it is committed.
class Transaction
{
public:
    /// One that writes waits for its turn here.
    Transaction(Connection& connection, Query begin)
        : m_Connection(connection), m_nError(Run(connection, begin).Finish())
    {
    }
    Transaction(const Transaction&) = delete;
    Transaction& operator=(const Transaction&) = delete;
    ~Transaction();

    DWORD Get_Error() const { return m_nError; }
    DWORD Commit() { return Run(m_Connection, Query::commit).Finish(); }

private:
    Connection& m_Connection;
    DWORD m_nError;
};

} // namespace qn_advapi32

#endif
