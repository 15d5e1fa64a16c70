#include "platform/kernel/deadline.h"

#include "platform/kernel.h"

namespace qn_platform::kernel
{

namespace
{

constexpr long NANOSECONDS = 1'000'000'000;

} // namespace

Deadline::Deadline(DWORD milliseconds) : m_dwMilliseconds(milliseconds) {}

const timespec* Deadline::Get_Time()
{
    if (m_dwMilliseconds == INFINITE)
    {
        return nullptr;
    }
    if (!m_bFixed)
    {
        m_bFixed = true;
        clock_gettime(CLOCK_MONOTONIC, &m_Time);
        m_Time.tv_sec += m_dwMilliseconds / 1000;
        m_Time.tv_nsec += static_cast<long>(m_dwMilliseconds % 1000) * 1'000'000;
        if (m_Time.tv_nsec >= NANOSECONDS)
        {
            m_Time.tv_nsec -= NANOSECONDS;
            ++m_Time.tv_sec;
        }
    }
    return &m_Time;
}

bool Deadline::Has_Passed()
{
    const timespec* const pTime = Get_Time();
    if (pTime == nullptr)
    {
        return false;
    }
    timespec now;
    clock_gettime(CLOCK_MONOTONIC, &now);
    return now.tv_sec != pTime->tv_sec ? now.tv_sec > pTime->tv_sec : now.tv_nsec >= pTime->tv_nsec;
}

} // namespace qn_platform::kernel
