// Environments of sessions. The aim for a road of a caller is 400 ns on one thread: the token is read anew
// for each lookup. The peer is what is written by hand for the same purpose: a recursive mutex, a hash map of
// shared pointers, and a thread's own variable that says which session it is of.

#include <lib_environment.h>
#include <lib_foundation.h>
#include <lib_platform.h>

#include "row.h"

#include <memory>
#include <mutex>
#include <semaphore>
#include <stdexcept>
#include <thread>
#include <unordered_map>

namespace
{

struct User_Data
{
    unsigned int m_dwSession;
};

class Ours
{
public:
    Ours() : m_Manager(create, free, prepare, prepare) {}

    void Establish()
    {
        if (!m_Manager.Establish_Environment(result()))
            throw std::runtime_error("no environment");
    }
    void* Get() { return m_Manager.Get_User_Data(result()); }
    Lib_Environment* Get_Environment() { return m_Manager.Get_Environment(result()); }
    void Release(Lib_Environment* pEnvironment)
    {
        if (!m_Manager.Release_Environment(pEnvironment, result()))
            throw std::runtime_error("no environment to release");
    }

private:
    static void* create(Lib_Environment* pEnvironment, Lib_Result&)
    {
        return new User_Data{pEnvironment->Get_Environment_Params()->Get_Session_ID()};
    }
    static bool free(void* pData, Lib_Result&)
    {
        delete static_cast<User_Data*>(pData);
        return true;
    }
    static bool prepare(void*) { return true; }

    static Lib_Result& result()
    {
        static thread_local Lib_Result own;
        return own;
    }

    Lib_Environment_Manager m_Manager;
};

thread_local unsigned int t_nSession = 0;

class By_Hand
{
public:
    using Entry = std::shared_ptr<User_Data>;

    void Establish()
    {
        const std::lock_guard guard(m_Mutex);
        auto& [pData, nUsers] = m_Entries[t_nSession];
        if (!pData)
            pData = std::make_shared<User_Data>(User_Data{t_nSession});
        ++nUsers;
    }
    void* Get()
    {
        const std::lock_guard guard(m_Mutex);
        const auto place = m_Entries.find(t_nSession);
        return place != m_Entries.end() ? place->second.first.get() : nullptr;
    }
    unsigned int Get_Environment() { return t_nSession; }
    void Release(unsigned int nSession)
    {
        const std::lock_guard guard(m_Mutex);
        const auto place = m_Entries.find(nSession);
        if (place != m_Entries.end() && --place->second.second == 0)
            m_Entries.erase(place);
    }

private:
    std::recursive_mutex m_Mutex;
    std::unordered_map<unsigned int, std::pair<Entry, unsigned int>> m_Entries;
};

/// The visit of one more user to an environment that stays: it comes, looks at the data, and goes.
template <class Manager>
class Visit
{
public:
    void* operator()()
    {
        m_Manager.Establish();
        void* const pData = m_Manager.Get();
        m_Manager.Release(m_Environment);
        return pData;
    }

protected:
    Manager m_Manager;
    const decltype(m_Manager.Get_Environment()) m_Environment =
        (m_Manager.Establish(), m_Manager.Get_Environment());
};

/// Each of two threads makes so many visits at once.
template <class Manager>
class Visits_Of_Two
{
public:
    static constexpr int COUNT = 1000;

    ~Visits_Of_Two()
    {
        m_bEnd = true;
        m_Start.release();
        m_Partner.join();
    }

    int operator()()
    {
        m_Start.release();
        visit();
        m_Done.acquire();
        return COUNT;
    }

private:
    void visit()
    {
        for (int i = 0; i < COUNT; ++i)
            benchmark::DoNotOptimize(m_Visit());
    }

    void serve()
    {
        for (m_Start.acquire(); !m_bEnd; m_Start.acquire())
        {
            visit();
            m_Done.release();
        }
    }

    Visit<Manager> m_Visit;
    bool m_bEnd = false;
    std::binary_semaphore m_Start{0};
    std::binary_semaphore m_Done{0};
    std::thread m_Partner{[this] { serve(); }};
};

/// Made with the first work, so a row that is not asked for costs nothing.
template <class Work>
auto lazily()
{
    return [pWork = std::unique_ptr<Work>()]() mutable
    {
        if (!pWork)
            pWork = std::make_unique<Work>();
        return (*pWork)();
    };
}

/// The thread works for a client of that session meanwhile.
struct Client_Of_Ours : Visit<Ours>
{
    void* operator()()
    {
        SetThreadToken(nullptr, m_hToken);
        void* const pData = Visit<Ours>::operator()();
        RevertToSelf();
        return pData;
    }

    const HANDLE m_hToken = Lib_Create_Session_Token(
        m_Environment->Get_Environment_Params()->Get_Session_ID(), TOKEN_QUERY | TOKEN_IMPERSONATE);
};

struct Client_By_Hand : Visit<By_Hand>
{
    void* operator()()
    {
        t_nSession = m_Environment;
        void* const pData = Visit<By_Hand>::operator()();
        t_nSession = 0;
        return pData;
    }
};

template <class Manager>
struct First_And_Last
{
    int operator()()
    {
        m_Manager.Establish();
        m_Manager.Release(m_Manager.Get_Environment());
        return 0;
    }

    Manager m_Manager;
};

} // namespace

void Add_Environment_Rows()
{
    const char* pPeer = "mutex, map";
    const Row visit("environment: come, look, go", 0);
    visit.Add(Row::Ours, lazily<Visit<Ours>>()).Add(pPeer, lazily<Visit<By_Hand>>());
    const Row client("environment: the same under a client's token", 0);
    client.Add(Row::Ours, lazily<Client_Of_Ours>()).Add(pPeer, lazily<Client_By_Hand>());
    const Row two("environment: 1000 visits by each of two threads", 0, Row::Time::Clock);
    two.Add(Row::Ours, lazily<Visits_Of_Two<Ours>>()).Add(pPeer, lazily<Visits_Of_Two<By_Hand>>());
    const Row first("environment: first user and last, with callbacks", 0);
    first.Add(Row::Ours, lazily<First_And_Last<Ours>>()).Add(pPeer, lazily<First_And_Last<By_Hand>>());
}
