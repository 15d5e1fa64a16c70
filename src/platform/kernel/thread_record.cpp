#include "platform/kernel/thread_record.h"

#include "platform/kernel/fork.h"
#include "platform/kernel/local_state.h"
#include "platform/kernel/named_object.h"
#include "platform/kernel/object_pool.h"
#include "platform/kernel/ranked_lock.h"
#include "platform/kernel/thread_state.h"
#include "platform/system_calls.h"

#include <mutex>
#include <new>

#include <limits.h>
#include <pthread.h>
#include <unistd.h>

namespace qn_platform::kernel
{

constinit thread_local Thread_Record* g_pCurrent_Thread = nullptr;
constinit Ranked_Lock g_Records_Lock{Lock_Rank::Records};

namespace
{

// Guarded by the lock of the records.
constinit Thread_Record* g_pFree = nullptr;
constinit std::atomic<Thread_Record*> g_pAll{nullptr}; // only where it is changed

void abandon_Mutexes(Thread_Record& self)
{
    while (self.owned_mutexes != nullptr)
    {
        Let_Owner_Go(*self.owned_mutexes, self, STATE_ABANDONED);
    }
}

void set_Thread_Object(Thread_Record& self)
{
    if (self.object != nullptr)
    {
        Object_Reference object(std::exchange(self.object, nullptr));
        Get_Thread_State(*object).End(self.exit_code);
        Change_Signal(*object, Signal::Set);
    }
}

void give_Back(Thread_Record& record)
{
    const std::lock_guard guard(g_Records_Lock);
    record.next_free = std::exchange(g_pFree, &record);
}

void end_Thread(Thread_Record& self)
{
    Abandon_Named_Mutexes(self);
    abandon_Mutexes(self);
    set_Thread_Object(self);
    g_pCurrent_Thread = nullptr;
    give_Back(self);
}

/// The round of destructors in which a thread ends here: the last one, but for the sanitizers, whose own view
/// of the thread, and of what its stack alone refers to, ends in that.
#if defined(__SANITIZE_THREAD__) || defined(__SANITIZE_ADDRESS__)
constexpr unsigned int LAST_ROUND = PTHREAD_DESTRUCTOR_ITERATIONS - 1;
#else
constexpr unsigned int LAST_ROUND = PTHREAD_DESTRUCTOR_ITERATIONS;
#endif

pthread_key_t get_Key();

/// Destructors of other keys may use the layer still, so the thread's end waits for the last round of them.
/// (A thread whose first use of the layer is in a destructor may have no round left: it ends unnoticed.)
void at_Round_Of_Destructors(void* record)
{
    Thread_Record& self = *static_cast<Thread_Record*>(record);
    if (++self.end_rounds == LAST_ROUND || pthread_setspecific(get_Key(), &self) != 0)
    {
        end_Thread(self);
    }
}

pthread_key_t get_Key()
{
    static const pthread_key_t key = []
    {
        pthread_key_t made = 0;
        return pthread_key_create(&made, at_Round_Of_Destructors) == 0 ? made : PTHREAD_KEYS_MAX;
    }();
    return key;
}

/// Made when the library is loaded: what is made at first use a fork in another thread may find half made.
[[maybe_unused]] const bool g_bMade = Watch_Forks() && get_Key() != PTHREAD_KEYS_MAX;

Thread_Record* get_Memory()
{
    const std::lock_guard guard(g_Records_Lock);
    if (g_pFree != nullptr)
    {
        return std::exchange(g_pFree, g_pFree->next_free);
    }
    void* const pMemory = system_calls.allocate_aligned(alignof(Thread_Record), sizeof(Thread_Record));
    if (pMemory == nullptr)
    {
        return nullptr;
    }
    Thread_Record* const pRecord = new (pMemory) Thread_Record;
    pRecord->next = g_pAll.load(std::memory_order_relaxed);
    g_pAll.store(pRecord, std::memory_order_release);
    return pRecord;
}

/// All but the bell, which late wake-ups may still look at, and the place in the list of all.
void start_Afresh(Thread_Record& record)
{
    record.id = static_cast<std::uint32_t>(gettid());
    record.process = static_cast<std::uint32_t>(getpid());
    record.owned_mutexes = nullptr;
    record.owned_named = nullptr;
    record.robust_head = nullptr;
    record.object = nullptr;
    record.state = nullptr;
    record.in_use.store(nullptr, std::memory_order_relaxed);
    record.hears_faults = false;
    record.exit_code = 0;
    record.end_rounds = 0;
}

} // namespace

Thread_Record* Reserve_Thread_Record()
{
    return Watch_Forks() && get_Key() != PTHREAD_KEYS_MAX ? get_Memory() : nullptr;
}

void Adopt_Thread_Record(Thread_Record& record)
{
    start_Afresh(record);
    pthread_setspecific(get_Key(), &record);
    g_pCurrent_Thread = &record;
}

void End_Unwatched_Thread(Thread_Record& record)
{
    if (g_pCurrent_Thread == &record && pthread_getspecific(get_Key()) == nullptr)
    {
        end_Thread(record);
    }
}

void Give_Back_Thread_Record(Thread_Record& record) { give_Back(record); }

Thread_Record* Make_Thread_Record()
{
    Thread_Record* const pRecord = Reserve_Thread_Record();
    if (pRecord == nullptr)
    {
        return nullptr;
    }
    if (pthread_setspecific(get_Key(), pRecord) != 0)
    {
        give_Back(*pRecord);
        return nullptr;
    }
    start_Afresh(*pRecord);
    g_pCurrent_Thread = pRecord;
    return pRecord;
}

const Thread_Record* First_Thread_Record() { return g_pAll.load(std::memory_order_acquire); }

Object_Reference Get_Thread_Object(Thread_Record& self)
{
    if (self.object == nullptr)
    {
        self.object = New_Thread_Object(self.id).Detach();
        if (self.object == nullptr)
        {
            return {};
        }
        self.state = Get_Record(*self.object);
    }
    return Share(*self.object);
}

void Forget_Threads()
{
    if (g_pCurrent_Thread != nullptr)
    {
        pthread_setspecific(get_Key(), nullptr);
        g_pCurrent_Thread = nullptr;
    }
    g_pFree = nullptr;
    for (Thread_Record* pRecord = g_pAll.load(std::memory_order_relaxed); pRecord != nullptr;
         pRecord = pRecord->next)
    {
        pRecord->in_use.store(nullptr, std::memory_order_relaxed);
        pRecord->next_free = std::exchange(g_pFree, pRecord);
    }
}

} // namespace qn_platform::kernel
