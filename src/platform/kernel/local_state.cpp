#include "platform/kernel/local_state.h"

#include "platform/kernel/local_objects.h"
#include "platform/kernel/object_pool.h"

namespace qn_platform::kernel
{

constinit Ranked_Lock g_Dispatcher{Lock_Rank::Dispatcher};

namespace
{

bool is_Mutex(std::uint32_t traits) { return Get_Kind_Of(traits) == Kind::Mutex; }

bool is_Takeable(std::uint32_t traits, std::uint32_t state, std::uint32_t id)
{
    const std::uint32_t nOwner = state & STATE_OWNER;
    return is_Mutex(traits) ? nOwner == 0 || nOwner == id : (state & STATE_SET) != 0;
}

std::uint32_t get_State_When_Taken(std::uint32_t traits, std::uint32_t state, std::uint32_t id)
{
    if (is_Mutex(traits))
    {
        return (state & STATE_QUEUED) | id;
    }
    return (traits & TRAIT_MANUAL) != 0 ? state : state & ~STATE_SET;
}

Took take_Again(Object& mutex)
{
    if (mutex.recursion == MOST_RECURSIONS)
    {
        return Took::Too_Often;
    }
    ++mutex.recursion;
    return Took::Plain;
}

Took note_Taken(Look look, std::uint32_t state_before, Thread_Record& self)
{
    if (!is_Mutex(look.grant))
    {
        return Took::Plain;
    }
    Link_Owned(*look.object, self);
    return (state_before & STATE_ABANDONED) != 0 ? Took::Abandoned : Took::Plain;
}

Took take_Queued(Look look, Thread_Record& self);

/// `locked`: the dispatcher is.
Took try_Take(Look look, Thread_Record& self, bool locked)
{
    Object& object = *look.object;
    std::uint64_t nWord = object.word.load(std::memory_order_acquire);
    for (;;)
    {
        const std::uint32_t nState = Get_State(nWord);
        if (Get_Generation(nWord) != look.generation) [[unlikely]]
        {
            return Took::Stale;
        }
        if (!is_Takeable(look.grant, nState, self.id))
        {
            return Took::Nothing;
        }
        if ((look.grant & TRAIT_MANUAL) != 0)
        {
            return Took::Plain;
        }
        if (is_Mutex(look.grant) && (nState & STATE_OWNER) != 0)
        {
            return take_Again(object);
        }
        if ((nState & STATE_QUEUED) != 0 && !locked)
        {
            return take_Queued(look, self);
        }
        const std::uint32_t nNew = get_State_When_Taken(look.grant, nState, self.id);
        if (object.word.compare_exchange_weak(nWord, With_State(nWord, nNew), std::memory_order_acq_rel,
                                              std::memory_order_acquire))
        {
            return note_Taken(look, nState, self);
        }
    }
}

[[gnu::noinline]] Took take_Queued(Look look, Thread_Record& self)
{
    const Dispatcher_Lock lock;
    return try_Take(look, self, true);
}

Look see(Object& object)
{
    return {&object, Get_Generation(object.word.load(std::memory_order_relaxed)),
            object.traits.load(std::memory_order_relaxed)};
}

enum class Changed
{
    Done,
    Gone,   // the object is
    Not_Yet // threads queue on it, or don't any more
};

std::uint64_t get_Word_After(std::uint64_t word, Signal signal)
{
    return signal == Signal::Set ? word | STATE_SET : word & ~std::uint64_t{STATE_SET};
}

/// Changes the object if threads queue on it as `queued` says.
Changed change_Signal(Look look, Signal signal, std::uint32_t queued)
{
    std::uint64_t nWord = look.object->word.load(std::memory_order_relaxed);
    do
    {
        if (Get_Generation(nWord) != look.generation)
        {
            return Changed::Gone;
        }
        if ((nWord & STATE_QUEUED) != queued)
        {
            return Changed::Not_Yet;
        }
        // What is set already is written all the same: whoever finds it set sees what this thread did before.
    } while (!look.object->word.compare_exchange_weak(nWord, get_Word_After(nWord, signal),
                                                      std::memory_order_acq_rel, std::memory_order_relaxed));
    return Changed::Done;
}

/// While threads queue on the object they hold references on it, and leave the queue under the lock only; so
/// this needs none until the last of them has been served, and from then on looks at the generation again.
[[gnu::noinline]] Changed change_Queued_Signal(Look look, Signal signal)
{
    const Dispatcher_Lock lock;
    const Changed changed =
        change_Signal(look, signal == Signal::Reset ? Signal::Reset : Signal::Set, STATE_QUEUED);
    if (changed != Changed::Done || signal == Signal::Reset)
    {
        return changed;
    }
    Serve(*look.object);
    if (signal == Signal::Pulse && change_Signal(look, Signal::Reset, STATE_QUEUED) == Changed::Not_Yet)
    {
        change_Signal(look, Signal::Reset, 0);
    }
    return Changed::Done;
}

/// False when no thread queues any more.
[[gnu::noinline]] bool let_Owner_Go_Queued(Object& mutex, std::uint32_t state)
{
    const Dispatcher_Lock lock;
    const std::uint64_t nWord = mutex.word.load(std::memory_order_relaxed);
    if ((nWord & STATE_QUEUED) == 0)
    {
        return false;
    }
    mutex.word.store(With_State(nWord, state | STATE_QUEUED), std::memory_order_release);
    Serve(mutex);
    return true;
}

bool is_Owner(std::uint64_t word, const Thread_Record* self)
{
    return self != nullptr && (Get_State(word) & STATE_OWNER) == self->id;
}

/// Makes the word that of no object, so that no late look at a handle can change it.
bool move_On(Object& object, std::uint64_t& word)
{
    return object.word.compare_exchange_weak(word, With_State(word, 0) + (1ull << 32),
                                             std::memory_order_acq_rel, std::memory_order_acquire);
}

} // namespace

Took Try_Take_Seen(Look look, Thread_Record& self) { return try_Take(look, self, false); }

bool Can_Take_Seen(Look look, const Thread_Record& self)
{
    const std::uint64_t nWord = look.object->word.load(std::memory_order_acquire);
    return is_Takeable(look.grant, Get_State(nWord), self.id) || Get_Generation(nWord) != look.generation;
}

bool Try_Take(Object& object, Thread_Record& self, bool& abandoned)
{
    const Took took = Try_Take_Seen(see(object), self);
    abandoned = took == Took::Abandoned;
    return took == Took::Plain || took == Took::Abandoned;
}

bool Change_Signal_Seen(Look look, Signal signal)
{
    Changed changed = change_Signal(look, signal, 0);
    while (changed == Changed::Not_Yet)
    {
        changed = change_Queued_Signal(look, signal);
        if (changed == Changed::Not_Yet)
        {
            changed = change_Signal(look, signal, 0);
        }
    }
    return changed == Changed::Done;
}

void Change_Signal(Object& object, Signal signal) { Change_Signal_Seen(see(object), signal); }

DWORD Release_Seen(Look look, Thread_Record* self)
{
    Object& mutex = *look.object;
    const std::uint64_t nWord = mutex.word.load(std::memory_order_relaxed);
    if (Get_Generation(nWord) != look.generation)
    {
        return ERROR_INVALID_HANDLE;
    }
    if (!is_Owner(nWord, self))
    {
        return ERROR_NOT_OWNER;
    }
    if (mutex.recursion > 0)
    {
        --mutex.recursion;
        return ERROR_SUCCESS;
    }
    Let_Owner_Go(mutex, *self, 0);
    return ERROR_SUCCESS;
}

void Let_Owner_Go(Object& mutex, Thread_Record& self, std::uint32_t state)
{
    Unlink_Owned(mutex, self);
    mutex.recursion = 0;
    std::uint64_t nWord = mutex.word.load(std::memory_order_relaxed);
    for (;;)
    {
        if ((nWord & STATE_ORPHAN) != 0)
        {
            Free_Object(mutex);
            return;
        }
        if ((nWord & STATE_QUEUED) != 0)
        {
            if (let_Owner_Go_Queued(mutex, state))
            {
                return;
            }
            nWord = mutex.word.load(std::memory_order_relaxed);
        }
        else if (mutex.word.compare_exchange_weak(nWord, With_State(nWord, state), std::memory_order_acq_rel,
                                                  std::memory_order_relaxed))
        {
            return;
        }
    }
}

bool Disown_For_Good(Object& mutex)
{
    std::uint64_t nWord = mutex.word.load(std::memory_order_acquire);
    for (;;)
    {
        if (is_Owner(nWord, g_pCurrent_Thread))
        {
            Unlink_Owned(mutex, *g_pCurrent_Thread);
            return true;
        }
        if ((nWord & STATE_OWNER) == 0)
        {
            if (move_On(mutex, nWord))
            {
                return true;
            }
        }
        else if (mutex.word.compare_exchange_weak(nWord, nWord | STATE_ORPHAN, std::memory_order_acq_rel,
                                                  std::memory_order_acquire))
        {
            return false;
        }
    }
}

void Hold(Object& object) { object.word.fetch_or(STATE_QUEUED, std::memory_order_acq_rel); }

void Let_Go(Object& object)
{
    if (object.queue.first == nullptr)
    {
        object.word.fetch_and(~std::uint64_t{STATE_QUEUED}, std::memory_order_acq_rel);
    }
}

bool Can_Take(const Object& object, const Thread_Record& self)
{
    const std::uint32_t nState = Get_State(object.word.load(std::memory_order_acquire));
    return is_Takeable(object.traits.load(std::memory_order_relaxed), nState, self.id);
}

bool Is_Available(const Object& object)
{
    const std::uint32_t nState = Get_State(object.word.load(std::memory_order_acquire));
    return is_Takeable(object.traits.load(std::memory_order_relaxed), nState, 0);
}

bool Give(Object& object, const Thread_Record& thread)
{
    const std::uint64_t nWord = object.word.load(std::memory_order_acquire);
    const std::uint32_t nTraits = object.traits.load(std::memory_order_relaxed);
    if (is_Mutex(nTraits) && is_Owner(nWord, &thread))
    {
        ++object.recursion;
    }
    const std::uint32_t nState = get_State_When_Taken(nTraits, Get_State(nWord), thread.id);
    object.word.store(With_State(nWord, nState), std::memory_order_release);
    return is_Mutex(nTraits) && (Get_State(nWord) & STATE_ABANDONED) != 0;
}

void Receive(Object& object, Thread_Record& self)
{
    if (Get_Kind(object) == Kind::Mutex && object.recursion == 0)
    {
        Link_Owned(object, self);
    }
}

bool Take(Object& object, Thread_Record& self)
{
    const bool bAbandoned = Give(object, self);
    Receive(object, self);
    return bAbandoned;
}

bool Counts_No_Further(const Object& object, const Thread_Record& self)
{
    const std::uint64_t nWord = object.word.load(std::memory_order_relaxed);
    const std::uint32_t nTraits = object.traits.load(std::memory_order_relaxed);
    return is_Mutex(nTraits) && (nTraits & TRAIT_NAMED) == 0 && is_Owner(nWord, &self) &&
           object.recursion == MOST_RECURSIONS;
}

} // namespace qn_platform::kernel
