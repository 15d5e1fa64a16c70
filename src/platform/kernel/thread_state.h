#ifndef QNLIB_SRC_PLATFORM_KERNEL_THREAD_STATE_H
#define QNLIB_SRC_PLATFORM_KERNEL_THREAD_STATE_H

#include "platform/kernel/object.h"
#include "platform/kernel/ranked_lock.h"

#include <atomic>

namespace qn_platform::kernel
{

/// What is known of a thread for as long as it runs or a handle stands for it: the record behind an object of
/// the kind Thread. Any thread may use it, with a reference on the object.
class Thread_State
{
public:
    Thread_State() = default;
    Thread_State(const Thread_State&) = delete;
    Thread_State& operator=(const Thread_State&) = delete;
    ~Thread_State();

    /// The token that the thread bears; empty if it bears none.
    Object_Reference Get_Token() const;

    /// The token is borne from now on; none if it is empty. False when the thread has ended.
    bool Set_Token(Object_Reference token);

    /// At the thread's end: puts off the token.
    void End();

private:
    mutable Ranked_Lock m_Lock{Lock_Rank::Borne_Token};
    std::atomic<Object*> m_pToken{nullptr}; // with a reference; changed under the lock
    bool m_bEnded = false;                  // under the lock
};

/// What handles to a thread are to stand for. Empty, last error 8, when memory is short.
Object_Reference New_Thread_Object();

/// The state behind an object that Find_Object found as a thread.
inline Thread_State& Get_Thread_State(const Object& object)
{
    return *static_cast<Thread_State*>(Get_Record(object));
}

/// The token that the calling thread bears; empty if it bears none.
Object_Reference Get_Own_Token();

} // namespace qn_platform::kernel

#endif
