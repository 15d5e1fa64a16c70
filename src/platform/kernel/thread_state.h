#ifndef QNLIB_SRC_PLATFORM_KERNEL_THREAD_STATE_H
#define QNLIB_SRC_PLATFORM_KERNEL_THREAD_STATE_H

#include "platform/kernel/object.h"
#include "platform/kernel/ranked_lock.h"
#include "platform/threads.h"

#include <atomic>
#include <cstdint>

namespace qn_platform::kernel
{

/// How far a thread is.
enum class Launch : std::uint32_t
{
    Suspended, // it waits
    Released,  // it runs its procedure, or will, or did; a reference on its object is the thread's own
    Cancelled, // it ends without that; as above
    Forsaken   // it ends without that and deletes its state, since no object stands for it any more
};

/// What is known of a thread for as long as it runs or a handle stands for it: the record behind an object of
/// the kind Thread. Any thread may use it, with a reference on the object.
class Thread_State
{
public:
    /// `id` is 0 for a thread that has yet to tell.
    explicit Thread_State(std::uint32_t id) : m_nId(id) {}
    Thread_State(const Thread_State&) = delete;
    Thread_State& operator=(const Thread_State&) = delete;
    ~Thread_State();

    /// The token that the thread bears; empty if it bears none.
    Object_Reference Get_Token() const;

    /// The token is borne from now on; none if it is empty. False when the thread has ended.
    bool Set_Token(Object_Reference token);

    /// Sleeps until the thread has told it, which is the first thing that it does.
    std::uint32_t Get_Id();

    /// STILL_ACTIVE until the thread has ended.
    DWORD Get_Exit_Code() const { return m_dwExit_Code.load(std::memory_order_acquire); }

    /// Whether it has ended, or does without its procedure.
    bool Is_Ending() const
    {
        return m_nLaunch.load(std::memory_order_acquire) == get_Word(Launch::Cancelled) ||
               m_bEnded.load(std::memory_order_acquire);
    }

    /// Before there is a thread: whether it shall wait for the following.
    void Set_Suspended(bool suspended)
    {
        m_nLaunch.store(get_Word(suspended ? Launch::Suspended : Launch::Released),
                        std::memory_order_relaxed);
    }

    /// Lets a suspended thread go on: to its procedure, or past that with an exit code. False if it is not
    /// suspended. `own` is the object of this state: the thread gets a reference.
    bool Release(Object& own) { return let_Go(own, Launch::Released, 0); }
    bool Cancel(Object& own, DWORD exit_code) { return let_Go(own, Launch::Cancelled, exit_code); }

    /// For the last reference on the object: deletes the state, or has a suspended thread end and do that.
    static void Dispose(Thread_State* state);

    // For the thread itself.
    void Tell_Id(std::uint32_t id);
    Launch Wait_For_Launch() const; // not Suspended
    DWORD Get_Cancel_Code() const { return m_dwCancel_Code; }
    void End(DWORD exit_code); // puts off the token

private:
    static constexpr std::uint32_t ASKED = 0x80000000;
    static constexpr std::uint32_t get_Word(Launch launch) { return static_cast<std::uint32_t>(launch); }

    bool let_Go(Object& own, Launch launch, DWORD exit_code);

    mutable Ranked_Lock m_Lock{Lock_Rank::Thread_State};
    std::atomic<Object*> m_pToken{nullptr}; // with a reference; changed under the lock
    std::atomic<bool> m_bEnded{false};      // set under the lock
    DWORD m_dwCancel_Code = 0;              // written before the thread is let go
    std::atomic<DWORD> m_dwExit_Code{STILL_ACTIVE};
    std::atomic<std::uint32_t> m_nId; // futex word; 0: not told yet; ASKED: somebody sleeps for that
    std::atomic<std::uint32_t> m_nLaunch{get_Word(Launch::Released)}; // futex word; changed under the lock
};

/// What handles to a thread are to stand for. Empty, last error 8, when memory is short.
Object_Reference New_Thread_Object(std::uint32_t id);

/// The state behind an object that Find_Object found as a thread.
inline Thread_State& Get_Thread_State(const Object& object)
{
    return *static_cast<Thread_State*>(Get_Record(object));
}

/// The token that the calling thread bears; empty if it bears none.
Object_Reference Get_Own_Token();

} // namespace qn_platform::kernel

#endif
