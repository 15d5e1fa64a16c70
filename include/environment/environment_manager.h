#ifndef QNLIB_ENVIRONMENT_ENVIRONMENT_MANAGER_H
#define QNLIB_ENVIRONMENT_ENVIRONMENT_MANAGER_H

#include "foundation/typed_set.h"
#include "lib_api.h"

class Lib_Environment;
class Lib_Mutex;
class Lib_Result;

/// Gives a module one shared state object for each session of its callers: made for the session's first user,
/// counted, and taken apart after its last. A thread calls Establish_Environment when it starts work,
/// Get_User_Data or Get_Environment as often as it likes, and to finish Release_Environment with what
/// Get_Environment gave. Which environment it is follows from the thread's token, which is read anew each
/// time, so a service's thread that impersonates a client works in the client's environment.
///
/// An environment belongs to a caller if the caller's Lib_Environment_Params, on the left, equal its own; the
/// first one in the set's order of walking is taken.
///
/// | state of an environment | Establish_Environment   | the last Release_Environment, a check at 0       |
/// |-------------------------|-------------------------|--------------------------------------------------|
/// | not there               | made, one user          | refused                                          |
/// | in use                  | one user more           | one user less; at 0 as below                     |
/// | no user, kept           | one user, its data kept | `prepare`, then `ready`: kept, or freed and gone |
///
/// The four callbacks run on the thread that called the manager, with its lock held. Each may be null, and is
/// left out then.
///
/// | callback | given               | when                                       | its answer              |
/// |----------|---------------------|--------------------------------------------|-------------------------|
/// | create   | environment, result | for a new environment, not yet to be found | its data; null: failure |
/// | prepare  | user data           | each time the last user is found gone      | does not count          |
/// | ready    | user data           | directly after `prepare`                   | false: kept             |
/// | free     | user data, result   | at removal; for each one left at the end   | that of the check       |
///
/// Threads: any thread may call anything at any time but construction, assignment and destruction. One
/// recursive lock is held through every operation, callbacks included. So a callback may call the manager,
/// but must not wait for another thread that needs it, and must not release the environment that it is called
/// for. A user that a callback adds to an environment being removed does not keep it, and a `create` that
/// establishes its own session again makes a second environment for it. A lock that its owner's thread left
/// behind goes to the next caller.
///
/// Results: the answer decides. An operation that answers true may leave a code behind, such as 0x80090011 or
/// 1008 from looking for an environment; none clears it. The library's codes have the source 1.
///
/// No lock: if the manager's mutex could not be created, the manager refuses to work. Lookups find nothing,
/// other operations fail, no callback runs, and a result holds the platform's code of the failed wait (6).
/// Lock and Unlock do nothing then.
///
/// Exceptions: std::bad_alloc leaves an operation before it has changed anything. What a callback throws
/// leaves too, from every operation but the destructor. The lock is always given back, and
/// - when the `create` or memory for the new environment fails, that environment is gone; user data that
///   `create` had answered goes to `free`, with a result that nobody sees;
/// - when `prepare` or `ready` throws, the environment stays, without users;
/// - when `free` throws, the environment is gone as it is after an answer.
class LIB_API Lib_Environment_Manager
{
public:
    /// Prepare comes before ready. If the mutex cannot be created, see above. Throws std::bad_alloc.
    Lib_Environment_Manager(void* (*pfnCreate_User_Data)(Lib_Environment*, Lib_Result&),
                            bool (*pfnFree_User_Data)(void*, Lib_Result&), bool (*pfnPrepare_Release)(void*),
                            bool (*pfnIs_Ready_For_Release)(void*));

    Lib_Environment_Manager(const Lib_Environment_Manager& Source) = delete;

    /// Gives the user data of every environment that is left to `free`, in the set's order of walking and
    /// with a result that nobody sees, whatever the number of users; the other callbacks do not run.
    /// Environments are destroyed and freed also when there is no `free`, or when it throws, which nobody
    /// sees either. Environments that `free` looks up or releases meanwhile are handled properly; it must not
    /// establish new ones, which would have to be freed in their turn.
    ~Lib_Environment_Manager();

