#include "environment/environment_manager.h"

#include "environment/environment.h"
#include "environment/environment_params.h"
#include "foundation/lib_result.h"
#include "foundation/trace_text.h"
#include "kernel/lib_mutex.h"
#include "lib_platform.h"

#include <memory>
#include <utility>

namespace
{

using Environments = LibT_Set<Lib_Environment*>;

constexpr unsigned int SOURCE_PLATFORM = 1;
constexpr unsigned int CODE_NOT_FOUND = 0x80090011;
constexpr unsigned int CODE_NO_ENVIRONMENT = 0x80090027;

/// The first environment for which the function answers true; null if it does for none.
template <class Function>
Lib_Environment* find_If(const Environments& environments, const Function& function)
{
    Environments::Iterator walk;
    for (walk.Start(environments); !walk.Is_End(); walk.Next())
    {
        Lib_Environment* const pEnvironment = *walk.m_pNode->m_pValue;
        if (function(*pEnvironment))
        {
            return pEnvironment;
        }
    }
    return nullptr;
}

/// The first environment of the walk; null for an empty set.
Lib_Environment* get_First(const Environments& environments)
{
    return find_If(environments, [](const Lib_Environment&) { return true; });
}

/// Arranges the root's subtrees so that the others are walked in the order they have now when it is removed:
/// what is greater comes behind what is less.
void prepare_To_Remove_First(const Environments& environments)
{
    Environments::Iterator walk;
    walk.Start(environments);
    if (walk.Is_End() || walk.m_pNode->m_pLesser == nullptr)
    {
        return;
    }
    Environments::Node* pEnd = walk.m_pNode->m_pLesser;
    while (pEnd->m_pGreater != nullptr)
    {
        pEnd = pEnd->m_pGreater;
    }
    pEnd->m_pGreater = std::exchange(walk.m_pNode->m_pGreater, nullptr);
}

} // namespace

/// Has the lock as long as it lives, if that was to be had.
class Lib_Environment_Manager::Guard
{
public:
    explicit Guard(const Lib_Environment_Manager& Manager)
        : m_Mutex(*Manager.m_pMutex), m_bLocked(m_Mutex.Wait(INFINITE) != WAIT_FAILED)
    {
    }
    Guard(const Guard&) = delete;
    Guard& operator=(const Guard&) = delete;
    ~Guard()
    {
        if (m_bLocked)
        {
            m_Mutex.Release();
        }
    }

    explicit operator bool() const { return m_bLocked; }

    /// Whether it is locked; otherwise the result tells why.
    bool Is_Locked(Lib_Result& result) const
    {
        if (!m_bLocked)
        {
            result.Set_Result(GetLastError(), SOURCE_PLATFORM);
        }
        return m_bLocked;
    }

private:
    Lib_Mutex& m_Mutex;
    bool m_bLocked;
};

Lib_Environment_Manager::Lib_Environment_Manager(void* (*pfnCreate_User_Data)(Lib_Environment*, Lib_Result&),
                                                 bool (*pfnFree_User_Data)(void*, Lib_Result&),
                                                 bool (*pfnPrepare_Release)(void*),
                                                 bool (*pfnIs_Ready_For_Release)(void*))
    : m_pfnCreate_User_Data(pfnCreate_User_Data), m_pfnFree_User_Data(pfnFree_User_Data),
      m_pfnIs_Ready_For_Release(pfnIs_Ready_For_Release), m_pfnPrepare_Release(pfnPrepare_Release)
{
    auto pMutex = std::make_unique<Lib_Mutex>();
    pMutex->Create(nullptr, false);
    m_pEnvironments = new Environments;
    m_pMutex = pMutex.release();
}

Lib_Environment_Manager::~Lib_Environment_Manager()
{
    {
        const Guard guard(*this);
        remove_All();
        m_pEnvironments->Clear();
        delete m_pEnvironments;
    }
    m_pMutex->Close();
    delete m_pMutex;
}

/// Begins anew with the set's first environment each time, so that it doesn't matter what a callback
/// releases.
void Lib_Environment_Manager::remove_All() noexcept
{
    while (Lib_Environment* const pEnvironment = get_First(*m_pEnvironments))
    {
        try
        {
            Lib_Result result;
            free_User_Data(*pEnvironment, result);
        }
        catch (...) // a destructor's caller has no use for it, and the others have to go too
        {
        }
        prepare_To_Remove_First(*m_pEnvironments);
        m_pEnvironments->Remove(pEnvironment);
        delete pEnvironment;
    }
}

