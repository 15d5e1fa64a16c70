#ifndef QNLIB_SRC_PLATFORM_PROVIDERS_ADVAPI32_STORE_WRITER_H
#define QNLIB_SRC_PLATFORM_PROVIDERS_ADVAPI32_STORE_WRITER_H

#include "platform/providers/advapi32/connection.h"
#include "platform/providers/advapi32/store_place.h"

#include <atomic>
#include <mutex>

namespace qn_advapi32
{

/// The writing side of a store, with a connection of its own, so that who reads never waits for who writes.
/// Any thread may call it; one writes at a time, in this process and all others. The first write makes the
/// store.
class Store_Writer
{
public:
    Store_Writer(const Store_Place& place, const char* seed) : m_Place(place), m_pSeed(seed) {}
    Store_Writer(const Store_Writer&) = delete;
    Store_Writer& operator=(const Store_Writer&) = delete;

    /// Whether this user may write: 0 or 5, 19, 3. Waits for nobody.
    DWORD Check_Writable();

    /// Makes the keys of a path that are missing, in one change. 1018 when `base` is gone.
    DWORD Create_Key(Id base, const Name& path, const Text& class_name, Id& found, bool& created);

    /// Removes a key with its values. 5 when it has keys below it, 1018 when it is gone.
    DWORD Delete_Key(Id key);

    DWORD Set_Value(Id key, const Name& name, DWORD type, const BYTE* data, std::size_t size);
    DWORD Delete_Value(Id key, const Name& name);

    // Around a fork; see Store_Reader.
    void Lock() { m_Mutex.lock(); }
    void Unlock() { m_Mutex.unlock(); }
    void Close()
    {
        m_bOpen = false;
        m_Connection.Close();
    }

private:
    template <class Change>
    DWORD run(Change change);
    template <class Change>
    DWORD change(Change change);

    DWORD make_Ready();
    DWORD open();
    DWORD check_Key(Id key, DWORD otherwise);
    DWORD add_Key(Id parent, const Path_Walk& name, Text_View class_name, Id& found);
    DWORD touch(Id key);

    std::mutex m_Mutex;
    const Store_Place m_Place;
    const char* const m_pSeed;
    Connection m_Connection;
    std::atomic<bool> m_bOpen = false; ///< so this user may write
};

} // namespace qn_advapi32

#endif
