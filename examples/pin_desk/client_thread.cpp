#include "client_thread.h"

#include <lib_platform.h>

namespace
{

/// Has the calling thread impersonate for as long as this lives.
class Impersonation
{
public:
    explicit Impersonation(HANDLE hToken) : m_bRight(hToken == nullptr || SetThreadToken(nullptr, hToken)) {}
    Impersonation(const Impersonation&) = delete;
    Impersonation& operator=(const Impersonation&) = delete;
    ~Impersonation() { RevertToSelf(); }

    bool Is_Right() const { return m_bRight; }

private:
    bool m_bRight;
};

} // namespace

// A new thread takes its maker's token. Its maker may fail to have it taken and get a thread all the same,
// which would work in the desk's own name: so the thread waits until the result has been looked at.
bool Start_Client_Thread(HANDLE hToken, unsigned int (*pfnProcedure)(void*), void* pArgument,
                         Lib_Synchro& Thread, Lib_Result& result)
{
    const Impersonation impersonation(hToken);
    if (!impersonation.Is_Right())
    {
        result.Set_Result(GetLastError(), 1);
        return false;
    }
    result.Reset_Result();
    void* hThread = nullptr;
    if (!Lib_Create_Impersonated_Thread_Ex(nullptr, 0, pfnProcedure, pArgument, CREATE_SUSPENDED, result,
                                           nullptr, nullptr, &hThread))
        return false;
    Thread.Attach(hThread);
    if ((hToken == nullptr || result.Is_Success()) && ResumeThread(hThread) != 0xFFFFFFFF)
        return true;
    if (result.Is_Success())
        result.Set_Result(GetLastError(), 1);
    TerminateThread(hThread, 0);
    Thread.Close();
    return false;
}
