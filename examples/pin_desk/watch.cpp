#include "watch.h"

#include "text_output.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <lib_foundation.h>
#include <lib_kernel.h>

namespace
{

/// What happens is told at once, also to those who read it through a pipe.
void tell(const Lib_String& strName, const wchar_t* pWhat)
{
    Print_Line(strName + L": " + pWhat);
    std::fflush(stdout);
}

/// Tells the platform's last error.
int tell_Failure(const Lib_String& strName, const wchar_t* pWhat)
{
    const Lib_String strReason = Get_Error_Text(GetLastError());
    tell(strName, Lib_String(pWhat) + L": " + strReason);
    return EXIT_NO_OBJECT;
}

/// The kernel objects behind a name. Whoever comes first makes them.
struct Post
{
    explicit Post(const Lib_String& strName);

    Lib_Event m_Signal;
    Lib_Event m_Guarded; ///< set as long as there is a guard, by the mutex's owner alone
    Lib_Mutex m_Guard;
    bool m_bReady;
};

Post::Post(const Lib_String& strName)
    : m_bReady(m_Signal.Create(nullptr, true, false, strName) &&
               m_Guarded.Create(nullptr, true, false, strName + L".guarded") &&
               m_Guard.Create(nullptr, false, strName + L".guard"))
{
}

/// The time left of a number of seconds, in the milliseconds of a wait.
class Time_Left
{
public:
    explicit Time_Left(unsigned int nSeconds)
        : m_bLimited(nSeconds != 0), m_End(Clock::now() + std::chrono::seconds(nSeconds))
    {
    }

    unsigned long Get() const
    {
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(m_End - Clock::now()).count();
        return m_bLimited ? static_cast<unsigned long>(std::max<long long>(left, 0)) : INFINITE;
    }

private:
    using Clock = std::chrono::steady_clock;

    bool m_bLimited;
    Clock::time_point m_End;
};

unsigned long wait_For_Either(Lib_Synchro& first, Lib_Synchro& second, unsigned long nMilliseconds)
{
    LibT_Array<Lib_Synchro*, 4> objects;
    objects.Add(&first);
    objects.Add(&second);
    return Lib_Synchro::Wait_Multiple(&objects, false, nMilliseconds);
}

} // namespace

// A free mutex would end the wait at once, so the mutex is waited for only while there is a guard.
int Watch(const Lib_String& strName, unsigned int nSeconds)
{
    Post post(strName);
    if (!post.m_bReady)
        return tell_Failure(strName, L"cannot be watched");
    tell(strName, L"watching");
    const Time_Left time(nSeconds);
    bool bGuarded = false;
    while (true)
    {
        Lib_Synchro& second = bGuarded ? static_cast<Lib_Synchro&>(post.m_Guard) : post.m_Guarded;
        switch (wait_For_Either(post.m_Signal, second, time.Get()))
        {
        case WAIT_OBJECT_0:
            tell(strName, L"signalled");
            return EXIT_SIGNALLED;
        case WAIT_OBJECT_0 + 1:
            second.Release(); // an event has nothing to give back
            bGuarded = !bGuarded;
            tell(strName, bGuarded ? L"guarded" : L"its guard has left");
            break;
        case WAIT_ABANDONED_0 + 1:
            // Not given back: with this process it is abandoned once more, which tells the next one who
            // watches.
            tell(strName, L"abandoned by its owner");
            return EXIT_ABANDONED;
        case WAIT_TIMEOUT:
            tell(strName, L"timed out");
            return EXIT_TIMED_OUT;
        default:
            return tell_Failure(strName, L"cannot be waited for");
        }
    }
}

int Signal(const Lib_String& strName)
{
    Lib_Event event;
    if (!event.Open(strName, EVENT_MODIFY_STATE, false) || !event.Set())
        return tell_Failure(strName, L"cannot be signalled");
    tell(strName, L"signal sent");
    return EXIT_SIGNALLED;
}

int Guard(const Lib_String& strName, unsigned int nSeconds)
{
    Post post(strName);
    const unsigned long nWait = post.m_bReady ? post.m_Guard.Wait(0) : WAIT_FAILED;
    if (nWait == WAIT_TIMEOUT)
    {
        tell(strName, L"there is a guard already");
        return EXIT_NO_OBJECT;
    }
    Lib_Event pause;
    if (nWait == WAIT_FAILED || !pause.Create(nullptr, true, false) || !post.m_Guarded.Set())
        return tell_Failure(strName, L"cannot be guarded");
    tell(strName, nWait == WAIT_ABANDONED ? L"guarding, after a guard that was lost" : L"guarding");
    pause.Wait(1000UL * nSeconds);
    post.m_Guarded.Reset();
    post.m_Guard.Release();
    tell(strName, L"the guard leaves");
    return EXIT_SIGNALLED;
}
