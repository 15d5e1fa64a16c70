#include "platform/kernel/thread_state.h"

#include "platform/kernel/futex.h"
#include "platform/kernel/object_pool.h"
#include "platform/kernel/thread_record.h"

#include <memory>
#include <mutex>
#include <new>

namespace qn_platform::kernel
{

Thread_State::~Thread_State() { const Object_Reference last(m_pToken.load(std::memory_order_relaxed)); }

Object_Reference Thread_State::Get_Token() const
{
    // Most threads bear none, and are through without the lock.
    if (m_pToken.load(std::memory_order_acquire) == nullptr)
    {
        return {};
    }
    const std::lock_guard guard(m_Lock);
    Object* const pToken = m_pToken.load(std::memory_order_relaxed);
    return pToken != nullptr ? Share(*pToken) : Object_Reference();
}

bool Thread_State::Set_Token(Object_Reference token)
{
    Object_Reference former; // goes after the lock
    const std::lock_guard guard(m_Lock);
    if (m_bEnded)
    {
        return false;
    }
    former = Object_Reference(m_pToken.exchange(token.Detach(), std::memory_order_acq_rel));
    return true;
}

std::uint32_t Thread_State::Get_Id()
{
    std::uint32_t nId = m_nId.load(std::memory_order_acquire);
    if (nId != 0 && nId != ASKED)
    {
        return nId;
    }
    do
    {
        if (nId == ASKED || m_nId.compare_exchange_weak(nId, ASKED, std::memory_order_acq_rel))
        {
            Futex_Wait(m_nId, ASKED, nullptr);
            nId = m_nId.load(std::memory_order_acquire);
        }
    } while (nId == 0 || nId == ASKED);
    Futex_Wake_One(m_nId); // the next one that sleeps
    return nId;
}

void Thread_State::Tell_Id(std::uint32_t id)
{
    if (m_nId.exchange(id, std::memory_order_acq_rel) == ASKED)
    {
        Futex_Wake_One(m_nId);
    }
}

bool Thread_State::let_Go(Object& own, Launch launch, DWORD exit_code)
{
    Object_Reference of_thread = Share(own);
    {
        const std::lock_guard guard(m_Lock);
        if (m_nLaunch.load(std::memory_order_relaxed) != get_Word(Launch::Suspended))
        {
            return false;
        }
        m_dwCancel_Code = exit_code;
        m_nLaunch.store(get_Word(launch), std::memory_order_release);
        of_thread.Detach();
    }
    Futex_Wake_One(m_nLaunch);
    return true;
}

void Thread_State::Dispose(Thread_State* state)
{
    if (state->m_nLaunch.load(std::memory_order_acquire) != get_Word(Launch::Suspended))
    {
        delete state;
        return;
    }
    // Nobody but the thread itself knows the state any more, and from here on it is the thread's. A wake-up
    // that comes when it has freed the memory wakes nobody, or somebody who looks again.
    state->Set_Token({});
    const std::atomic<std::uint32_t>& launch = state->m_nLaunch;
    state->m_nLaunch.store(get_Word(Launch::Forsaken), std::memory_order_release);
    Futex_Wake_One(launch);
}

Launch Thread_State::Wait_For_Launch() const
{
    std::uint32_t nLaunch = m_nLaunch.load(std::memory_order_acquire);
    while (nLaunch == get_Word(Launch::Suspended))
    {
        Futex_Wait(m_nLaunch, nLaunch, nullptr);
        nLaunch = m_nLaunch.load(std::memory_order_acquire);
    }
    return static_cast<Launch>(nLaunch);
}

void Thread_State::End(DWORD exit_code)
{
    Object_Reference former; // goes after the lock
    const std::lock_guard guard(m_Lock);
    m_bEnded = true;
    former = Object_Reference(m_pToken.exchange(nullptr, std::memory_order_acq_rel));
    m_dwExit_Code.store(exit_code, std::memory_order_release);
}

Object_Reference New_Thread_Object(std::uint32_t id)
{
    std::unique_ptr<Thread_State> state(new (std::nothrow) Thread_State(id));
    if (state == nullptr)
    {
        Fail(ERROR_NOT_ENOUGH_MEMORY);
        return {};
    }
    Object_Reference object = New_Object(Get_Traits(Kind::Thread), 0);
    if (object)
    {
        object->record.store(state.release(), std::memory_order_release);
    }
    return object;
}

Object_Reference Get_Own_Token()
{
    const Thread_Record* const pSelf = g_pCurrent_Thread;
    return pSelf != nullptr && pSelf->object != nullptr ? Get_Thread_State(*pSelf->object).Get_Token()
                                                        : Object_Reference();
}

} // namespace qn_platform::kernel
