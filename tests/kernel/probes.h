#ifndef QNLIB_TESTS_KERNEL_PROBES_H
#define QNLIB_TESTS_KERNEL_PROBES_H

#include "lib_kernel.h"
#include "other_thread.h"

#include <gtest/gtest.h>

#include <utility>

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

/// A plain handle to a new unnamed event, and its end.
class Plain_Event
{
public:
    Plain_Event() { EXPECT_NE(nullptr, m_hEvent); }
    Plain_Event(const Plain_Event&) = delete;
    Plain_Event& operator=(const Plain_Event&) = delete;
    ~Plain_Event() { Close(); }

    operator void*() const { return m_hEvent; }
    void Close()
    {
        EXPECT_TRUE(m_hEvent == nullptr || CloseHandle(m_hEvent));
        m_hEvent = nullptr;
    }
    void* Detach() { return std::exchange(m_hEvent, nullptr); }

private:
    void* m_hEvent = CreateEventW(nullptr, TRUE, FALSE, nullptr);
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
    const bool bOne = WaitForSingleObject(hOther, 0) == WAIT_OBJECT_0;
    ResetEvent(hOne);
    return bOne && WaitForSingleObject(hOther, 0) == WAIT_TIMEOUT;
}

using test_support::On_Other_Thread;

/// A name that no other object of the machine has.
inline Lib_String Fresh_Name() { return Lib_Synchro().Set_Unique_Name(false); }

#endif
