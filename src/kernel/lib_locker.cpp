#include "kernel/lib_locker.h"

#include <new>

// Those who have the lock get the counter's order from it. One who sets it without the lock, a worker that
// fails, publishes by it what it did before, and is not undone by an owner who raises or lowers it meanwhile.

namespace
{

/// Nobody is told of a failure: the lock is then one that is never to be had.
void make(Lib_Mutex& Mutex)
{
    try
    {
        Mutex.Create_Public_With_Unique_Name(true, false);
    }
    catch (const std::bad_alloc&)
    {
    }
}

} // namespace

Lib_Locker::Lib_Locker() { make(m_Mutex); }

Lib_Locker::Lib_Locker(const Lib_Locker& Source) = default;

Lib_Locker::~Lib_Locker() { m_Mutex.Close(); }

Lib_Locker& Lib_Locker::operator=(const Lib_Locker& Source) = default;

bool Lib_Locker::Lock(unsigned long dwMilliseconds) { return m_Mutex.Wait_Until_Object_0(dwMilliseconds); }

bool Lib_Locker::Unlock() { return m_Mutex.Release(); }

void Lib_Locker::lock() { m_Mutex.Wait(INFINITE); }

void Lib_Locker::unlock() { m_Mutex.Release(); }

Lib_Locker_With_Counter::Lib_Locker_With_Counter() { make(m_Mutex); }

Lib_Locker_With_Counter::Lib_Locker_With_Counter(const Lib_Locker_With_Counter& Source)
    : m_Mutex(Source.m_Mutex), m_dwCounter(static_cast<unsigned int>(Source.Get_Counter()))
{
}

Lib_Locker_With_Counter::~Lib_Locker_With_Counter()
{
    Set_Counter(0);
    m_Mutex.Close();
}

Lib_Locker_With_Counter& Lib_Locker_With_Counter::operator=(const Lib_Locker_With_Counter& Source)
{
    if (this != &Source)
    {
        m_Mutex = Source.m_Mutex;
        Set_Counter(Source.Get_Counter());
    }
    return *this;
}

unsigned long Lib_Locker_With_Counter::take(unsigned long dwMilliseconds, bool bIncrease)
{
    const unsigned long dwWait = m_Mutex.Wait(dwMilliseconds);
    const bool bRaise = bIncrease && (dwWait == WAIT_OBJECT_0 || dwWait == WAIT_ABANDONED);
    unsigned int dwCounter = m_dwCounter;
    while (bRaise && dwCounter < 0xFFFFFFFF && !m_dwCounter.compare_exchange_weak(dwCounter, dwCounter + 1))
        ;
    return dwWait;
}

bool Lib_Locker_With_Counter::Lock(unsigned long dwMilliseconds)
{
    return take(dwMilliseconds, false) == WAIT_OBJECT_0;
}

bool Lib_Locker_With_Counter::Unlock() { return m_Mutex.Release(); }

bool Lib_Locker_With_Counter::Lock_And_Increase(unsigned long dwMilliseconds)
{
    return take(dwMilliseconds, true) == WAIT_OBJECT_0;
}

bool Lib_Locker_With_Counter::Decrease_And_Unlock()
{
    unsigned int dwCounter = m_dwCounter;
    while (dwCounter != 0 && !m_dwCounter.compare_exchange_weak(dwCounter, dwCounter - 1))
        ;
    return m_Mutex.Release();
}

unsigned long Lib_Locker_With_Counter::Get_Counter() const { return m_dwCounter; }

void Lib_Locker_With_Counter::Set_Counter(unsigned long dwValue)
{
    m_dwCounter.store(static_cast<unsigned int>(dwValue), std::memory_order_release);
}
