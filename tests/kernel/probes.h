#ifndef QNLIB_TESTS_KERNEL_PROBES_H
#define QNLIB_TESTS_KERNEL_PROBES_H

#include "handles.h"
#include "lib_kernel.h"
#include "other_thread.h"

using namespace test_support;

/// A class of the library that counts its flushes.
template <class Base>
class Flush_Counter : public Base
{
public:
    using Base::Base;
    Flush_Counter() = default;
    Flush_Counter(const Flush_Counter& Source) : Base(Source) {}
    Flush_Counter& operator=(const Flush_Counter& Source)
    {
        Base::operator=(Source);
        return *this;
    }

    int m_nFlushes = 0;

    /// The flushes of one call.
    template <class Call>
    int Count(const Call& call)
    {
        m_nFlushes = 0;
        call();
        return std::exchange(m_nFlushes, 0);
    }

protected:
    void flush() override
    {
        ++m_nFlushes;
        Base::flush();
    }
};

inline bool Is_Open(void* hHandle)
{
    DWORD dwFlags = 0;
    return GetHandleInformation(hHandle, &dwFlags) != 0;
}

/// Whether two handles to manual events, neither of them signalled, stand for one event.
inline bool Are_One_Event(void* hOne, void* hOther)
{
    SetEvent(hOne);
    const bool bOne = Try(hOther) == WAIT_OBJECT_0;
    ResetEvent(hOne);
    return bOne && Try(hOther) == TIMED_OUT;
}

/// A name that no other object of the machine has.
inline Lib_String Fresh_Name() { return Lib_Synchro().Set_Unique_Name(false); }

/// For tests of objects without names, with names, and of some of both: these differ beneath.
class Objects : public testing::TestWithParam<const char*>
{
protected:
    Owned make_Event(bool manual, bool set)
    {
        return Owned(CreateEventW(nullptr, manual, set, next_Name().GetW()));
    }
    Owned make_Mutex(bool owned) { return Owned(CreateMutexW(nullptr, owned, next_Name().GetW())); }

private:
    /// Null for no name.
    Lib_String next_Name()
    {
        const char cKind = *GetParam();
        return cKind == 'N' || (cKind == 'M' && m_nMade++ % 2 == 0) ? Fresh_Name() : Lib_String();
    }

    unsigned int m_nMade = 0;
};

template <class... Handles>
DWORD Wait_Any(DWORD milliseconds, const Handles&... handles)
{
    const HANDLE all[] = {handles...};
    return WaitForMultipleObjects(sizeof...(handles), all, FALSE, milliseconds);
}

template <class... Handles>
DWORD Wait_All(DWORD milliseconds, const Handles&... handles)
{
    const HANDLE all[] = {handles...};
    return WaitForMultipleObjects(sizeof...(handles), all, TRUE, milliseconds);
}

#endif
