#ifndef QNLIB_SRC_PLATFORM_KERNEL_NAMED_USE_H
#define QNLIB_SRC_PLATFORM_KERNEL_NAMED_USE_H

#include "platform/kernel/named_state.h"
#include "platform/kernel/object_layout.h"
#include "platform/kernel/object_pool.h"
#include "platform/kernel/page_guard.h"
#include "platform/kernel/thread_record.h"

// Working with a named object for a moment, without sleeping, while another thread may close its last handle.
// A counted reference would cost two locked instructions; instead a thread says in its record what it works
// with, by a plain store, and whoever closes a named object makes all threads' stores visible (membarrier)
// and waits until nobody works with it.

namespace qn_platform::kernel
{

/// Before the first named object: whether marks will do is found out, and stays so.
void Prepare_Uses();
extern std::atomic<bool> g_bMarks_Will_Do;

/// For a named object whose generation has moved on: waits until no other thread works with it. False if the
/// calling thread itself does, which a signal's handler has interrupted.
bool Wait_For_Uses(const Object& object);

class Named_Use
{
public:
    /// Empty when the object that the look found is gone.
    Named_Use(Look look, Thread_Record& self) : m_Self(self), m_bMarked(can_Mark(self))
    {
        m_pObject = m_bMarked ? mark(look, self) : refer(look);
        m_pNamed = m_pObject != nullptr ? static_cast<Named_Object*>(m_pObject->record.load()) : nullptr;
        if (m_pNamed != nullptr && m_pNamed->exposed)
        {
            Let_Faults_Through(self);
        }
    }
    ~Named_Use()
    {
        if (m_bMarked)
        {
            m_Self.in_use.store(nullptr, std::memory_order_release);
        }
        else if (m_pObject != nullptr)
        {
            Release(*m_pObject);
        }
    }
    Named_Use(const Named_Use&) = delete;
    Named_Use& operator=(const Named_Use&) = delete;

    explicit operator bool() const { return m_pNamed != nullptr; }
    Named_Object& operator*() const { return *m_pNamed; }

private:
    /// Not within another use, which a signal's handler has interrupted.
    static bool can_Mark(const Thread_Record& self)
    {
        return g_bMarks_Will_Do.load(std::memory_order_relaxed) &&
               self.in_use.load(std::memory_order_relaxed) == nullptr;
    }

    static Object* mark(Look look, Thread_Record& self)
    {
        self.in_use.store(look.object, std::memory_order_relaxed);
        std::atomic_signal_fence(std::memory_order_seq_cst); // the closer's barrier makes a real one of it
        const std::uint64_t nWord = look.object->word.load(std::memory_order_acquire);
        return Get_Generation(nWord) == look.generation ? look.object : nullptr;
    }

    [[gnu::noinline]] static Object* refer(Look look) { return Get_Reference(look).Detach(); }

    Thread_Record& m_Self;
    Object* m_pObject;
    Named_Object* m_pNamed;
    const bool m_bMarked;
};

} // namespace qn_platform::kernel

#endif
