#include "platform/providers/advapi32/store.h"

#include "platform/providers/advapi32/key_handles.h"
#include "platform/providers/advapi32/store_format.h"

#include <new>

#include <pthread.h>
#include <unistd.h>

namespace qn_advapi32
{

namespace
{

// Locks of a POSIX file belong to the process, and SQLite keeps in memory which ones it has: a child that
// inherited that would believe to hold locks that it does not. So no connection is open while the process is
// copied; parent and child open theirs at the next call.

void before_Fork()
{
    Stores& stores = Stores::Get();
    Lock_Key_Handles();
    for (Store* const store : {&stores.user, &stores.machine, &stores.users})
    {
        store->writer.Lock();
        store->reader.Lock();
        store->writer.Close();
        store->reader.Close();
    }
}

void after_Fork()
{
    Stores& stores = Stores::Get();
    for (Store* const store : {&stores.users, &stores.machine, &stores.user})
    {
        store->reader.Unlock();
        store->writer.Unlock();
    }
    Unlock_Key_Handles();
}

} // namespace

Stores::Stores(const std::string& user_sid)
    : sid(user_sid.begin(), user_sid.end()), users_seed("(2, 1, '" + user_sid + "')"),
      user(Store_Place::User(), USER_SEED), machine(Store_Place::Machine(), MACHINE_SEED),
      users(Store_Place::Nowhere(), users_seed.c_str())
{
}

Stores& Stores::Get()
{
    static Stores& stores = []() -> Stores&
    {
        auto* const made = new Stores("S-1-22-1-" + std::to_string(geteuid()));
        if (pthread_atfork(before_Fork, after_Fork, after_Fork) != 0)
        {
            delete made;
            throw std::bad_alloc();
        }
        return *made;
    }();
    return stores;
}

} // namespace qn_advapi32
