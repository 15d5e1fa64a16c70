#ifndef QNLIB_TEST_CLIENT_H
#define QNLIB_TEST_CLIENT_H

#include "handles.h"

// Threads that work for somebody, by what each target has for that.

namespace test_support
{

inline constexpr unsigned int CLIENT_SESSION = 31;

/// The calling thread works from now on, until RevertToSelf, for a client of the session, whose token grants
/// these rights. Where making such tokens takes the privileges of the system, it works for the process's
/// user.
inline bool Impersonate_Client([[maybe_unused]] unsigned int session = CLIENT_SESSION,
                               [[maybe_unused]] DWORD granted = TOKEN_QUERY | TOKEN_IMPERSONATE)
{
#if defined(_WIN32)
    return ImpersonateSelf(SecurityImpersonation) != FALSE;
#else
    const Owned token(Lib_Create_Session_Token(session, granted));
    return SetThreadToken(nullptr, token) != FALSE;
#endif
}

/// Whether the calling thread does so, for the client that is taken unless another one is named.
inline bool Works_For_Client()
{
    HANDLE token = nullptr;
    if (!OpenThreadToken(GetCurrentThread(), TOKEN_QUERY, TRUE, &token))
    {
        return false;
    }
    DWORD session = 0;
    DWORD needed = 0;
    EXPECT_TRUE(GetTokenInformation(token, TokenSessionId, &session, sizeof session, &needed));
    return CloseHandle(token) != FALSE && (Windows_Target || session == CLIENT_SESSION);
}

} // namespace test_support

#endif
