#include "platform/kernel/object_pool.h"

#include "platform/kernel/handle_table.h"
#include "platform/kernel/local_state.h"
#include "platform/kernel/named_object.h"
#include "platform/kernel/named_use.h"
#include "platform/kernel/thread_state.h"

#include <utility>

namespace qn_platform::kernel
{

constinit Object_Array g_Objects;

namespace
{

/// The objects set free, last one first, and how many of the array have ever been used. Guarded by the
/// table's lock. Object 0 stands for nothing.
constinit std::uint32_t g_nFree = 0;
constinit std::uint32_t g_nUsed = 1;

Object* get_Memory()
{
    const std::lock_guard guard(g_Table_Lock);
    if (g_nFree != 0)
    {
        Object& object = g_Objects[g_nFree];
        g_nFree = object.next_free;
        return &object;
    }
    if (g_nUsed >= g_Objects.Get_Count() && (g_Objects.Is_Full() || !g_Objects.Grow()))
    {
        return nullptr;
    }
    return &g_Objects[g_nUsed++];
}

/// The memory stands for another object from now on; nobody who looked before can change it.
void move_On(Object& object)
{
    const std::uint64_t nWord = object.word.load(std::memory_order_relaxed);
    object.word.store((nWord >> 32 << 32) + (1ull << 32), std::memory_order_release);
    object.traits.store(0, std::memory_order_relaxed);
}

void push_Free(Object& object)
{
    object.next_free = g_nFree;
    g_nFree = static_cast<std::uint32_t>(g_Objects.Get_Index(object));
}

void destroy(Object& object)
{
    const std::uint32_t nTraits = object.traits.load(std::memory_order_relaxed);
    void* const pRecord = object.record.load(std::memory_order_relaxed);
    if ((nTraits & TRAIT_NAMED) != 0)
    {
        move_On(object);
        if (!Wait_For_Uses(object))
        {
            return; // a signal's handler closes what its own thread works with: the object stays for good
        }
        Release_Reference(*static_cast<Named_Object*>(pRecord));
    }
    else if (Get_Kind_Of(nTraits) == Kind::Thread)
    {
        Thread_State::Dispose(static_cast<Thread_State*>(pRecord));
    }
    else if (Get_Kind_Of(nTraits) == Kind::Token)
    {
        object.destroy(pRecord);
    }
    else if (Get_Kind_Of(nTraits) == Kind::Mutex && !Disown_For_Good(object))
    {
        return;
    }
    Free_Object(object);
}

} // namespace

Kind Get_Kind(const Object& object) { return Get_Kind_Of(object.traits.load(std::memory_order_relaxed)); }

Named_Object* Get_Named(const Object& object)
{
    const bool bNamed = (object.traits.load(std::memory_order_relaxed) & TRAIT_NAMED) != 0;
    return bNamed ? static_cast<Named_Object*>(Get_Record(object)) : nullptr;
}

void* Get_Record(const Object& object) { return object.record.load(std::memory_order_acquire); }

void Object_Reference::st_Release(Object& object) { Release(object); }

Object_Reference New_Object(std::uint32_t traits, std::uint32_t state)
{
    Object* const pObject = get_Memory();
    if (pObject == nullptr)
    {
        Fail(ERROR_NOT_ENOUGH_MEMORY);
        return {};
    }
    pObject->traits.store(traits, std::memory_order_relaxed);
    pObject->recursion = 0;
    pObject->queue = {};
    pObject->record.store(nullptr, std::memory_order_relaxed);
    const std::uint64_t nWord = pObject->word.load(std::memory_order_relaxed);
    pObject->word.store(With_State(nWord, state), std::memory_order_release);
    pObject->references.store(1, std::memory_order_release);
    return Object_Reference(pObject);
}

Object_Reference New_Record(Kind kind, void* record, void (*destroy)(void* record))
{
    Object_Reference object = New_Object(Get_Traits(kind), 0);
    if (!object)
    {
        destroy(record);
        return object;
    }
    object->destroy = destroy;
    object->record.store(record, std::memory_order_release);
    return object;
}

Object_Reference Share(Object& object)
{
    object.references.fetch_add(1, std::memory_order_relaxed);
    return Object_Reference(&object);
}

Object_Reference Get_Reference(Look look)
{
    Object& object = *look.object;
    std::uint32_t nCount = object.references.load(std::memory_order_relaxed);
    do
    {
        if (nCount == 0)
        {
            return {};
        }
    } while (!object.references.compare_exchange_weak(nCount, nCount + 1, std::memory_order_acq_rel));
    Object_Reference reference(&object);
    const bool bSame = Get_Generation(object.word.load(std::memory_order_acquire)) == look.generation;
    return bSame ? std::move(reference) : Object_Reference();
}

void Release(Object& object)
{
    if (object.references.fetch_sub(1, std::memory_order_acq_rel) == 1)
    {
        destroy(object);
    }
}

void Free_Object(Object& object)
{
    move_On(object);
    const std::lock_guard guard(g_Table_Lock);
    push_Free(object);
}

void Forget_Objects()
{
    g_nFree = 0;
    for (std::uint32_t i = 1; i < g_nUsed; ++i)
    {
        g_Objects[i].references.store(0, std::memory_order_relaxed);
        move_On(g_Objects[i]);
        push_Free(g_Objects[i]);
    }
}

} // namespace qn_platform::kernel
