#ifndef QNLIB_TEST_REGISTRY_STORES_H
#define QNLIB_TEST_REGISTRY_STORES_H

// Looking at stores of the registry from outside, by SQLite itself. For the programs that are linked with it.

#include "lib_platform.h"

#include <algorithm>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include <sqlite3.h>

namespace test_support
{

/// Runs SQL on a database; the answer is the first column of the last row, or the fault.
inline std::string Query_Store(const std::string& file, const char* text)
{
    sqlite3* database = nullptr;
    std::string answer;
    sqlite3_open(file.c_str(), &database);
    const auto keep = [](void* target, int, char** columns, char**)
    {
        *static_cast<std::string*>(target) = *columns != nullptr ? *columns : "";
        return 0;
    };
    if (sqlite3_exec(database, text, keep, &answer, nullptr) != SQLITE_OK)
        answer = sqlite3_errmsg(database);
    sqlite3_close(database);
    return answer;
}

inline std::string Read_File(const std::string& file)
{
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

inline void Write_File(const std::string& file, const std::string& bytes)
{
    std::ofstream(file, std::ios::binary).write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
}

/// A value that tells whether it is whole: every byte is the same, and tells the size.
inline std::vector<BYTE> Make_Whole(BYTE byte) { return std::vector<BYTE>(byte * 100u, byte); }

inline bool Is_Whole(const std::vector<BYTE>& data)
{
    return data.empty() ||
           (data.size() == data[0] * 100u &&
            std::all_of(data.begin(), data.end(), [&](BYTE byte) { return byte == data[0]; }));
}

/// Reads every value of a key. False if one is not whole or a call fails.
inline bool Reads_Whole_Values(HKEY key)
{
    for (DWORD i = 0;; ++i)
    {
        wchar_t name[20];
        DWORD length = 20;
        std::vector<BYTE> data(25500);
        DWORD size = 25500;
        const LSTATUS code = RegEnumValueW(key, i, name, &length, nullptr, nullptr, data.data(), &size);
        if (code != 0)
            return code == static_cast<LSTATUS>(ERROR_NO_MORE_ITEMS);
        data.resize(size);
        if (!Is_Whole(data))
            return false;
    }
}

} // namespace test_support

#endif
