#include "thread/impersonated_thread.h"

#include "lib_platform.h"

namespace
{

constexpr unsigned int PLATFORM = 1;

/// A handle that is closed at the end of its scope.
class Scoped_Handle
{
public:
    explicit Scoped_Handle(HANDLE hOwned) : m_hOwned(hOwned) {}
    Scoped_Handle(const Scoped_Handle&) = delete;
    Scoped_Handle& operator=(const Scoped_Handle&) = delete;
    ~Scoped_Handle()
    {
        if (m_hOwned != nullptr)
            CloseHandle(m_hOwned);
    }

    HANDLE Get() const { return m_hOwned; }
    HANDLE Detach()
    {
        const HANDLE hOwned = m_hOwned;
        m_hOwned = nullptr;
        return hOwned;
    }

private:
    HANDLE m_hOwned;
};

void note_Failure(Lib_Result& result) { result.Set_Result(GetLastError(), PLATFORM); }

/// Null if there is no thread behind the handle.
HANDLE make_Real_Handle(HANDLE hThread)
{
    HANDLE hReal = nullptr;
    const BOOL bDone = DuplicateHandle(GetCurrentProcess(), hThread, GetCurrentProcess(), &hReal, 0, FALSE,
                                       DUPLICATE_SAME_ACCESS);
    return bDone != FALSE ? hReal : nullptr;
}

/// The token that the thread bears, for another one to bear; null, and the cause in `result`, if it cannot be
/// had.
HANDLE open_Token(HANDLE hThread, Lib_Result& result)
{
    const Scoped_Handle Real(make_Real_Handle(hThread));
    HANDLE hToken = nullptr;
    if (Real.Get() == nullptr || OpenThreadToken(Real.Get(), TOKEN_IMPERSONATE, TRUE, &hToken) == FALSE)
    {
        note_Failure(result);
        return nullptr;
    }
    return hToken;
}

bool start(HANDLE hThread, HANDLE hToken, bool bStay_Suspended)
{
    if (hToken != nullptr && SetThreadToken(&hThread, hToken) != TRUE)
        return false;
    return bStay_Suspended || ResumeThread(hThread) != static_cast<DWORD>(-1);
}

} // namespace

bool Lib_Create_Impersonated_Thread_Ex(void* pAttributes, unsigned int nStack_Size,
                                       unsigned int (*pfnProcedure)(void* pArgument), void* pArgument,
                                       unsigned int nFlags, Lib_Result& result, unsigned int* pnThread_ID,
                                       void* hSource_Thread, void** phThread)
{
    const Scoped_Handle Token(
        open_Token(hSource_Thread != nullptr ? hSource_Thread : GetCurrentThread(), result));
    Scoped_Handle Thread(reinterpret_cast<HANDLE>(_beginthreadex(
        pAttributes, nStack_Size, pfnProcedure, pArgument, nFlags | CREATE_SUSPENDED, pnThread_ID)));
    if (Thread.Get() == nullptr)
    {
        note_Failure(result);
        return false;
    }
    if (!start(Thread.Get(), Token.Get(), (nFlags & CREATE_SUSPENDED) != 0))
    {
        note_Failure(result);
        TerminateThread(Thread.Get(), 0);
        return false;
    }
    if (phThread != nullptr)
        *phThread = Thread.Detach();
    return true;
}
