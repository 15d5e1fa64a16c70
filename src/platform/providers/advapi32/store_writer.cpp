#include "platform/providers/advapi32/store_writer.h"

#include <ctime>

namespace qn_advapi32
{

using namespace qn_platform;

namespace
{

/// Hundreds of nanoseconds from the year 1601.
long long get_Now()
{
    std::timespec now{};
    std::timespec_get(&now, TIME_UTC);
    return (now.tv_sec + 11644473600LL) * 10000000 + now.tv_nsec / 100;
}

} // namespace

DWORD Store_Writer::open()
{
    DWORD error = m_Place.Make();
    if (error == ERROR_SUCCESS)
        error = m_Connection.Open(m_Place.Get_File());
    if (error == ERROR_SUCCESS && m_Connection.Is_Read_Only())
    {
        error = m_Place.Check_Writable();
        error = error != ERROR_SUCCESS ? error : static_cast<DWORD>(ERROR_ACCESS_DENIED);
    }
    if (error == ERROR_SUCCESS && !m_Connection.Has_Store())
        error = m_Connection.Make_Store(m_pSeed);
    if (error != ERROR_SUCCESS)
        m_Connection.Close();
    return error;
}

DWORD Store_Writer::make_Ready()
{
    if (m_Connection.Is_Open())
        return ERROR_SUCCESS;
    DWORD error = m_Place.Check_Writable();
    if (error == ERROR_SUCCESS)
        error = open();
    m_bOpen = error == ERROR_SUCCESS;
    return error;
}

DWORD Store_Writer::Check_Writable()
{
    return m_bOpen ? static_cast<DWORD>(ERROR_SUCCESS) : m_Place.Check_Writable();
}

template <class Change>
DWORD Store_Writer::run(Change change)
{
    Transaction transaction(m_Connection, Query::begin_write);
    DWORD error = transaction.Get_Error();
    if (error == ERROR_SUCCESS)
        error = m_Connection.Check_Format();
    if (error == ERROR_SUCCESS)
        error = change();
    return error == ERROR_SUCCESS ? transaction.Commit() : error;
}

/// Several steps as one change, under the lock.
template <class Change>
DWORD Store_Writer::change(Change change)
{
    const std::lock_guard lock(m_Mutex);
    DWORD error = make_Ready();
    if (error != ERROR_SUCCESS)
        return error;
    error = run(change);
    if (m_Connection.Is_In_Transaction()) // it could not be taken back: nobody else shall wait for it
        Close();
    return error;
}

DWORD Store_Writer::check_Key(Id key, DWORD otherwise)
{
    Run run(m_Connection, Query::has_key);
    const bool exists = run.Bind(key).Step();
    if (run.Get_Error() != ERROR_SUCCESS)
        return run.Get_Error();
    return exists ? otherwise : static_cast<DWORD>(ERROR_KEY_DELETED);
}

DWORD Store_Writer::touch(Id key)
{
    return Run(m_Connection, Query::touch_key).Bind(get_Now()).Bind(key).Finish();
}

DWORD Store_Writer::add_Key(Id parent, const Path_Walk& name, Text_View class_name, Id& found)
{
    Run run(m_Connection, Query::add_key);
    run.Bind(parent).Bind(name.Get_Folded()).Bind(name.Get_Plain()).Bind(class_name).Bind(get_Now());
    const DWORD error = run.Finish();
    found = error == ERROR_SUCCESS ? m_Connection.Get_Last_Id() : NO_KEY;
    return error == ERROR_SUCCESS ? touch(parent) : error;
}

DWORD Store_Writer::Create_Key(Id base, const Name& path, const Text& class_name, Id& found, bool& created)
{
    return change(
        [&]
        {
            DWORD error = check_Key(base, ERROR_SUCCESS);
            created = false;
            found = base;
            for (Path_Walk names(path); error == ERROR_SUCCESS && names.Next();)
            {
                const Id parent = found;
                Run run(m_Connection, Query::find_key);
                const bool exists = !created && run.Bind(parent).Bind(names.Get_Folded()).Step();
                found = exists ? run.Get_Number(0) : NO_KEY;
                error = run.Get_Error();
                if (!exists && error == ERROR_SUCCESS)
                    error =
                        add_Key(parent, names, names.Is_Last() ? Text_View(class_name) : Text_View(), found);
                created = created || !exists;
            }
            return error;
        });
}

DWORD Store_Writer::Delete_Key(Id key)
{
    return change(
        [&]
        {
            Run itself(m_Connection, Query::has_key);
            const Id parent = itself.Bind(key).Step() ? itself.Get_Number(0) : NO_KEY;
            Run below(m_Connection, Query::has_subkeys);
            const bool full = below.Bind(key).Step();
            DWORD error = itself.Get_Error() != ERROR_SUCCESS ? itself.Get_Error() : below.Get_Error();
            if (error == ERROR_SUCCESS && (full || key == ROOT_KEY))
                error = ERROR_ACCESS_DENIED;
            else if (error == ERROR_SUCCESS && parent == NO_KEY)
                error = ERROR_KEY_DELETED;
            if (error == ERROR_SUCCESS)
                error = Run(m_Connection, Query::remove_values).Bind(key).Finish();
            if (error == ERROR_SUCCESS)
                error = Run(m_Connection, Query::remove_key).Bind(key).Finish();
            return error == ERROR_SUCCESS ? touch(parent) : error;
        });
}

DWORD Store_Writer::Set_Value(Id key, const Name& name, DWORD type, const BYTE* data, std::size_t size)
{
    return change(
        [&]
        {
            Run run(m_Connection, Query::set_value);
            run.Bind(key).Bind(name.folded).Bind(name.plain).Bind(static_cast<long long>(type));
            const DWORD error = run.Bind(get_Now()).Bind(data, size).Finish();
            const bool changed = m_Connection.Get_Changes() != 0;
            return error != ERROR_SUCCESS || changed ? error : static_cast<DWORD>(ERROR_KEY_DELETED);
        });
}

DWORD Store_Writer::Delete_Value(Id key, const Name& name)
{
    return change(
        [&]
        {
            const DWORD error = Run(m_Connection, Query::remove_value).Bind(key).Bind(name.folded).Finish();
            if (error != ERROR_SUCCESS)
                return error;
            return m_Connection.Get_Changes() != 0 ? touch(key) : check_Key(key, ERROR_FILE_NOT_FOUND);
        });
}

} // namespace qn_advapi32
