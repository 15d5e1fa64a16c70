#include "environment/environment_params.h"

#include "foundation/lib_result.h"
#include "lib_platform.h"

namespace
{

constexpr unsigned int SOURCE_PLATFORM = 1;

void record_Last_Error(Lib_Result& result) { result.Set_Result(GetLastError(), SOURCE_PLATFORM); }

/// The token that `open` finds behind a pseudo handle, which is made a real one for it; null, and the code in
/// the result, if there is none.
template <class Open>
HANDLE open_Token(HANDLE hPseudo, const Open& open, Lib_Result& result)
{
    const HANDLE hProcess = GetCurrentProcess();
    HANDLE hReal = nullptr;
    HANDLE hToken = nullptr;
    if (!DuplicateHandle(hProcess, hPseudo, hProcess, &hReal, 0, FALSE, DUPLICATE_SAME_ACCESS))
    {
        hReal = nullptr;
    }
    if (hReal == nullptr || !open(hReal, &hToken))
    {
        record_Last_Error(result);
        hToken = nullptr;
    }
    if (hReal != nullptr)
    {
        CloseHandle(hReal);
    }
    return hToken;
}

/// A thread that has no token, or one that it may not open, goes by its process's.
HANDLE open_Callers_Token(Lib_Result& result)
{
    const auto of_Thread = [](HANDLE hThread, HANDLE* phToken)
    { return OpenThreadToken(hThread, TOKEN_QUERY, TRUE, phToken); };
    const auto of_Process = [](HANDLE hProcess, HANDLE* phToken)
    { return OpenProcessToken(hProcess, TOKEN_QUERY, phToken); };

    const HANDLE hToken = open_Token(GetCurrentThread(), of_Thread, result);
    if (hToken != nullptr)
    {
        return hToken;
    }
    const unsigned int nCode = result.Get_Result_Code();
    return nCode == ERROR_NO_TOKEN || nCode == ERROR_ACCESS_DENIED
               ? open_Token(GetCurrentProcess(), of_Process, result)
               : nullptr;
}

bool read_Session(HANDLE hToken, unsigned int& dwSession_ID, Lib_Result& result)
{
    DWORD dwSession = 0;
    DWORD dwLength = 0;
    if (!GetTokenInformation(hToken, TokenSessionId, &dwSession, sizeof dwSession, &dwLength))
    {
        record_Last_Error(result);
        return false;
    }
    dwSession_ID = dwSession;
    return true;
}

} // namespace

bool Acquire_Session_ID(unsigned int& dwSession_ID, Lib_Result& result)
{
    const HANDLE hToken = open_Callers_Token(result);
    bool bRead = false;
    if (hToken != nullptr)
    {
        bRead = read_Session(hToken, dwSession_ID, result);
        CloseHandle(hToken);
    }
    if (bRead)
    {
        return true;
    }
    const bool bDenied = GetLastError() == ERROR_ACCESS_DENIED;
    dwSession_ID = bDenied ? Lib_Environment_Params::Session_Unknown : 0;
    return bDenied;
}

bool Lib_Environment_Params::Initialize(Lib_Result& result) { return init_IDs(result); }

bool Lib_Environment_Params::init_IDs(Lib_Result& result)
{
    m_dwProcess_ID = GetCurrentProcessId();
    m_dwThread_ID = GetCurrentThreadId();
    return Acquire_Session_ID(m_dwSession_ID, result);
}

bool Lib_Environment_Params::operator==(const Lib_Environment_Params& Other) const noexcept
{
    return m_dwSession_ID != Session_Unknown
               ? m_dwSession_ID == Other.m_dwSession_ID
               : m_dwProcess_ID == Other.m_dwProcess_ID && m_dwThread_ID == Other.m_dwThread_ID;
}
