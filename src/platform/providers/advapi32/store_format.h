#ifndef QNLIB_SRC_PLATFORM_PROVIDERS_ADVAPI32_STORE_FORMAT_H
#define QNLIB_SRC_PLATFORM_PROVIDERS_ADVAPI32_STORE_FORMAT_H

// What a store looks like inside.

namespace qn_advapi32
{

inline constexpr long long APPLICATION_ID = 0x716E5247; ///< "qnRG", by which the file is known
inline constexpr long long FORMAT_VERSION = 1;

/// Names are 16-bit text in the machine's order of bytes, in BLOBs, since they may hold unpaired surrogates;
/// `folded` is the name that matches. A key's number is never used again. `changed` counts 100 nanoseconds
/// from the year 1601. The view is for people.
inline constexpr char TABLES[] =
    "CREATE TABLE reg_key("
    "id INTEGER PRIMARY KEY AUTOINCREMENT, parent INTEGER NOT NULL, folded BLOB NOT NULL, name BLOB NOT "
    "NULL, "
    "class BLOB, changed INTEGER NOT NULL, UNIQUE(parent, folded));"
    "CREATE TABLE reg_value("
    "key INTEGER NOT NULL, folded BLOB NOT NULL, name BLOB NOT NULL, type INTEGER NOT NULL, "
    "changed INTEGER NOT NULL, data BLOB NOT NULL, PRIMARY KEY(key, folded)) WITHOUT ROWID;"
    "CREATE VIEW registry AS WITH RECURSIVE place(id, path) AS (SELECT 1, '' UNION ALL "
    "SELECT reg_key.id, place.path || '\\' || CAST(reg_key.name AS TEXT) FROM place JOIN reg_key ON parent = "
    "place.id) "
    "SELECT path, CAST(name AS TEXT) AS name, type, CASE WHEN type IN (1, 2) THEN CAST(data AS TEXT) "
    "ELSE hex(data) END AS data FROM place LEFT JOIN reg_value ON key = place.id ORDER BY path, name;"
    "INSERT INTO reg_key(id, parent, folded, name, changed) VALUES (1, 0, x'', x'', 0);";

/// The keys with which a store begins, as rows of number, parent and name.
inline constexpr char USER_SEED[] = "(2, 1, 'Software'), (3, 2, 'Classes')";
inline constexpr char MACHINE_SEED[] =
    "(2, 1, 'Software'), (3, 2, 'Classes'), (4, 1, 'System'), (5, 4, 'CurrentControlSet'), "
    "(6, 5, 'Hardware Profiles'), (7, 6, 'Current')";

} // namespace qn_advapi32

#endif
