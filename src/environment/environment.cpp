#include "environment/environment.h"

#include "environment/environment_manager.h"
#include "environment/environment_params.h"
#include "foundation/lib_result.h"
#include "foundation/trace_text.h"

namespace
{

/// Has an environment's lock as long as it lives.
class Locked
{
public:
    explicit Locked(const Lib_Environment& Environment) : m_Environment(Environment) { Environment.Lock(); }
    Locked(const Locked&) = delete;
    Locked& operator=(const Locked&) = delete;
    ~Locked() { m_Environment.Unlock(); }

private:
    const Lib_Environment& m_Environment;
};

} // namespace

Lib_Environment::Lib_Environment(Lib_Environment_Manager* pManager) noexcept : m_pManager(pManager) {}

Lib_Environment::~Lib_Environment()
{
    {
        const Locked locked(*this);
        if (Get_Usage_Counter() != 0)
        {
            LIBT_PRINT_WARNING(Trace_Text<L"Usage counter not 0 in ~Lib_Environment">());
        }
        if (Get_User_Data() != nullptr)
        {
            LIBT_PRINT_WARNING(Trace_Text<L"User data not NULL in ~Lib_Environment">());
            m_pUser_Data = nullptr;
        }
        delete m_pParams;
        m_pParams = nullptr;
    }
    m_pManager = nullptr;
}

Lib_Environment& Lib_Environment::operator=(const Lib_Environment& Source) noexcept
{
    m_pUser_Data = Source.m_pUser_Data.load();
    m_pManager = Source.m_pManager;
    m_pParams = Source.m_pParams;
    m_dwUsage_Counter = Source.m_dwUsage_Counter.load();
    return *this;
}

bool Lib_Environment::Establish(Lib_Result& result)
{
    const Locked locked(*this);
    if (m_pParams == nullptr)
    {
        m_pParams = new Lib_Environment_Params;
    }
    return m_pParams->Initialize(result);
}

bool Lib_Environment::Release(Lib_Result&) { return true; }

void Lib_Environment::Set_User_Data(void* pUser_Data)
{
    const Locked locked(*this);
    m_pUser_Data.store(pUser_Data, std::memory_order_release);
}

void Lib_Environment::Increase_Usage_Counter()
{
    const Locked locked(*this);
    add_User();
}

void Lib_Environment::Decrease_Usage_Counter()
{
    const Locked locked(*this);
    take_User();
}

void Lib_Environment::add_User()
{
    unsigned int nUsers = m_dwUsage_Counter;
    while (nUsers < 0xFFFFFFFF && !m_dwUsage_Counter.compare_exchange_weak(nUsers, nUsers + 1))
        ;
}

void Lib_Environment::take_User()
{
    unsigned int nUsers = m_dwUsage_Counter;
    while (nUsers != 0 && !m_dwUsage_Counter.compare_exchange_weak(nUsers, nUsers - 1))
        ;
    if (nUsers == 0)
    {
        LIBT_PRINT_WARNING(Trace_Text<L"tried to decrease usage counter from 0 for Lib_Environment">());
    }
}

void Lib_Environment::Lock() const
{
    if (m_pManager != nullptr)
    {
        m_pManager->Lock();
    }
}

void Lib_Environment::Unlock() const
{
    if (m_pManager != nullptr)
    {
        m_pManager->Unlock();
    }
}
