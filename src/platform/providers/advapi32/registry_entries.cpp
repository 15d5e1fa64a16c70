#include "platform/modules.h"
#include "platform/providers/advapi32/open_keys.h"
#include "platform/registry.h"

#include <algorithm>
#include <new>

// The entry points of the provider, as include/platform/registry.h tells them.

using namespace qn_platform;
using namespace qn_advapi32;

namespace
{

constexpr DWORD MOST_VALUE = 64u << 20;
constexpr int MOST_ROUNDS = 100; ///< for an entry that goes while it is looked at

/// Runs an entry's work; its answer is the code.
template <class Work>
LSTATUS guard(Work work)
{
    try
    {
        Stores::Get(); // from here on a forked child finds all in order
        return static_cast<LSTATUS>(work());
    }
    catch (const std::bad_alloc&)
    {
        return static_cast<LSTATUS>(ERROR_NOT_ENOUGH_MEMORY);
    }
}

DWORD open_Handle(Open_Key& key, REGSAM access, PHKEY result)
{
    DWORD error = Grant(access, key);
    if (error == ERROR_SUCCESS)
        *result = Open_Key_Handle(key, error);
    return error;
}

DWORD find_Base(HKEY handle, LPCWSTR text, Open_Key& base, Name& path)
{
    DWORD error = Find_Open_Key(handle, base);
    if (error == ERROR_SUCCESS)
        error = Read_Path(text, path);
    if (error == ERROR_SUCCESS)
        Enter_User(base, path);
    return error;
}

DWORD find_By_Path(HKEY handle, LPCWSTR text, Open_Key& base, Name& path, Open_Key& found)
{
    const DWORD error = find_Base(handle, text, base, path);
    if (error != ERROR_SUCCESS)
        return error;
    found = base;
    return Find_Below(found, path);
}

// Between a look-up and the work, others may delete what was found; then it is looked for again.

/// Works on a handle's key; of two, only the one that is left is worked on then.
template <class Work>
DWORD work_On(HKEY handle, REGSAM access, Work work)
{
    DWORD error = ERROR_KEY_DELETED;
    for (int round = 0; round < MOST_ROUNDS && error == ERROR_KEY_DELETED; ++round)
    {
        Open_Key key;
        const DWORD found = Find_Open_Key_For(handle, access, key);
        if (found != ERROR_SUCCESS)
            return found;
        error = work(key);
        if (!key.Is_Two())
            return error;
    }
    return error;
}

/// Works on the key at a path: `work(base, path, key)`.
template <class Work>
DWORD work_By_Path(HKEY handle, LPCWSTR text, Work work)
{
    DWORD error = ERROR_KEY_DELETED;
    for (int round = 0; round < MOST_ROUNDS && error == ERROR_KEY_DELETED; ++round)
    {
        Open_Key base;
        Open_Key key;
        Name path;
        const DWORD found = find_By_Path(handle, text, base, path, key);
        if (found != ERROR_SUCCESS)
            return found;
        error = work(base, path, key);
    }
    return error;
}

DWORD check_Creation(DWORD reserved, DWORD options, REGSAM access, LPSECURITY_ATTRIBUTES attributes)
{
    constexpr DWORD KNOWN =
        REG_OPTION_VOLATILE | REG_OPTION_CREATE_LINK | REG_OPTION_BACKUP_RESTORE | REG_OPTION_OPEN_LINK;
    if (reserved != 0 || (options & ~KNOWN) != 0 || !Are_Rights(access))
        return ERROR_INVALID_PARAMETER;
    const bool secured = attributes != nullptr && attributes->lpSecurityDescriptor != nullptr;
    return (options & ~REG_OPTION_OPEN_LINK) != 0 || secured ? ERROR_NOT_SUPPORTED : ERROR_SUCCESS;
}

/// From a key to the last one on the way that is there, in one store or in both; `path` is what is missing.
DWORD go_To_Parent(Open_Key& key, Name& path)
{
    for (;;)
    {
        Path_Walk names(path);
        names.Next();
        Open_Key next = key;
        const DWORD error = Find_Below(next, {Text(names.Get_Plain()), Text(names.Get_Folded())});
        if (error != ERROR_SUCCESS || names.Is_Last())
            return error == ERROR_FILE_NOT_FOUND ? static_cast<DWORD>(ERROR_SUCCESS) : error;
        key = next;
        path = names.Get_Rest();
    }
}

/// A key is made beside its parent: in the machine's store if that has it, else in the user's.
DWORD create(Open_Key base, Name path, const Text& class_name, Open_Key& made, bool& created)
{
    if (std::count(path.plain.begin(), path.plain.end(), SEPARATOR) >= static_cast<long>(MOST_DEPTH))
        return ERROR_FILENAME_EXCED_RANGE;
    if (base.second.Is_There())
    {
        const DWORD error = go_To_Parent(base, path);
        if (error != ERROR_SUCCESS)
            return error;
    }
    made = base;
    Key_Place& place = base.second.Is_There() ? made.second : made.first;
    (base.second.Is_There() ? made.first : made.second) = {};
    return place.store->writer.Create_Key(place.id, path, class_name, place.id, created);
}

DWORD open_Or_Create(HKEY handle, LPCWSTR text, LPCWSTR class_text, Open_Key& key, bool& created)
{
    Name class_name;
    DWORD error = Read_Name(class_text, MOST_CLASS_NAME, class_name);
    for (int round = 0; round < MOST_ROUNDS && (error == ERROR_SUCCESS || error == ERROR_KEY_DELETED);
         ++round)
    {
        Open_Key base;
        Name path;
        const DWORD found = find_By_Path(handle, text, base, path, key);
        if (found != ERROR_FILE_NOT_FOUND)
            return found;
        error = create(base, path, class_name.plain, key, created);
        if (error == ERROR_SUCCESS)
            return error;
    }
    return error;
}

DWORD read_Value(const Open_Key& key, const Name& name, const Value_Target& target)
{
    DWORD error = ERROR_FILE_NOT_FOUND;
    for (const Key_Place& place : {key.first, key.second})
    {
        if (place.Is_There() && error == ERROR_FILE_NOT_FOUND)
            error = place.store->reader.Read_Value(place.id, name, target);
    }
    return error;
}

/// What a list is shown to that wants a copy of the entry.
auto copy_To(Listed& entry)
{
    return [&entry](const Listed& found)
    {
        entry = found;
        return static_cast<DWORD>(ERROR_SUCCESS);
    };
}

DWORD copy_Listed(const Key_Place& place, List_Kind kind, DWORD index, Listed& entry)
{
    return place.store->reader.Read_List(place.id, kind, index, copy_To(entry));
}

/// The two lists of names of a key that is two keys, as one: both in order, those of both only once.
DWORD read_Both_Lists(const Open_Key& key, List_Kind kind, DWORD index, Listed& entry)
{
    DWORD first_index = 0;
    DWORD second_index = 0;
    for (;;)
    {
        Listed other;
        const DWORD first = copy_Listed(key.first, kind, first_index, entry);
        const DWORD second = copy_Listed(key.second, kind, second_index, other);
        const bool has_first = first == ERROR_SUCCESS;
        const bool has_second = second == ERROR_SUCCESS;
        for (const DWORD error : {first, second})
        {
            if (error != ERROR_SUCCESS && error != ERROR_NO_MORE_ITEMS)
                return error;
        }
        if (!has_first && !has_second)
            return ERROR_NO_MORE_ITEMS;
        const int order = has_first && has_second ? Compare_Stored(entry.Get_Folded(), other.Get_Folded())
                          : has_first             ? -1
                                                  : 1;
        if (order > 0)
            entry = std::move(other);
        if (index-- == 0)
            return ERROR_SUCCESS;
        first_index += order <= 0 ? 1 : 0;
        second_index += order >= 0 ? 1 : 0;
    }
}

/// Shows `use` an entry of the key's list; it may not ask for more meanwhile.
template <class Use>
DWORD read_List(const Open_Key& key, List_Kind kind, DWORD index, Use use)
{
    if (!key.Is_Two())
    {
        const Key_Place& place = Get_Written(key);
        return place.store->reader.Read_List(place.id, kind, index, use);
    }
    Listed entry;
    const DWORD error = read_Both_Lists(key, kind, index, entry);
    return error == ERROR_SUCCESS ? use(entry) : error;
}

/// False, with nothing written, when there is no room for the text and its NUL.
bool copy_Text(Text_View text, LPWSTR target, LPDWORD length)
{
    if (text.size() >= *length)
        return false;
    *std::copy(text.begin(), text.end(), target) = 0;
    *length = static_cast<DWORD>(text.size());
    return true;
}

DWORD enumerate_Value(const Open_Key& key, DWORD index, LPWSTR name, LPDWORD name_length,
                      const Value_Target& target)
{
    for (int round = 0; round < MOST_ROUNDS; ++round)
    {
        Name large; // a value that is not listed with its data
        bool is_large = false;
        const auto use = [&](const Listed& entry)
        {
            const bool room = entry.Get_Name().size() < *name_length;
            is_large = room && !entry.Has_Data() && target.m_pData != nullptr;
            if (is_large)
                large = {Text(entry.Get_Name()), Text(entry.Get_Folded())};
            if (!room)
                Value_Target{target.m_pType, nullptr, target.m_pSize}.Give(entry.Get_Type(), entry.Get_Size(),
                                                                           nullptr);
            if (!room || is_large)
                return static_cast<DWORD>(ERROR_MORE_DATA);
            copy_Text(entry.Get_Name(), name, name_length);
            return target.Give(entry.Get_Type(), entry.Get_Size(), entry.Get_Data());
        };
        DWORD error = read_List(key, List_Kind::values, index, use);
        if (!is_large)
            return error;
        error = read_Value(key, large, target);
        if (error == ERROR_SUCCESS || error == ERROR_MORE_DATA)
            copy_Text(large.plain, name, name_length);
        if (error != ERROR_FILE_NOT_FOUND) // it may have gone meanwhile
            return error;
    }
    return ERROR_BADDB; // what is listed is not there
}

DWORD give_Time(const Open_Key& key, const Listed& entry, LPFILETIME written)
{
    long long changed = 0;
    DWORD error = ERROR_FILE_NOT_FOUND;
    for (const Key_Place& place : {key.first, key.second})
    {
        if (place.Is_There() && error == ERROR_FILE_NOT_FOUND)
            error = place.store->reader.Read_Time(place.id, entry.Get_Folded(), changed);
    }
    if (error == ERROR_SUCCESS)
        *written = {static_cast<DWORD>(changed), static_cast<DWORD>(changed >> 32)};
    return error;
}

/// The entry at a place of the list of keys, and, if asked for, when it was last changed.
DWORD read_Key(const Open_Key& key, DWORD index, Listed& entry, LPFILETIME written)
{
    for (int round = 0; round < MOST_ROUNDS; ++round)
    {
        DWORD error = read_List(key, List_Kind::keys, index, copy_To(entry));
        if (error == ERROR_SUCCESS && written != nullptr)
            error = give_Time(key, entry, written);
        if (error != ERROR_FILE_NOT_FOUND)
            return error;
    }
    return ERROR_BADDB;
}

DWORD enumerate_Key(const Open_Key& key, DWORD index, LPWSTR name, LPDWORD name_length, LPWSTR class_name,
                    LPDWORD class_length, LPFILETIME written)
{
    Listed entry;
    FILETIME time{};
    const DWORD error = read_Key(key, index, entry, written != nullptr ? &time : nullptr);
    if (error != ERROR_SUCCESS)
        return error;
    if (entry.Get_Name().size() >= *name_length ||
        (class_name != nullptr && entry.Get_Class().size() >= *class_length))
        return ERROR_MORE_DATA;
    copy_Text(entry.Get_Name(), name, name_length);
    if (class_name != nullptr)
        copy_Text(entry.Get_Class(), class_name, class_length);
    else if (class_length != nullptr)
        *class_length = static_cast<DWORD>(entry.Get_Class().size());
    if (written != nullptr)
        *written = time;
    return ERROR_SUCCESS;
}

} // namespace

