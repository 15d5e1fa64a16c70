#include "platform/providers/advapi32/open_keys.h"

namespace qn_advapi32
{

using namespace qn_platform;

namespace
{

constexpr REGSAM READING = KEY_QUERY_VALUE | KEY_ENUMERATE_SUB_KEYS | KEY_NOTIFY | READ_CONTROL | SYNCHRONIZE;
constexpr REGSAM WRITING =
    KEY_SET_VALUE | KEY_CREATE_SUB_KEY | KEY_CREATE_LINK | DELETE | WRITE_DAC | WRITE_OWNER;
constexpr REGSAM IGNORED = KEY_WOW64_32KEY | KEY_WOW64_64KEY;

constexpr LPCWSTR CLASSES = L"Software\\Classes";
constexpr LPCWSTR CURRENT_CONFIG = L"System\\CurrentControlSet\\Hardware Profiles\\Current";

REGSAM map_Generic(REGSAM wanted)
{
    REGSAM access = wanted & ~(GENERIC_READ | GENERIC_WRITE | GENERIC_EXECUTE | GENERIC_ALL | IGNORED);
    if ((wanted & (GENERIC_READ | GENERIC_EXECUTE)) != 0)
        access |= KEY_READ;
    if ((wanted & GENERIC_WRITE) != 0)
        access |= KEY_WRITE;
    if ((wanted & GENERIC_ALL) != 0)
        access |= KEY_ALL_ACCESS;
    return access;
}

/// NO_KEY where there is none.
DWORD find_Place(Key_Place& place, const Name& path)
{
    const DWORD error = place.store->reader.Find_Key(place.id, path, place.id);
    if (error != ERROR_SUCCESS)
        place.id = NO_KEY;
    return error;
}

/// Of one of two stores, that it shows no such key: a user may have no home, or one that is not his.
bool is_Missing(DWORD error)
{
    return error == ERROR_FILE_NOT_FOUND || error == ERROR_KEY_DELETED || error == ERROR_PATH_NOT_FOUND ||
           error == ERROR_ACCESS_DENIED;
}

DWORD find_Root(LPCWSTR path, Open_Key& key)
{
    Name name;
    const DWORD error = Read_Path(path, name);
    return error == ERROR_SUCCESS ? Find_Below(key, name) : error;
}

} // namespace

bool Is_Predefined(HKEY handle)
{
    return handle == HKEY_CLASSES_ROOT || handle == HKEY_CURRENT_USER || handle == HKEY_LOCAL_MACHINE ||
           handle == HKEY_USERS || handle == HKEY_CURRENT_CONFIG;
}

DWORD Find_Open_Key(HKEY handle, Open_Key& key)
{
    if (!Is_Predefined(handle))
    {
        if (!Find_Key_Handle(handle, key))
            return ERROR_INVALID_HANDLE;
        return key.Is_Two() ? Find_Below(key, {}) : static_cast<DWORD>(ERROR_SUCCESS);
    }
    Stores& stores = Stores::Get();
    const Key_Place user{&stores.user, ROOT_KEY};
    const Key_Place machine{&stores.machine, ROOT_KEY};
    key.access = KEY_ALL_ACCESS;
    key.first = handle == HKEY_USERS ? Key_Place{&stores.users, ROOT_KEY}
                : handle == HKEY_CURRENT_USER || handle == HKEY_CLASSES_ROOT ? user
                                                                             : machine;
    if (handle == HKEY_CURRENT_CONFIG)
        return find_Root(CURRENT_CONFIG, key);
    if (handle != HKEY_CLASSES_ROOT)
        return ERROR_SUCCESS;
    key.second = machine;
    return find_Root(CLASSES, key);
}

DWORD Find_Open_Key_For(HKEY handle, REGSAM access, Open_Key& key)
{
    const DWORD error = Find_Open_Key(handle, key);
    if (error != ERROR_SUCCESS)
        return error;
    return (key.access & access) == access ? ERROR_SUCCESS : ERROR_ACCESS_DENIED;
}

void Enter_User(Open_Key& base, Name& path)
{
    Stores& stores = Stores::Get();
    Path_Walk names(path);
    if (base.first.store != &stores.users || base.first.id != ROOT_KEY || !names.Next() ||
        names.Get_Folded() != stores.sid)
        return;
    base.first = {&stores.user, ROOT_KEY};
    path = names.Get_Rest();
}

/// One that is missing doesn't matter while the other one is there.
DWORD Find_Below(Open_Key& key, const Name& path)
{
    if (!key.Is_Two())
        return find_Place(key.first.Is_There() ? key.first : key.second, path);
    const DWORD first = find_Place(key.first, path);
    if (first != ERROR_SUCCESS && !is_Missing(first))
        return first;
    const DWORD second = find_Place(key.second, path);
    const bool suffices = first == ERROR_SUCCESS
                              ? is_Missing(second)
                              : first == ERROR_FILE_NOT_FOUND && second == ERROR_KEY_DELETED;
    return suffices ? first : second;
}

bool Are_Rights(REGSAM wanted)
{
    return (map_Generic(wanted & ~MAXIMUM_ALLOWED) & ~(READING | WRITING)) == 0;
}

DWORD Grant(REGSAM wanted, Open_Key& key)
{
    const bool most = (wanted & MAXIMUM_ALLOWED) != 0;
    const REGSAM access = map_Generic(wanted & ~MAXIMUM_ALLOWED);
    if (!Are_Rights(wanted))
        return ERROR_INVALID_PARAMETER;
    key.access = access | (most ? READING : 0);
    if (!most && (access & WRITING) == 0)
        return ERROR_SUCCESS;
    const DWORD writable = Get_Written(key).store->writer.Check_Writable();
    if (most && writable == ERROR_SUCCESS)
        key.access |= WRITING;
    return (access & WRITING) != 0 ? writable : static_cast<DWORD>(ERROR_SUCCESS);
}

} // namespace qn_advapi32