Lib_Environment_Manager&
Lib_Environment_Manager::operator=(const Lib_Environment_Manager& Source) noexcept = default;

bool Lib_Environment_Manager::Establish_Environment(Lib_Result& result)
{
    const Guard guard(*this);
    if (!guard.Is_Locked(result))
    {
        return false;
    }
    Lib_Environment* pEnvironment = find_Callers(result);
    if (pEnvironment != nullptr)
    {
        LIBT_PRINT_STRING(Trace_Text<L"Environment found. no creation is made">());
    }
    else
    {
        pEnvironment = make_Environment(result);
    }
    if (pEnvironment == nullptr)
    {
        return false;
    }
    pEnvironment->add_User();
    return true;
}

/// For the caller, in the set, without a user; null if that failed.
Lib_Environment* Lib_Environment_Manager::make_Environment(Lib_Result& result)
{
    LIBT_PRINT_STRING(Trace_Text<L"CREATING NEW ENVIRONMENT">());
    LIBT_PRINT_THREAD_INFO(false);
    auto pEnvironment = std::make_unique<Lib_Environment>(this);
    if (!pEnvironment->Establish(result) || !fill_Environment(*pEnvironment, result))
    {
        return nullptr;
    }
    insert(*pEnvironment);
    return pEnvironment.release();
}

bool Lib_Environment_Manager::fill_Environment(Lib_Environment& Environment, Lib_Result& result) const
{
    if (m_pfnCreate_User_Data == nullptr)
    {
        return true;
    }
    void* const pUser_Data = m_pfnCreate_User_Data(&Environment, result);
    if (pUser_Data == nullptr)
    {
        LIBT_PRINT_ERROR(Trace_Text<L"failed to create user data">());
        Lib_Result ignored;
        Environment.Release(ignored);
        return false;
    }
    Environment.Set_User_Data(pUser_Data);
    return true;
}

void Lib_Environment_Manager::insert(Lib_Environment& Environment)
{
    try
    {
        m_pEnvironments->Insert(&Environment);
    }
    catch (...)
    {
        if (Environment.Get_User_Data() != nullptr)
        {
            Lib_Result ignored;
            free_User_Data(Environment, ignored);
        }
        throw;
    }
}

bool Lib_Environment_Manager::Release_Environment(Lib_Environment* pEnvironment, Lib_Result& result)
{
    const Guard guard(*this);
    if (!guard.Is_Locked(result))
    {
        return false;
    }
    if (!contains(pEnvironment))
    {
        result.Set_Result(ERROR_INVALID_PARAMETER, SOURCE_PLATFORM);
        return false;
    }
    pEnvironment->take_User();
    return check(pEnvironment, result);
}

bool Lib_Environment_Manager::Check_Environment_And_Release(Lib_Environment* pEnvironment, Lib_Result& result)
{
    if (pEnvironment == nullptr)
    {
        return false;
    }
    const Guard guard(*this);
    if (!guard.Is_Locked(result))
    {
        return false;
    }
    if (!contains(pEnvironment))
    {
        LIBT_PRINT_ERROR(Trace_Text<L"tried to release invalid environment">());
        result.Set_Result_Code(CODE_NO_ENVIRONMENT);
        return false;
    }
    return check(pEnvironment, result);
}

/// Goes on with an environment of the set when it may have lost its last user.
bool Lib_Environment_Manager::check(Lib_Environment* pEnvironment, Lib_Result& result)
{
    const unsigned int nUsers = pEnvironment->Get_Usage_Counter();
    if (nUsers != 0)
    {
        LIBT_PRINT_STRING(Trace_Text<L"Usage counter not 0 - no release ">());
        LIBT_PRINT_DWORD(Trace_Text<L"usage counter is">(), nUsers);
        return true;
    }
    if (!is_Ready(*pEnvironment))
    {
        LIBT_PRINT_WARNING(Trace_Text<L"Environment is not ready for release">());
        result.Set_Result(ERROR_BUSY, SOURCE_PLATFORM);
        return true;
    }
    return remove(pEnvironment, result);
}

bool Lib_Environment_Manager::is_Ready(const Lib_Environment& Environment) const
{
    if (m_pfnPrepare_Release != nullptr)
    {
        m_pfnPrepare_Release(Environment.Get_User_Data());
    }
    return m_pfnIs_Ready_For_Release == nullptr || m_pfnIs_Ready_For_Release(Environment.Get_User_Data());
}