#pragma GCC visibility push(default)
extern "C"
{

    LSTATUS RegOpenKeyExW(HKEY handle, LPCWSTR text, DWORD options, REGSAM access, PHKEY result)
    {
        if (result == nullptr)
            return ERROR_INVALID_PARAMETER;
        *result = nullptr;
        if ((options & ~REG_OPTION_OPEN_LINK) != 0)
            return ERROR_INVALID_PARAMETER;
        return guard(
            [&]
            {
                Open_Key base;
                Open_Key key;
                Name path;
                const DWORD error = find_By_Path(handle, text, base, path, key);
                return error == ERROR_SUCCESS ? open_Handle(key, access, result) : error;
            });
    }

    LSTATUS RegCreateKeyExW(HKEY handle, LPCWSTR text, DWORD reserved, LPWSTR class_text, DWORD options,
                            REGSAM access, LPSECURITY_ATTRIBUTES attributes, PHKEY result,
                            LPDWORD disposition)
    {
        if (result == nullptr)
            return ERROR_INVALID_PARAMETER;
        *result = nullptr;
        return guard(
            [&]
            {
                Open_Key key;
                bool created = false;
                DWORD error = check_Creation(reserved, options, access, attributes);
                if (error == ERROR_SUCCESS)
                    error = open_Or_Create(handle, text, class_text, key, created);
                if (error == ERROR_SUCCESS)
                    error = open_Handle(key, access, result);
                if (error == ERROR_SUCCESS && disposition != nullptr)
                    *disposition = created ? REG_CREATED_NEW_KEY : REG_OPENED_EXISTING_KEY;
                return error;
            });
    }

    LSTATUS RegCloseKey(HKEY handle)
    {
        return guard(
            [&] {
                return Is_Predefined(handle) || Close_Key_Handle(handle) ? ERROR_SUCCESS
                                                                         : ERROR_INVALID_HANDLE;
            });
    }

    LSTATUS RegQueryValueExW(HKEY handle, LPCWSTR text, LPDWORD reserved, LPDWORD type, LPBYTE data,
                             LPDWORD size)
    {
        if (reserved != nullptr || (data != nullptr && size == nullptr))
            return ERROR_INVALID_PARAMETER;
        return guard(
            [&]
            {
                const auto read = [&](const Open_Key& key)
                {
                    Name name;
                    const bool known = Read_Name(text, MOST_VALUE_NAME, name) == ERROR_SUCCESS;
                    return known ? read_Value(key, name, {type, data, size})
                                 : static_cast<DWORD>(ERROR_FILE_NOT_FOUND);
                };
                return work_On(handle, KEY_QUERY_VALUE, read);
            });
    }

    LSTATUS RegEnumValueW(HKEY handle, DWORD index, LPWSTR name, LPDWORD name_length, LPDWORD reserved,
                          LPDWORD type, LPBYTE data, LPDWORD size)
    {
        if (name == nullptr || name_length == nullptr || reserved != nullptr ||
            (data != nullptr && size == nullptr))
            return ERROR_INVALID_PARAMETER;
        return guard(
            [&]
            {
                const auto enumerate = [&](const Open_Key& key) {
                    return enumerate_Value(key, index, name, name_length, {type, data, size});
                };
                return work_On(handle, KEY_QUERY_VALUE, enumerate);
            });
    }

    LSTATUS RegSetValueExW(HKEY handle, LPCWSTR text, DWORD reserved, DWORD type, const BYTE* data,
                           DWORD size)
    {
        if (reserved != 0)
            return ERROR_INVALID_PARAMETER;
        if (data == nullptr && size != 0)
            return ERROR_NOACCESS;
        return guard(
            [&]
            {
                const auto set = [&](const Open_Key& key)
                {
                    Name name;
                    DWORD error = Read_Name(text, MOST_VALUE_NAME, name);
                    if (error == ERROR_SUCCESS && size > MOST_VALUE)
                        error = ERROR_NO_SYSTEM_RESOURCES;
                    const Key_Place& place = Get_Written(key);
                    return error == ERROR_SUCCESS
                               ? place.store->writer.Set_Value(place.id, name, type, data, size)
                               : error;
                };
                return work_On(handle, KEY_SET_VALUE, set);
            });
    }

    LSTATUS RegDeleteKeyValueW(HKEY handle, LPCWSTR text, LPCWSTR name_text)
    {
        return guard(
            [&]
            {
                const auto remove = [&](const Open_Key& base, const Name& path, const Open_Key& key)
                {
                    Name name;
                    if (path.folded.empty() && (base.access & KEY_SET_VALUE) == 0)
                        return static_cast<DWORD>(ERROR_ACCESS_DENIED);
                    if (Read_Name(name_text, MOST_VALUE_NAME, name) != ERROR_SUCCESS)
                        return static_cast<DWORD>(ERROR_FILE_NOT_FOUND);
                    const Key_Place& place = Get_Written(key);
                    return place.store->writer.Delete_Value(place.id, name);
                };
                return work_By_Path(handle, text, remove);
            });
    }

    LSTATUS RegEnumKeyExW(HKEY handle, DWORD index, LPWSTR name, LPDWORD name_length, LPDWORD reserved,
                          LPWSTR class_name, LPDWORD class_length, LPFILETIME written)
    {
        if (name_length == nullptr || reserved != nullptr || (name == nullptr && *name_length != 0) ||
            (class_name != nullptr && class_length == nullptr))
            return ERROR_INVALID_PARAMETER;
        return guard(
            [&]
            {
                const auto enumerate = [&](const Open_Key& key)
                { return enumerate_Key(key, index, name, name_length, class_name, class_length, written); };
                return work_On(handle, KEY_ENUMERATE_SUB_KEYS, enumerate);
            });
    }

    LSTATUS RegDeleteKeyW(HKEY handle, LPCWSTR text)
    {
        if (text == nullptr)
            return ERROR_INVALID_PARAMETER;
        return guard(
            [&]
            {
                const auto remove = [&](const Open_Key&, const Name& path, const Open_Key& key)
                {
                    const Key_Place& place = Get_Written(key);
                    return path.folded.empty() && Is_Predefined(handle)
                               ? static_cast<DWORD>(ERROR_ACCESS_DENIED)
                               : place.store->writer.Delete_Key(place.id);
                };
                return work_By_Path(handle, text, remove);
            });
    }

} // extern "C"
#pragma GCC visibility pop
