#include "platform/modules/module_loads.h"

#include "platform/modules.h"

#include <mutex>
#include <new>

namespace qn_platform
{

namespace
{

struct Counted_Module
{
    HMODULE m_hModule;
    void* m_pHandle;
    unsigned long long m_nLoads;
    Counted_Module* m_pNext;
};

// Plain constant data: nothing runs when the library is loaded, and nothing is gone when objects with static
// lifetime free their modules at the end.
constinit std::mutex lock;
constinit Counted_Module* first = nullptr;

/// The link that leads to the module's record, or the last one, which is null.
Counted_Module** find_Link(HMODULE module)
{
    Counted_Module** link = &first;
    while (*link != nullptr && (*link)->m_hModule != module)
    {
        link = &(*link)->m_pNext;
    }
    return link;
}

} // namespace

bool Count_Module_Load(HMODULE module, void* handle, Provider_Last_Error* lent)
{
    const std::lock_guard guard(lock);
    Counted_Module** const link = find_Link(module);
    if (*link == nullptr)
    {
        *link = new (std::nothrow) Counted_Module{module, handle, 0, nullptr};
        if (*link == nullptr)
        {
            return false;
        }
        if (lent != nullptr)
        {
            *lent = {GetLastError, SetLastError};
        }
    }
    ++(*link)->m_nLoads;
    return true;
}

void* Count_Module_Release(HMODULE module)
{
    const std::lock_guard guard(lock);
    Counted_Module** const link = find_Link(module);
    Counted_Module* const counted = *link;
    if (counted == nullptr)
    {
        return nullptr;
    }
    void* const handle = counted->m_pHandle;
    if (--counted->m_nLoads == 0)
    {
        *link = counted->m_pNext;
        delete counted;
    }
    return handle;
}

} // namespace qn_platform
