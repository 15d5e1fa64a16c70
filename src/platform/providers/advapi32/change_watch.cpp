#include "platform/providers/advapi32/change_watch.h"

namespace qn_advapi32
{

namespace
{

constexpr std::size_t WORDS = std::tuple_size_v<Store_Version>;
constexpr int REGION_SIZE = 32768; // by which SQLite maps the index
constexpr std::uint32_t INDEX_FORMAT = 3007000;

/// The header of a store that never changes: two copies that are the same.
constexpr std::uint64_t STILL[2 * WORDS] = {INDEX_FORMAT, 0, 0, 0, 0, 0, INDEX_FORMAT};
static_assert(STILL[WORDS] == INDEX_FORMAT);

} // namespace

void Change_Watch::Look_For_Index(sqlite3* database)
{
    sqlite3_file* file = nullptr;
    sqlite3_file_control(database, "main", SQLITE_FCNTL_FILE_POINTER, &file);
    if (file == nullptr || file->pMethods == nullptr || file->pMethods->iVersion < 2)
        return;
    void volatile* region = nullptr;
    const int result = file->pMethods->xShmMap(file, 0, REGION_SIZE, 0, &region);
    // A reader that may not write the index shares it only while a writer is there.
    if ((result == SQLITE_OK || result == SQLITE_READONLY) && region != nullptr)
        m_pHeader = static_cast<const std::uint64_t*>(const_cast<const void*>(region));
}

void Change_Watch::Watch_Nothing() { m_pHeader = STILL; }

void Change_Watch::Forget() { m_pHeader = nullptr; }

Store_Version Change_Watch::read(std::size_t copy) const
{
    Store_Version version;
    for (std::size_t i = 0; i < WORDS; ++i)
        version[i] = __atomic_load_n(m_pHeader + copy * WORDS + i, __ATOMIC_ACQUIRE);
    return version;
}

bool Change_Watch::Look(Store_Version& version) const
{
    if (m_pHeader == nullptr)
        return false;
    version = read(0);
    return static_cast<std::uint32_t>(version[0]) == INDEX_FORMAT && version == read(1);
}

bool Change_Watch::Is(const Store_Version& version) const
{
    return m_pHeader != nullptr && version == read(1);
}

} // namespace qn_advapi32
