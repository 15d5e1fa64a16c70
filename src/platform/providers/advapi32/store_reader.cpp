#include "platform/providers/advapi32/store_reader.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace qn_advapi32
{

using namespace qn_platform;

namespace
{

constexpr unsigned int FIRST_BATCH = 4;
constexpr unsigned int NEXT_BATCH = 64;
constexpr std::size_t MOST_BATCH = 64 << 10; ///< bytes of a batch, but for one entry, about

} // namespace

DWORD Value_Target::Give(DWORD type, std::size_t size, const BYTE* data) const
{
    const bool fits = m_pData == nullptr || size <= *m_pSize;
    if (m_pData != nullptr && fits && size != 0)
        std::memcpy(m_pData, data, size);
    if (m_pType != nullptr)
        *m_pType = type;
    if (m_pSize != nullptr)
        *m_pSize = static_cast<DWORD>(size);
    return fits ? ERROR_SUCCESS : ERROR_MORE_DATA;
}

void Store_Reader::Close()
{
    m_Connection.Close();
    m_Watch.Forget();
    m_Cache.Clear();
    m_bKnown = false;
    m_bStand_In = false;
}

DWORD Store_Reader::open_Stand_In()
{
    if (m_bStand_In)
        return ERROR_SUCCESS;
    Close();
    const DWORD error = m_Connection.Open_Memory(m_pSeed);
    if (error == ERROR_SUCCESS)
        m_Watch.Watch_Nothing();
    m_bStand_In = error == ERROR_SUCCESS;
    return error;
}

/// What is asked for next is read in the state m_Version, if that is known, or in a later one.
DWORD Store_Reader::make_Ready()
{
    if (m_Connection.Is_Open() && m_Connection.Is_In_Transaction())
        Close(); // one that could not be ended shows an old state
    const DWORD error = m_Connection.Is_Open() && !m_bStand_In ? ERROR_SUCCESS : open();
    return error == ERROR_SUCCESS ? refresh() : error;
}

DWORD Store_Reader::open()
{
    const DWORD found = m_Place.Find();
    if (found == ERROR_FILE_NOT_FOUND)
        return open_Stand_In();
    if (found != ERROR_SUCCESS)
        return found;
    Close();
    const DWORD error = m_Connection.Open(m_Place.Get_File());
    return error == ERROR_SUCCESS && !m_Connection.Has_Store() ? open_Stand_In() : error;
}

/// Forgets what was found in a former state, and looks whether this one is of our format.
DWORD Store_Reader::refresh()
{
    if (m_bKnown && m_Watch.Is(m_Version))
        return ERROR_SUCCESS;
    m_Cache.Clear();
    if (!m_Watch.Has_Index())
        m_Watch.Look_For_Index(m_Connection.Get_Database());
    const bool seen = m_Watch.Look(m_Version);
    const DWORD error = m_Connection.Check_Format();
    m_bKnown = seen && error == ERROR_SUCCESS && m_Watch.Is(m_Version);
    return error;
}

/// Whether what was just read belongs to the state that is known, so that it may be kept.
bool Store_Reader::keeps()
{
    Store_Version now;
    return m_bKnown && m_Watch.Look(now) && now == m_Version;
}

DWORD Store_Reader::has_Key(Id key, DWORD otherwise)
{
    Run run(m_Connection, Query::has_key);
    const bool exists = run.Bind(key).Step();
    if (run.Get_Error() != ERROR_SUCCESS)
        return run.Get_Error();
    return exists ? otherwise : static_cast<DWORD>(ERROR_KEY_DELETED);
}

/// NO_KEY in `found` when there is none.
DWORD Store_Reader::walk(Id base, const Name& path, Id& found)
{
    const Transaction transaction(m_Connection, Query::begin_read);
    DWORD error = transaction.Get_Error();
    found = base;
    for (Path_Walk names(path); error == ERROR_SUCCESS && found != NO_KEY && names.Next();)
    {
        Run run(m_Connection, Query::find_key);
        found = run.Bind(found).Bind(names.Get_Folded()).Step() ? run.Get_Number(0) : NO_KEY;
        error = run.Get_Error();
    }
    return error;
}

DWORD Store_Reader::Find_Key(Id base, const Name& path, Id& found)
{
    const std::lock_guard lock(m_Mutex);
    DWORD error = make_Ready();
    if (error != ERROR_SUCCESS)
        return error;
    const Id* const known = m_bKnown ? m_Cache.Find_Key(base, path.folded) : nullptr;
    if (known != nullptr)
    {
        found = *known;
        return found != NO_KEY ? ERROR_SUCCESS : ERROR_FILE_NOT_FOUND;
    }
    error = walk(base, path, found);
    if (error == ERROR_SUCCESS && (found == NO_KEY || found == base))
        error = has_Key(base, found == base ? ERROR_SUCCESS : ERROR_FILE_NOT_FOUND);
    if ((error == ERROR_SUCCESS || error == ERROR_FILE_NOT_FOUND) && keeps())
        m_Cache.Keep_Key(base, path.folded, found);
    return error;
}

DWORD Store_Reader::Read_Value(Id key, const Name& name, const Value_Target& target)
{
    const std::lock_guard lock(m_Mutex);
    const DWORD error = make_Ready();
    if (error != ERROR_SUCCESS)
        return error;
    const Value* const known = m_bKnown ? m_Cache.Find_Value(key, name.folded) : nullptr;
    if (known != nullptr)
        return known->m_bExists ? target.Give(known->m_nType, known->m_Data.size(), known->m_Data.data())
                                : static_cast<DWORD>(ERROR_FILE_NOT_FOUND);
    const Listed* const listed = m_bKnown ? m_Cache.Find_Listed_Value(key, name.folded) : nullptr;
    if (listed != nullptr)
        return target.Give(listed->Get_Type(), listed->Get_Size(), listed->Get_Data());
    Run run(m_Connection, Query::find_value);
    run.Bind(key).Bind(name.folded);
    run.Bind(static_cast<long long>(std::max(target.Get_Room(), Lookup_Cache::MOST_KEPT)));
    if (!run.Step())
    {
        const DWORD missing =
            run.Get_Error() != ERROR_SUCCESS ? run.Get_Error() : has_Key(key, ERROR_FILE_NOT_FOUND);
        if (missing == ERROR_FILE_NOT_FOUND && keeps())
            m_Cache.Keep_Value(key, name.folded, false, 0, nullptr, 0);
        return missing;
    }
    const auto type = static_cast<DWORD>(run.Get_Number(0));
    const auto size = static_cast<std::size_t>(run.Get_Number(1));
    const BYTE* const data = run.Get_Bytes(2);
    if (data == nullptr && size != 0 && !run.Is_Null(2))
        return ERROR_NOT_ENOUGH_MEMORY;
    if (size <= Lookup_Cache::MOST_KEPT && keeps())
        m_Cache.Keep_Value(key, name.folded, true, type, data, size);
    return target.Give(type, size, data);
}

/// Entries from `index` on, or from behind a name that is the one before.
DWORD Store_Reader::read_Batch(Listing& listing, DWORD index, const Text* behind, unsigned int count)
{
    const bool values = listing.m_Kind == List_Kind::values;
    const Query query = behind != nullptr ? (values ? Query::values_behind : Query::keys_behind)
                                          : (values ? Query::values_from : Query::keys_from);
    const Text place = behind != nullptr ? *behind : Text();
    listing.m_Entries.clear();
    listing.m_Entries.reserve(count);
    listing.m_nSize = 0;
    listing.m_nFirst = index;
    Run run(m_Connection, query);
    run.Bind(listing.m_nKey);
    behind != nullptr ? run.Bind(place) : run.Bind(static_cast<long long>(index));
    run.Bind(static_cast<long long>(count));
    if (values)
        run.Bind(static_cast<long long>(Lookup_Cache::MOST_LISTED));
    bool more = true;
    while (listing.m_nSize < MOST_BATCH && (more = run.Step()))
    {
        if (values)
            listing.m_Entries.emplace_back(run.Get_Text(0), run.Get_Text(1),
                                           static_cast<DWORD>(run.Get_Number(2)),
                                           static_cast<DWORD>(run.Get_Number(3)), run.Get_Bytes(4));
        else
            listing.m_Entries.emplace_back(run.Get_Text(0), run.Get_Text(1), run.Get_Text(2));
        listing.m_nSize += listing.m_Entries.back().Get_Room();
    }
    listing.m_bAt_End = !more && listing.m_Entries.size() < count;
    return run.Get_Error();
}

DWORD Store_Reader::find_Listed(Id key, List_Kind kind, DWORD index, const Listed*& entry)
{
    Listing* listing = m_bKnown ? m_Cache.Find_Listing(key, kind, index) : nullptr;
    if (listing == nullptr || (index == listing->Get_End() && !listing->m_bAt_End))
    {
        Listing batch;
        batch.m_nKey = key;
        batch.m_Kind = kind;
        // Behind a name only in the state in which that name has the place before.
        const bool next = listing != nullptr && !listing->m_Entries.empty();
        const Text behind = next ? Text(listing->m_Entries.back().Get_Folded()) : Text();
        const auto known = next ? static_cast<unsigned int>(listing->m_Entries.size()) : 0;
        const unsigned int count = next ? std::max(NEXT_BATCH, known) : FIRST_BATCH;
        DWORD error = read_Batch(batch, index, next ? &behind : nullptr, count);
        const bool kept = error == ERROR_SUCCESS && keeps();
        if (next && !kept && error == ERROR_SUCCESS) // that state has gone meanwhile
            error = read_Batch(batch, index, nullptr, FIRST_BATCH);
        if (error != ERROR_SUCCESS)
            return error;
        listing = kept ? &m_Cache.Keep_Listing(std::move(batch)) : &(m_Unkept = std::move(batch));
    }
    if (index >= listing->Get_End())
        return has_Key(key, ERROR_NO_MORE_ITEMS);
    entry = &listing->m_Entries[index - listing->m_nFirst];
    return ERROR_SUCCESS;
}

DWORD Store_Reader::Read_Time(Id key, Text_View folded, long long& changed)
{
    const std::lock_guard lock(m_Mutex);
    const DWORD error = make_Ready();
    if (error != ERROR_SUCCESS)
        return error;
    Run run(m_Connection, Query::key_changed);
    if (!run.Bind(key).Bind(folded).Step())
        return run.Get_Error() != ERROR_SUCCESS ? run.Get_Error() : static_cast<DWORD>(ERROR_FILE_NOT_FOUND);
    changed = run.Get_Number(0);
    return ERROR_SUCCESS;
}

} // namespace qn_advapi32
