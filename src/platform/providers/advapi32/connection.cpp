#include "platform/providers/advapi32/connection.h"

#include "platform/providers/advapi32/store_error.h"
#include "platform/providers/advapi32/store_format.h"

#include <algorithm>
#include <chrono>
#include <thread>
#include <utility>

namespace qn_advapi32
{

using namespace qn_platform;

namespace
{

constexpr long long LONGEST_WAIT = 60000; ///< milliseconds for a turn to write

/// In the order of Query.
constexpr const char* QUERIES[] = {
    "BEGIN",
    "BEGIN IMMEDIATE",
    "COMMIT",
    "ROLLBACK",
    "PRAGMA user_version",
    "SELECT id FROM reg_key WHERE parent = ? AND folded = ?",
    "SELECT parent FROM reg_key WHERE id = ?",
    "SELECT 1 FROM reg_key WHERE parent = ? LIMIT 1",
    "SELECT type, length(data), CASE WHEN length(data) <= ?3 THEN data END FROM reg_value "
    "WHERE key = ?1 AND folded = ?2",
    "SELECT folded, name, type, length(data), CASE WHEN length(data) <= ?4 THEN data END FROM reg_value "
    "WHERE key = ?1 ORDER BY folded LIMIT ?3 OFFSET ?2",
    "SELECT folded, name, type, length(data), CASE WHEN length(data) <= ?4 THEN data END FROM reg_value "
    "WHERE key = ?1 AND folded > ?2 ORDER BY folded LIMIT ?3",
    "SELECT folded, name, class FROM reg_key WHERE parent = ?1 ORDER BY folded LIMIT ?3 OFFSET ?2",
    "SELECT folded, name, class FROM reg_key WHERE parent = ?1 AND folded > ?2 ORDER BY folded LIMIT ?3",
    "SELECT max(changed, ifnull((SELECT max(changed) FROM reg_value WHERE key = id), 0)) FROM reg_key "
    "WHERE parent = ? AND folded = ?",
    "INSERT INTO reg_key(parent, folded, name, class, changed) VALUES (?, ?, ?, ?, ?)",
    "DELETE FROM reg_key WHERE id = ?",
    "DELETE FROM reg_value WHERE key = ?",
    "UPDATE reg_key SET changed = ? WHERE id = ?",
    "INSERT INTO reg_value(key, folded, name, type, changed, data) SELECT ?1, ?2, ?3, ?4, ?5, ?6 "
    "WHERE EXISTS (SELECT 1 FROM reg_key WHERE id = ?1) ON CONFLICT DO UPDATE SET "
    "type = excluded.type, changed = excluded.changed, data = excluded.data",
    "DELETE FROM reg_value WHERE key = ? AND folded = ?",
};
static_assert(std::size(QUERIES) == static_cast<std::size_t>(Query::count));

/// What every connection to a file is set to. A commit is not waited for until the disk has it: it survives
/// the death of every process, not that of the machine, which loses the last changes and keeps the store
/// whole.
constexpr char SETTINGS[] = "PRAGMA synchronous = NORMAL; PRAGMA journal_size_limit = 4194304; "
                            "PRAGMA cell_size_check = ON; PRAGMA trusted_schema = OFF";

long long get_Milliseconds()
{
    const auto now = std::chrono::steady_clock::now().time_since_epoch();
    return std::chrono::duration_cast<std::chrono::milliseconds>(now).count();
}

DWORD code_Of_Version(long long version)
{
    return version == FORMAT_VERSION  ? ERROR_SUCCESS
           : version > FORMAT_VERSION ? ERROR_REVISION_MISMATCH
                                      : ERROR_BADDB;
}

} // namespace

DWORD Connection::Get_Code(int result) const
{
    return Code_Of_Sqlite(result, m_pDatabase != nullptr ? sqlite3_system_errno(m_pDatabase) : 0);
}

/// Short sleeps at first, since most changes take microseconds.
int Connection::st_Wait_Turn(void* connection, int turns)
{
    auto* const self = static_cast<Connection*>(connection);
    if (turns == 0)
        self->m_nWaiting_Since = get_Milliseconds();
    else if (get_Milliseconds() - self->m_nWaiting_Since > LONGEST_WAIT)
        return 0;
    std::this_thread::sleep_for(std::chrono::microseconds(std::min(50 * (turns + 1), 2000)));
    return 1;
}

DWORD Connection::execute(const char* text) const
{
    return Get_Code(sqlite3_exec(m_pDatabase, text, nullptr, nullptr, nullptr));
}

DWORD Connection::read_Number(const char* text, long long& number) const
{
    sqlite3_stmt* statement = nullptr;
    int result = sqlite3_prepare_v2(m_pDatabase, text, -1, &statement, nullptr);
    if (result == SQLITE_OK)
        result = sqlite3_step(statement);
    if (result == SQLITE_ROW)
        number = sqlite3_column_int64(statement, 0);
    const DWORD error = Get_Code(result);
    sqlite3_finalize(statement);
    return error;
}

DWORD Connection::open(const char* file, int flags)
{
    const int result = sqlite3_open_v2(file, &m_pDatabase, flags | SQLITE_OPEN_NOMUTEX, nullptr);
    if (result != SQLITE_OK)
        return m_pDatabase != nullptr ? Get_Code(result) : static_cast<DWORD>(ERROR_NOT_ENOUGH_MEMORY);
    sqlite3_extended_result_codes(m_pDatabase, 1);
    sqlite3_busy_handler(m_pDatabase, st_Wait_Turn, this);
    // A corrupt schema can do no harm, and closing moves nothing.
    sqlite3_db_config(m_pDatabase, SQLITE_DBCONFIG_DEFENSIVE, 1, nullptr);
    sqlite3_db_config(m_pDatabase, SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, 1, nullptr);
    int keep_journal = 1;
    sqlite3_file_control(m_pDatabase, "main", SQLITE_FCNTL_PERSIST_WAL, &keep_journal);
    DWORD error = ERROR_SUCCESS;
    Get_Statement(Query::rollback, error); // so that no change stays half done when memory is short later
    return error;
}

/// A file of nothing but zeros in these places is one that nobody has written to, unless it has tables.
DWORD Connection::look_At_Format()
{
    long long application = 0;
    long long version = 0;
    long long tables = 0;
    DWORD error = read_Number("PRAGMA application_id", application);
    if (error == ERROR_SUCCESS)
        error = read_Number("PRAGMA user_version", version);
    if (error == ERROR_SUCCESS)
        error = read_Number("SELECT count(*) FROM sqlite_schema", tables);
    if (error != ERROR_SUCCESS)
        return error;
    m_bStore = application == APPLICATION_ID && tables != 0;
    if (m_bStore)
        return code_Of_Version(version);
    return application == 0 && version == 0 && tables == 0 ? ERROR_SUCCESS : ERROR_NOT_REGISTRY_FILE;
}

DWORD Connection::Check_Format()
{
    Run run(*this, Query::format);
    const bool read = run.Step();
    return run.Get_Error() != ERROR_SUCCESS ? run.Get_Error() : code_Of_Version(read ? run.Get_Number(0) : 0);
}

DWORD Connection::Open(const std::string& file)
{
    Close();
    DWORD error = open(file.c_str(), SQLITE_OPEN_READWRITE);
    if (error == ERROR_SUCCESS)
        error = execute(SETTINGS);
    if (error == ERROR_SUCCESS)
    {
        const Transaction transaction(*this, Query::begin_read); // somebody may just make it a store
        error = transaction.Get_Error();
        if (error == ERROR_SUCCESS)
            error = look_At_Format();
    }
    if (error != ERROR_SUCCESS)
        Close();
    return error;
}

DWORD Connection::fill(const char* seed) const
{
    const std::string rows =
        std::string("INSERT INTO reg_key(id, parent, name, folded, changed) SELECT column1, "
                    "column2, CAST(column3 AS BLOB), CAST(upper(column3) AS BLOB), "
                    "(strftime('%s', 'now') + 11644473600) * 10000000 FROM (VALUES ") +
        seed + ")";
    const std::string marks = "PRAGMA application_id = " + std::to_string(APPLICATION_ID) +
                              "; PRAGMA user_version = " + std::to_string(FORMAT_VERSION);
    DWORD error = execute(marks.c_str());
    if (error == ERROR_SUCCESS)
        error = execute(TABLES);
    return error == ERROR_SUCCESS ? execute(rows.c_str()) : error;
}

DWORD Connection::Open_Memory(const char* seed)
{
    Close();
    DWORD error = open(":memory:", SQLITE_OPEN_READWRITE | SQLITE_OPEN_MEMORY);
    if (error == ERROR_SUCCESS)
        error = execute("PRAGMA encoding = 'UTF-16'");
    if (error == ERROR_SUCCESS)
        error = fill(seed);
    if (error != ERROR_SUCCESS)
        Close();
    m_bStore = error == ERROR_SUCCESS;
    return error;
}

/// SQLite does not wait for others who are about to do the same.
DWORD Connection::switch_To_Journal() const
{
    const long long start = get_Milliseconds();
    for (;;)
    {
        const DWORD error = execute("PRAGMA encoding = 'UTF-16'; PRAGMA journal_mode = WAL");
        if (error != ERROR_BUSY || get_Milliseconds() - start > LONGEST_WAIT)
            return error;
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
}

DWORD Connection::Make_Store(const char* seed)
{
    const DWORD error = switch_To_Journal();
    if (error != ERROR_SUCCESS)
        return error;
    Transaction transaction(*this, Query::begin_write);
    if (transaction.Get_Error() != ERROR_SUCCESS)
        return transaction.Get_Error();
    DWORD made = look_At_Format();
    if (made == ERROR_SUCCESS && !m_bStore)
        made = fill(seed);
    if (made == ERROR_SUCCESS)
        made = transaction.Commit();
    m_bStore = made == ERROR_SUCCESS;
    return made;
}

void Connection::Close()
{
    for (sqlite3_stmt*& statement : m_Statements)
        sqlite3_finalize(std::exchange(statement, nullptr));
    sqlite3_close(std::exchange(m_pDatabase, nullptr));
    m_bStore = false;
}

sqlite3_stmt* Connection::Get_Statement(Query query, DWORD& error)
{
    sqlite3_stmt*& statement = m_Statements[static_cast<std::size_t>(query)];
    if (statement == nullptr)
    {
        const char* const text = QUERIES[static_cast<std::size_t>(query)];
        error = Get_Code(
            sqlite3_prepare_v3(m_pDatabase, text, -1, SQLITE_PREPARE_PERSISTENT, &statement, nullptr));
    }
    return statement;
}

Run& Run::Bind(long long number)
{
    sqlite3_bind_int64(m_pStatement, ++m_nBound, number);
    return *this;
}

Run& Run::Bind(const void* bytes, std::size_t size)
{
    // A null pointer would be NULL, and not the empty bytes.
    sqlite3_bind_blob64(m_pStatement, ++m_nBound, size != 0 ? bytes : "", size, SQLITE_STATIC);
    return *this;
}

bool Run::Step()
{
    if (m_nError != ERROR_SUCCESS)
        return false;
    const int result = sqlite3_step(m_pStatement);
    if (result == SQLITE_ROW)
        return true;
    m_nError = m_Connection.Get_Code(result);
    return false;
}

DWORD Run::Finish()
{
    while (Step())
    {
    }
    return m_nError;
}

Text_View Run::Get_Text(int column) const
{
    const auto* const units = static_cast<const char16_t*>(sqlite3_column_blob(m_pStatement, column));
    return units != nullptr ? Text_View(units, Get_Size(column) / sizeof(char16_t)) : Text_View();
}

Transaction::~Transaction()
{
    if (m_nError == ERROR_SUCCESS && m_Connection.Is_In_Transaction())
        Run(m_Connection, Query::rollback).Finish();
}

} // namespace qn_advapi32
