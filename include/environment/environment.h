#ifndef QNLIB_ENVIRONMENT_ENVIRONMENT_H
#define QNLIB_ENVIRONMENT_ENVIRONMENT_H

#include "lib_api.h"

#include <atomic>

class Lib_Environment_Manager;
class Lib_Environment_Params;
class Lib_Result;

/// What a module keeps for one session of its callers: who they are, how many they are, and the module's own
/// data. Lib_Environment_Manager makes and removes environments; a module gets them from there, and should
/// look at them, lock them and set their user data, and leave the rest to the manager.
///
/// Changes are made with the manager's lock held, which each changing operation takes for itself, also within
/// a section that has it already. The getters take no lock: a picture that has to hold over several calls
/// needs Lock and Unlock around them. The manager must outlive its environments.
///
/// An environment without a manager (null), or whose manager has no lock, works without one; the number of
/// users is right in any case. It stays at 0xFFFFFFFF when there are more.
class LIB_API Lib_Environment
{
public:
    /// No user data, no parameters, no users.
    explicit Lib_Environment(Lib_Environment_Manager* pManager) noexcept;
    Lib_Environment(const Lib_Environment& Source) = delete;

    /// Releases the parameters, under the lock. User data is not freed: that is for the one who set it, and
    /// to be done before.
    ~Lib_Environment();

    /// Takes over every field as it is, without a lock and without releasing anything: both objects have the
    /// same parameters then, and only one of the two may be destroyed. For a caller who knows that.
    Lib_Environment& operator=(const Lib_Environment& Source) noexcept;

    /// Takes the calling thread's identity: the answer and the result are those of
    /// Lib_Environment_Params::Initialize, and the parameters are there afterwards whatever the answer.
    /// Parameters that were there before are filled anew, for an object that shares them as well.
    /// std::bad_alloc changes nothing.
    bool Establish(Lib_Result& result);

    /// Does nothing, and answers true: the place where an environment is released.
    bool Release(Lib_Result& result);

    /// The identity, which stays the environment's; null before Establish.
    Lib_Environment_Params* Get_Environment_Params() const noexcept { return m_pParams; }

    /// Whatever was set last; null at first.
    void* Get_User_Data() const noexcept { return m_pUser_Data.load(std::memory_order_acquire); }

    /// The old value is not freed.
    void Set_User_Data(void* pUser_Data);

    /// How many callers have established this environment and not released it.
    unsigned int Get_Usage_Counter() const noexcept
    {
        return m_dwUsage_Counter.load(std::memory_order_acquire);
    }
    void Increase_Usage_Counter();

    /// Stays at 0.
    void Decrease_Usage_Counter();

    /// Take and give back the manager's lock: recursive, and without a time limit.
    void Lock() const;
    void Unlock() const;

private:
    friend class Lib_Environment_Manager;

    // For those who have the lock.
    void add_User();
    void take_User();

    // Atomic for the getters, which need no lock. The parameters change in Establish alone, which is not for
    // use beside Get_Environment_Params.
    std::atomic<void*> m_pUser_Data = nullptr;
    Lib_Environment_Manager* m_pManager;
    Lib_Environment_Params* m_pParams = nullptr;
    std::atomic<unsigned int> m_dwUsage_Counter = 0;
};

#endif
