#ifndef QNLIB_TEST_THREAD_CLIENT_H
#define QNLIB_TEST_THREAD_CLIENT_H

#include "handles.h"

// What each target has of its own to impersonate somebody with.

namespace test_support
{

inline constexpr DWORD CLIENT_SESSION = 31;

/// The calling thread bears a token from now on, until RevertToSelf.
inline bool Impersonate_Client()
{
#if defined(_WIN32)
    return ImpersonateSelf(SecurityImpersonation) != FALSE;
#else
    const Owned token(Lib_Create_Session_Token(CLIENT_SESSION, TOKEN_QUERY | TOKEN_IMPERSONATE));
    return SetThreadToken(nullptr, token) != FALSE;
#endif
}

/// Whether the calling thread bears one, made by that.
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
