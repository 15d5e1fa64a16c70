#ifndef QNLIB_SRC_PLATFORM_PROVIDERS_ADVAPI32_STORE_READER_H
#define QNLIB_SRC_PLATFORM_PROVIDERS_ADVAPI32_STORE_READER_H

#include "platform/providers/advapi32/change_watch.h"
#include "platform/providers/advapi32/connection.h"
#include "platform/providers/advapi32/lookup_cache.h"
#include "platform/providers/advapi32/store_place.h"

#include <mutex>

namespace qn_advapi32
{

/// Where a caller wants a value. Null pointers want nothing.
struct Value_Target
{
    qn_platform::LPDWORD m_pType = nullptr;
    BYTE* m_pData = nullptr;
    qn_platform::LPDWORD m_pSize = nullptr; ///< the room, if there are data wanted

    std::size_t Get_Room() const { return m_pData != nullptr ? *m_pSize : 0; }

    /// 234, with type and size alone, when there is no room. `data` may be null if the size is above the
    /// room.
    DWORD Give(DWORD type, std::size_t size, const BYTE* data) const;
};

/// The reading side of a store: its connection, and what it found there last. Any thread may call it; one
/// reads at a time. A store that nobody has made yet is read as if it were new; nothing is made for that.
class Store_Reader
{
public:
    Store_Reader(const Store_Place& place, const char* seed) : m_Place(place), m_pSeed(seed) {}
    Store_Reader(const Store_Reader&) = delete;
    Store_Reader& operator=(const Store_Reader&) = delete;

    /// The key at a path below another one. 2 when there is none, 1018 when `base` is gone.
    DWORD Find_Key(Id base, const Name& path, Id& found);

    /// 2 when there is none, 1018 when the key is gone.
    DWORD Read_Value(Id key, const Name& name, const Value_Target& target);

    /// Shows `use` the entry at a place of a list; its answer is the answer. 259 behind the last one, 1018
    /// when the key is gone. `use` is run under the lock, and calls nothing here.
    template <class Use>
    DWORD Read_List(Id key, List_Kind kind, DWORD index, Use use)
    {
        const std::lock_guard lock(m_Mutex);
        DWORD error = make_Ready();
        const Listed* found = nullptr;
        if (error == qn_platform::ERROR_SUCCESS)
            error = find_Listed(key, kind, index, found);
        return error == qn_platform::ERROR_SUCCESS ? use(*found) : error;
    }

    /// When a key below another one, or its values, were last changed.
    DWORD Read_Time(Id key, Text_View folded, long long& changed);

    // Around a fork, when no thread may be at work here; the connection is closed before, since neither it
    // nor the state that SQLite keeps of the file may get into the child.
    void Lock() { m_Mutex.lock(); }
    void Unlock() { m_Mutex.unlock(); }
    void Close();

private:
    DWORD make_Ready();
    DWORD open();
    DWORD open_Stand_In();
    DWORD refresh();
    bool keeps();
    DWORD has_Key(Id key, DWORD otherwise);
    DWORD walk(Id base, const Name& path, Id& found);
    DWORD read_Batch(Listing& listing, DWORD index, const Text* behind, unsigned int count);
    DWORD find_Listed(Id key, List_Kind kind, DWORD index, const Listed*& entry);

    std::mutex m_Mutex;
    const Store_Place m_Place;
    const char* const m_pSeed;
    Connection m_Connection;
    bool m_bStand_In = false; ///< the connection is to an empty store in memory
    Change_Watch m_Watch;
    bool m_bKnown = false; ///< what is kept belongs to m_Version, which has a format that is known here
    Store_Version m_Version{};
    Lookup_Cache m_Cache;
    Listing m_Unkept; ///< a list in a state that cannot be told
};

} // namespace qn_advapi32

#endif