bool Lib_Environment_Manager::remove(Lib_Environment* pEnvironment, Lib_Result& result)
{
    LIBT_PRINT_STRING(Trace_Text<L"removing environment.">());
    LIBT_PRINT_THREAD_INFO(true);
    bool bFreed = false;
    try
    {
        bFreed = free_User_Data(*pEnvironment, result);
    }
    catch (...) // asked a second time, it might free the same data once more
    {
        drop(pEnvironment);
        throw;
    }
    pEnvironment->Release(result);
    drop(pEnvironment);
    return bFreed;
}

void Lib_Environment_Manager::drop(Lib_Environment* pEnvironment)
{
    m_pEnvironments->Remove(pEnvironment);
    delete pEnvironment;
    const auto nLeft = static_cast<unsigned int>(m_pEnvironments->Get_Num_Elements());
    LIBT_PRINT_DWORD(Trace_Text<L"environments left">(), nLeft);
}

/// True if there is no callback for it; the user data stays then.
bool Lib_Environment_Manager::free_User_Data(Lib_Environment& Environment, Lib_Result& result) const
{
    if (m_pfnFree_User_Data == nullptr)
    {
        return true;
    }
    const bool bFreed = m_pfnFree_User_Data(Environment.Get_User_Data(), result);
    Environment.Set_User_Data(nullptr);
    return bFreed;
}

Lib_Environment* Lib_Environment_Manager::Get_Environment(Lib_Result& result)
{
    const Guard guard(*this);
    return guard.Is_Locked(result) ? find_Callers(result) : nullptr;
}

/// Get_Environment for those who have the lock.
Lib_Environment* Lib_Environment_Manager::find_Callers(Lib_Result& result) const
{
    Lib_Environment_Params caller;
    if (!caller.Initialize(result))
    {
        LIBT_PRINT_ERROR(Trace_Text<L"Couldn't init obj params">());
        return nullptr;
    }
    Lib_Environment* const pEnvironment =
        find_If(*m_pEnvironments, [&](const Lib_Environment& environment)
                { return caller == *environment.Get_Environment_Params(); });
    if (pEnvironment == nullptr)
    {
        result.Set_Result(CODE_NOT_FOUND, SOURCE_PLATFORM);
    }
    return pEnvironment;
}

void* Lib_Environment_Manager::Get_User_Data(Lib_Result& result)
{
    const Guard guard(*this);
    if (!guard.Is_Locked(result))
    {
        return nullptr;
    }
    const Lib_Environment* const pEnvironment = find_Callers(result);
    void* const pUser_Data = pEnvironment != nullptr ? pEnvironment->Get_User_Data() : nullptr;
    if (pUser_Data == nullptr)
    {
        result.Set_Result(CODE_NOT_FOUND, SOURCE_PLATFORM);
    }
    return pUser_Data;
}

Lib_Environment* Lib_Environment_Manager::Get_Environment_For_User_Data(void* pUser_Data) const
{
    const Guard guard(*this);
    return guard ? find_If(*m_pEnvironments, [pUser_Data](const Lib_Environment& environment)
                           { return environment.Get_User_Data() == pUser_Data; })
                 : nullptr;
}

bool Lib_Environment_Manager::Is_Valid_Environment(Lib_Environment* pEnvironment) const
{
    if (pEnvironment == nullptr)
    {
        return false;
    }
    const Guard guard(*this);
    return guard && contains(pEnvironment);
}

/// Is_Valid_Environment for those who have the lock.
bool Lib_Environment_Manager::contains(const Lib_Environment* pEnvironment) const
{
    return pEnvironment != nullptr && find_If(*m_pEnvironments, [=](const Lib_Environment& environment)
                                              { return &environment == pEnvironment; }) != nullptr;
}

void Lib_Environment_Manager::Enum_Environments(bool (*pfnFunction)(Lib_Environment*, long long),
                                                long long nContext) const
{
    const Guard guard(*this);
    if (guard && pfnFunction != nullptr)
    {
        find_If(*m_pEnvironments,
                [=](Lib_Environment& environment) { return !pfnFunction(&environment, nContext); });
    }
}

void Lib_Environment_Manager::Lock() const { m_pMutex->Wait(INFINITE); }

void Lib_Environment_Manager::Unlock() const { m_pMutex->Release(); }
