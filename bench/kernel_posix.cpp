// The system's own means: eventfd with poll, pthread mutexes and condition variables.

#include "kernel_rows.h"
#include "ping_pong.h"

#include <cstdint>
#include <vector>

#include <poll.h>
#include <pthread.h>
#include <sys/eventfd.h>
#include <sys/mman.h>

namespace
{

/// An event that resets itself, or a lock where it begins set: a descriptor that is awaited by poll.
class Event_Fd
{
public:
    explicit Event_Fd(unsigned int nValue = 0) : m_nFd(eventfd(nValue, EFD_NONBLOCK)) {}
    Event_Fd(Event_Fd&& other) noexcept : m_nFd(std::exchange(other.m_nFd, -1)) {}
    ~Event_Fd()
    {
        if (m_nFd >= 0)
            close(m_nFd);
    }

    void Set() const { eventfd_write(m_nFd, 1); }

    void Wait() const
    {
        pollfd place{m_nFd, POLLIN, 0};
        while (poll(&place, 1, -1) != 1 || !Take())
            ;
    }

    bool Take() const
    {
        eventfd_t value;
        return eventfd_read(m_nFd, &value) == 0;
    }

    int get() const { return m_nFd; }

private:
    int m_nFd;
};

/// The same of a mutex and a condition variable, in memory that a child shares.
class Condition_Event
{
public:
    Condition_Event()
        : m_pShared(new (mmap(nullptr, sizeof(Shared), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1,
                              0)) Shared)
    {
        pthread_mutexattr_t attributes;
        pthread_mutexattr_init(&attributes);
        pthread_mutexattr_setpshared(&attributes, PTHREAD_PROCESS_SHARED);
        pthread_mutex_init(&m_pShared->m_Mutex, &attributes);
        pthread_condattr_t condition;
        pthread_condattr_init(&condition);
        pthread_condattr_setpshared(&condition, PTHREAD_PROCESS_SHARED);
        pthread_cond_init(&m_pShared->m_Condition, &condition);
    }

    void Set() const
    {
        pthread_mutex_lock(&m_pShared->m_Mutex);
        m_pShared->m_bSet = true;
        pthread_cond_signal(&m_pShared->m_Condition);
        pthread_mutex_unlock(&m_pShared->m_Mutex);
    }

    void Wait() const
    {
        pthread_mutex_lock(&m_pShared->m_Mutex);
        while (!m_pShared->m_bSet)
            pthread_cond_wait(&m_pShared->m_Condition, &m_pShared->m_Mutex);
        m_pShared->m_bSet = false;
        pthread_mutex_unlock(&m_pShared->m_Mutex);
    }

private:
    struct Shared
    {
        pthread_mutex_t m_Mutex;
        pthread_cond_t m_Condition;
        bool m_bSet = false;
    };
    Shared* m_pShared; // the pages go with the process
};

template <class Event>
auto set_And_Wait()
{
    return [event = Event()]
    {
        event.Set();
        event.Wait();
        return 0;
    };
}

/// For both processes the descriptors, or the pages, are those made here.
template <class Event>
auto share_Pair()
{
    return [pPing = std::make_shared<Event>(), pPong = std::make_shared<Event>()]
    {
        struct Reference
        {
            Event* m_pEvent;
            void Set() const { m_pEvent->Set(); }
            void Wait() const { m_pEvent->Wait(); }
        };
        return std::pair(Reference{pPing.get()}, Reference{pPong.get()});
    };
}

class Pthread_Mutex
{
public:
    explicit Pthread_Mutex(bool bRobust) : m_pMutex(std::make_unique<pthread_mutex_t>())
    {
        pthread_mutexattr_t attributes;
        pthread_mutexattr_init(&attributes);
        if (bRobust)
        {
            pthread_mutexattr_setrobust(&attributes, PTHREAD_MUTEX_ROBUST);
            pthread_mutexattr_settype(&attributes, PTHREAD_MUTEX_RECURSIVE);
            pthread_mutexattr_setpshared(&attributes, PTHREAD_PROCESS_SHARED);
        }
        pthread_mutex_init(m_pMutex.get(), &attributes);
    }
    Pthread_Mutex(Pthread_Mutex&&) = default;
    ~Pthread_Mutex()
    {
        if (m_pMutex)
            pthread_mutex_destroy(m_pMutex.get());
    }

    auto get() const { return m_pMutex.get(); }

private:
    std::unique_ptr<pthread_mutex_t> m_pMutex;
};

auto lock_And_Unlock(Pthread_Mutex mutex)
{
    return [mutex = std::move(mutex)]
    {
        pthread_mutex_lock(mutex.get());
        return pthread_mutex_unlock(mutex.get());
    };
}

auto wait_For_Last(unsigned int nCount)
{
    std::vector<pollfd> places;
    std::vector<Event_Fd> events(nCount);
    for (const Event_Fd& event : events)
        places.push_back({event.get(), POLLIN, 0});
    return [events = std::move(events), places = std::move(places)]() mutable
    {
        events.back().Set();
        poll(places.data(), places.size(), -1);
        std::size_t nIndex = 0;
        while (places[nIndex].revents == 0 || !events[nIndex].Take())
            ++nIndex;
        return nIndex;
    };
}

} // namespace

void Add_Posix(const Kernel_Rows& rows)
{
    const auto event_fd_lock = []
    {
        return [lock = Event_Fd(1)]
        {
            lock.Wait();
            lock.Set();
            return 0;
        };
    };
    for (const Row* pRow : {&rows.m_SetWait, &rows.m_SetWaitNamed})
        pRow->Add("eventfd", set_And_Wait<Event_Fd>()).Add("pthread", set_And_Wait<Condition_Event>());
    for (const Row* pRow : {&rows.m_Lock, &rows.m_LockNamed})
        pRow->Add("pthread", lock_And_Unlock(Pthread_Mutex(false)))
            .Add("pthread, robust", lock_And_Unlock(Pthread_Mutex(true)))
            .Add("eventfd", event_fd_lock());
    rows.m_MakeEvent.Add("eventfd", [] { return Event_Fd(); });
    rows.m_MakeMutex.Add("pthread", [] { return Pthread_Mutex(false); });
    for (const Row* pRow : {&rows.m_Threads, &rows.m_ThreadsNamed})
        pRow->Add("eventfd", ping_pong::Work<ping_pong::Thread_Partner>(share_Pair<Event_Fd>()))
            .Add("pthread", ping_pong::Work<ping_pong::Thread_Partner>(share_Pair<Condition_Event>()));
    rows.m_Processes.Add("eventfd", ping_pong::Work<ping_pong::Process_Partner>(share_Pair<Event_Fd>()))
        .Add("pthread", ping_pong::Work<ping_pong::Process_Partner>(share_Pair<Condition_Event>()));
    for (const auto& [nCount, local, named] : rows.m_WaitAny)
    {
        local.Add("eventfd", wait_For_Last(nCount));
        named.Add("eventfd", wait_For_Last(nCount));
    }
}