    /// Takes over every field as it is: both managers have the same environments and the same lock then, and
    /// only one of the two may be destroyed. Environments and lock that this manager had are forgotten, not
    /// released. For a caller who knows that.
    Lib_Environment_Manager& operator=(const Lib_Environment_Manager& Source) noexcept;

    /// Finds or makes the caller's environment and adds one user. False, with nothing changed: the identity
    /// could not be read (the platform's code), or `create` answered null (its own result).
    bool Establish_Environment(Lib_Result& result);

    /// Takes one user away, at most to 0, and goes on as Check_Environment_And_Release. 87 when it is not an
    /// environment of this manager.
    bool Release_Environment(Lib_Environment* pEnvironment, Lib_Result& result);

    /// Removes the environment if it has no users and the module agrees. True means only that nothing failed:
    ///
    /// | case                        | answer          | result                                            |
    /// |-----------------------------|-----------------|---------------------------------------------------|
    /// | null                        | false           | untouched                                         |
    /// | not one of this manager     | false           | code 0x80090027, the source untouched             |
    /// | it has users                | true            | untouched                                         |
    /// | `ready` answered false      | true            | 170, source 1                                     |
    /// | removed                     | that of `free`, | what `free` wrote                                 |
    /// |                             | else true       |                                                   |
    bool Check_Environment_And_Release(Lib_Environment* pEnvironment, Lib_Result& result);

    /// The caller's environment, which stays the manager's: good for as long as the caller is one of its
    /// users or holds the lock. Null when there is none (0x80090011) or the identity could not be read (the
    /// platform's code).
    Lib_Environment* Get_Environment(Lib_Result& result);

    /// The user data of the caller's environment. Null when there is no environment or no user data, or the
    /// identity could not be read: 0x80090011 in each case.
    void* Get_User_Data(Lib_Result& result);

    /// The first environment with that user data, null being that of one without. As Get_Environment, but
    /// there is no report.
    Lib_Environment* Get_Environment_For_User_Data(void* pUser_Data) const;

    /// Whether it is an environment of this manager; it is not looked into.
    bool Is_Valid_Environment(Lib_Environment* pEnvironment) const;

    /// Calls the function for each environment, with the lock held throughout, until it answers false. It
    /// must not release environments; it may look at them and set their user data. std::bad_alloc may leave
    /// when some have been visited.
    void Enum_Environments(bool (*pfnFunction)(Lib_Environment*, long long), long long nContext) const;

    /// Take and give back the lock, without a time limit, as many times as taken.
    void Lock() const;
    void Unlock() const;

private:
    class Guard;

    Lib_Environment* find_Callers(Lib_Result& result) const;
    bool contains(const Lib_Environment* pEnvironment) const;
    Lib_Environment* make_Environment(Lib_Result& result);
    bool fill_Environment(Lib_Environment& Environment, Lib_Result& result) const;
    void insert(Lib_Environment& Environment);
    bool check(Lib_Environment* pEnvironment, Lib_Result& result);
    bool is_Ready(const Lib_Environment& Environment) const;
    bool remove(Lib_Environment* pEnvironment, Lib_Result& result);
    void drop(Lib_Environment* pEnvironment);
    bool free_User_Data(Lib_Environment& Environment, Lib_Result& result) const;
    void remove_All() noexcept;

    LibT_Set<Lib_Environment*>* m_pEnvironments; // owned
    Lib_Mutex* m_pMutex;                         // owned
    void* (*m_pfnCreate_User_Data)(Lib_Environment*, Lib_Result&);
    bool (*m_pfnFree_User_Data)(void*, Lib_Result&);
    bool (*m_pfnIs_Ready_For_Release)(void*);
    bool (*m_pfnPrepare_Release)(void*);
};

#endif
