#ifndef QNLIB_SRC_PLATFORM_PROVIDERS_ADVAPI32_CHANGE_WATCH_H
#define QNLIB_SRC_PLATFORM_PROVIDERS_ADVAPI32_CHANGE_WATCH_H

#include <array>
#include <cstdint>

#include <sqlite3.h>

// Tells without a system call whether any process has changed a store since it was last looked at.
//
// SQLite keeps an index of the journal in memory that all processes share, and a commit is seen by others
// when it has written the header of that index: two copies of 48 bytes, the second one first, which hold a
// count of commits. So what was read while the header did not change is the store's state for as long as the
// second copy stays as it was. Nothing of the header but that is relied on.

namespace qn_advapi32
{

/// A state of the store.
using Store_Version = std::array<std::uint64_t, 6>;

class Change_Watch
{
public:
    /// Takes the index that the connection has mapped, which stays where it is until the connection is
    /// closed. The first transaction maps it. Without an index every look fails.
    void Look_For_Index(sqlite3* database);

    /// For a store that nobody else knows.
    void Watch_Nothing();

    void Forget();
    bool Has_Index() const { return m_pHeader != nullptr; }

    /// The state now. False while somebody is about to change it, and when it cannot be told.
    bool Look(Store_Version& version) const;

    /// Whether this is still the state.
    bool Is(const Store_Version& version) const;

private:
    Store_Version read(std::size_t copy) const;

    const std::uint64_t* m_pHeader = nullptr;
};

} // namespace qn_advapi32

#endif
