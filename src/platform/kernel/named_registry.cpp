#include "platform/kernel/named_registry.h"

#include "platform/kernel/named_file.h"
#include "platform/kernel/named_futex.h"
#include "platform/kernel/named_sweep.h"
#include "platform/kernel/named_use.h"
#include "platform/kernel/named_words.h"
#include "platform/kernel/ranked_lock.h"

#include <cerrno>
#include <cstring>
#include <mutex>
#include <new>

namespace qn_platform::kernel
{

namespace
{

constexpr DWORD WRONG_KIND = 6;
constexpr DWORD NO_MEMORY = 8;
constexpr DWORD NOT_SUPPORTED = 50;
constexpr DWORD EXISTS_ALREADY = 183;

constexpr unsigned int LISTS = 4096;

constinit Ranked_Lock g_Names_Lock{Lock_Rank::Names};

// Guarded by the lock; the second only where it is changed.
constinit Named_Object* g_Lists[LISTS] = {};
constinit std::atomic<Named_Object*> g_pNewest{nullptr};
constinit Named_Object* g_pFree = nullptr;
constinit unsigned int g_nMade = 0;

/// The program's errno is no business of this layer.
class Errno_Keeper
{
public:
    ~Errno_Keeper() { errno = m_nSaved; }

private:
    int m_nSaved = errno;
};

// ---- Records ---------------------------------------------------------------------------------------------

/// Null when memory is short.
Named_Object* new_Record()
{
    Named_Object* pObject = g_pFree;
    if (pObject != nullptr)
    {
        g_pFree = pObject->next_in_list;
        return pObject;
    }
    pObject = new (std::nothrow) Named_Object;
    if (pObject != nullptr)
    {
        pObject->next = g_pNewest.load(std::memory_order_relaxed);
        g_pNewest.store(pObject, std::memory_order_release);
    }
    return pObject;
}

void free_Record(Named_Object& object)
{
    object.next_in_list = g_pFree;
    g_pFree = &object;
}

Named_Object** find_Link(const Object_Name& name)
{
    Named_Object** pLink = &g_Lists[name.hash % LISTS];
    while (*pLink != nullptr && std::strcmp((*pLink)->path, name.path) != 0)
    {
        pLink = &(*pLink)->next_in_list;
    }
    return pLink;
}

void add_To_List(Named_Object& object, unsigned int hash)
{
    object.hash = hash;
    object.next_in_list = g_Lists[hash % LISTS];
    g_Lists[hash % LISTS] = &object;
}

void take_From_List(const Named_Object& object)
{
    Named_Object** pLink = &g_Lists[object.hash % LISTS];
    while (*pLink != &object)
    {
        pLink = &(*pLink)->next_in_list;
    }
    *pLink = object.next_in_list;
}

void start_Record(Named_Object& object)
{
    object.owner.store(nullptr, std::memory_order_relaxed);
    object.recursion = 0;
    object.lingering = false;
    object.references.store(1, std::memory_order_relaxed);
}

// ---- Making and opening ----------------------------------------------------------------------------------

Named_Answer join_Known(Named_Object& object, Kind kind, bool create)
{
    if (object.kind != kind)
    {
        return {nullptr, WRONG_KIND};
    }
    object.lingering = false;
    object.references.fetch_add(1, std::memory_order_relaxed);
    return {&object, create ? EXISTS_ALREADY : 0};
}

void sweep_Now_And_Then()
{
    constexpr unsigned int INTERVAL = 1024;
    if (g_nMade++ % INTERVAL == 0)
    {
        Sweep_Leftovers();
    }
}

Named_Answer attach(const Object_Name& name, const Named_Request& request, bool create, Thread_Record* self)
{
    Named_Object* const pObject = new_Record();
    if (pObject == nullptr)
    {
        return {nullptr, NO_MEMORY};
    }
    start_Record(*pObject);
    const DWORD nError = Attach_File(*pObject, name, request, create, self);
    if (nError != 0 && nError != EXISTS_ALREADY)
    {
        free_Record(*pObject);
        return {nullptr, nError};
    }
    add_To_List(*pObject, name.hash);
    return {pObject, nError};
}

Named_Answer make_Or_Open(const Named_Request& request, bool create, Thread_Record* self)
{
    const Errno_Keeper keeper;
    Object_Name name;
    if (const DWORD nError = Parse_Object_Name(request.name, name))
    {
        return {nullptr, nError};
    }
    const std::lock_guard lock(g_Names_Lock); // held across a fork: what is found once is found whole
    static const bool bUsable = Find_Robust_Head() != nullptr;
    if (!bUsable)
    {
        return {nullptr, NOT_SUPPORTED};
    }
    Prepare_Uses();
    Find_Gate(); // for the sleepers
    if (Named_Object* const pKnown = *find_Link(name))
    {
        return join_Known(*pKnown, request.kind, create);
    }
    if (create)
    {
        sweep_Now_And_Then();
    }
    return attach(name, request, create, self);
}

// ---- Closing ---------------------------------------------------------------------------------------------

/// The last reference went while a thread owns the mutex: its node is on that thread's list, so the mapping
/// stays until the thread ends, though the name goes if no other process has it. The owner itself can take
/// the node off.
void close_Owned(Named_Object& object, const Thread_Record* owner)
{
    object.lingering = true;
    if (!Remove_File_If_Unused(object))
    {
        return;
    }
    take_From_List(object);
    object.hash = LISTS; // in no list
    Thread_Record* const pSelf = Current_Thread();
    if (owner == pSelf)
    {
        Give_Up(object, *pSelf, 0);
        Unmap_File(object);
        free_Record(object);
    }
}

void close(Named_Object& object)
{
    if (const Thread_Record* const pOwner = object.owner.load(std::memory_order_acquire))
    {
        close_Owned(object, pOwner);
        return;
    }
    take_From_List(object);
    Detach_File(object);
    free_Record(object);
}

/// A mutex of an ended thread that no handle stands for any more.
void close_Lingering(Named_Object& object)
{
    if (object.hash == LISTS)
    {
        Unmap_File(object);
    }
    else
    {
        take_From_List(object);
        Detach_File(object);
    }
    free_Record(object);
}

} // namespace

const Named_Object* First_Named_Object() { return g_pNewest.load(std::memory_order_acquire); }

Named_Answer Create_Named(const Named_Request& request, Thread_Record& self)
{
    return make_Or_Open(request, true, &self);
}

Named_Answer Open_Named(Kind kind, LPCWSTR name)
{
    return make_Or_Open({kind, name, false, false, false}, false, nullptr);
}

void Add_Reference(Named_Object& object) { object.references.fetch_add(1, std::memory_order_relaxed); }

void Release_Reference(Named_Object& object)
{
    unsigned int nCount = object.references.load(std::memory_order_relaxed);
    while (nCount > 1)
    {
        if (object.references.compare_exchange_weak(nCount, nCount - 1, std::memory_order_acq_rel))
        {
            return;
        }
    }
    const Errno_Keeper keeper;
    const std::lock_guard lock(g_Names_Lock);
    if (object.references.fetch_sub(1, std::memory_order_acq_rel) == 1)
    {
        close(object);
    }
}

void Abandon_Named_Mutexes(Thread_Record& self)
{
    if (self.owned_named == nullptr)
    {
        return;
    }
    const Errno_Keeper keeper;
    const std::lock_guard lock(g_Names_Lock);
    while (Named_Object* const pObject = self.owned_named)
    {
        const bool bLast = pObject->lingering;
        Give_Up(*pObject, self, MARK);
        if (bLast)
        {
            close_Lingering(*pObject);
        }
    }
}

void Lock_Named_Objects() { g_Names_Lock.lock(); }
void Unlock_Named_Objects() { g_Names_Lock.unlock(); }

void Forget_Named_Objects()
{
    // The pages are not mapped here. What has none already is left alone: writing would copy its memory.
    for (Named_Object* pObject = g_pNewest.load(std::memory_order_relaxed); pObject != nullptr;
         pObject = pObject->next)
    {
        if (pObject->page.load(std::memory_order_relaxed) != nullptr)
        {
            pObject->page.store(nullptr, std::memory_order_relaxed);
        }
    }
    for (Named_Object*& pList : g_Lists)
    {
        while (Named_Object* const pObject = pList)
        {
            pList = pObject->next_in_list;
            free_Record(*pObject);
        }
    }
}

} // namespace qn_platform::kernel
