#ifndef QNLIB_STRINGS_STRING_LISTS_H
#define QNLIB_STRINGS_STRING_LISTS_H

#include "strings/lib_string.h"

/// A finished list of strings, as Lib_Split_String hands it out. It never changes, so several threads may
/// read it. Its receiver deletes it.
class LIB_API Lib_Strings
{
public:
    Lib_Strings() = default;
    Lib_Strings(const Lib_Strings&) {}
    virtual ~Lib_Strings();
    Lib_Strings& operator=(const Lib_Strings&) { return *this; }

    /// The string at an index; null for an empty one. The pointer is good as long as the list lives. An
    /// index at or past the count throws std::out_of_range.
    virtual const wchar_t* Get_At(unsigned long long nIndex) = 0;

    virtual unsigned long long Get_Num_Elements() const = 0;
};

/// A finished table of keys and values, as Lib_Parse_String hands it out, in the order of the text and with
/// its duplicates. It never changes, so several threads may read it. Its receiver deletes it.
class LIB_API Lib_Strings_Table
{
public:
    Lib_Strings_Table() = default;
    Lib_Strings_Table(const Lib_Strings_Table&) {}
    virtual ~Lib_Strings_Table();
    Lib_Strings_Table& operator=(const Lib_Strings_Table&) { return *this; }

    /// The pair at an index; false, with both outputs untouched, for an index at or past the count.
    virtual bool Get_Pair(unsigned long long nIndex, Lib_String& strKey, Lib_String& strValue) = 0;

    /// The value of the first pair whose key matches without regard to case; false, with the output
    /// untouched, when there is none. A null key counts as empty.
    virtual bool Find_Value(const wchar_t* pKey, Lib_String& strValue) = 0;

    virtual unsigned long long Get_Num_Elements() const = 0;
};

/// Cuts a text at a separator. `pList` receives a new list that the caller deletes, and the result is its
/// count, at least 1; a null text gives null and 0. Only the first string can be empty: further separators
/// in a row, and one at the end, produce nothing. Nothing is trimmed. When std::bad_alloc (or
/// std::length_error, for more strings than a vector holds) leaves, pList holds the list as far as it came.
LIB_API unsigned long long Lib_Split_String(const wchar_t* pText, wchar_t chSeparator, Lib_Strings*& pList);

/// Reads `key=value key=value`. `pTable` receives a new table that the caller deletes, and the result is
/// its count; when there is no pair the result is 0 and pTable isn't written. The first key is all
/// that stands before the first `=`; a later one is what follows the last blank (U+0020) before its `=`, and
/// keys are trimmed. A value reaches to that blank and isn't trimmed, so it may contain blanks but no `=`.
/// Where there is no blank, or nothing before it, the key in progress is taken back, and all of its value
/// becomes the next key. std::bad_alloc and std::length_error leave pTable unwritten.
LIB_API unsigned long long Lib_Parse_String(const wchar_t* pText, Lib_Strings_Table*& pTable);

#endif
