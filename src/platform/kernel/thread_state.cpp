#include "platform/kernel/thread_state.h"

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

void Thread_State::End()
{
    Object_Reference former;
    const std::lock_guard guard(m_Lock);
    m_bEnded = true;
    former = Object_Reference(m_pToken.exchange(nullptr, std::memory_order_acq_rel));
}

Object_Reference New_Thread_Object()
{
    std::unique_ptr<Thread_State> state(new (std::nothrow) Thread_State);
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
