#ifndef QNLIB_SRC_PLATFORM_PROVIDERS_ADVAPI32_STORE_H
#define QNLIB_SRC_PLATFORM_PROVIDERS_ADVAPI32_STORE_H

#include "platform/providers/advapi32/store_reader.h"
#include "platform/providers/advapi32/store_writer.h"

namespace qn_advapi32
{

/// One file of the registry.
struct Store
{
    Store(const Store_Place& place, const char* seed) : reader(place, seed), writer(place, seed) {}

    Store_Reader reader;
    Store_Writer writer;
};

/// The stores of this process; they live as long as it does. A forked child goes on with connections of its
/// own. Throws std::bad_alloc.
struct Stores
{
    static Stores& Get();

    const Text sid; ///< the user's, in capitals
    const std::string users_seed;
    Store user;
    Store machine;
    Store users; ///< the one key below HKEY_USERS, nowhere

private:
    explicit Stores(const std::string& user_sid);
};

} // namespace qn_advapi32

#endif
