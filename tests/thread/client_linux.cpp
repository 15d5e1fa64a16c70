#include "client.h"

namespace test_support
{

namespace
{

constexpr DWORD SESSION = 31;

} // namespace

bool Impersonate_Client()
{
    const HANDLE token = Lib_Create_Session_Token(SESSION, TOKEN_QUERY | TOKEN_IMPERSONATE);
    const BOOL borne = SetThreadToken(nullptr, token);
    return CloseHandle(token) != FALSE && borne != FALSE;
}

bool Works_For_Client()
{
    HANDLE token = nullptr;
    DWORD session = 0;
    DWORD needed = 0;
    return OpenThreadToken(GetCurrentThread(), TOKEN_QUERY, TRUE, &token) != FALSE &&
           GetTokenInformation(token, TokenSessionId, &session, sizeof session, &needed) != FALSE &&
           CloseHandle(token) != FALSE && session == SESSION;
}

} // namespace test_support
