#ifndef QNLIB_TESTS_ENVIRONMENT_SESSION_H
#define QNLIB_TESTS_ENVIRONMENT_SESSION_H

#include "handles.h"

/// While it lives, the calling thread works for a client of a session, whose token may be asked for it or
/// not. Where making a token takes the privileges of the system, the thread stays in the session of its
/// process.
class Session
{
public:
    explicit Session([[maybe_unused]] unsigned int nSession, [[maybe_unused]] DWORD dwGranted = TOKEN_QUERY)
    {
#if !defined(_WIN32)
        const test_support::Owned token(Lib_Create_Session_Token(nSession, dwGranted));
        EXPECT_TRUE(SetThreadToken(nullptr, token)) << GetLastError();
#endif
    }
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;
    ~Session() { RevertToSelf(); }
};

/// A client whose token may not be asked for its session.
struct Denied_Session : Session
{
    Denied_Session() : Session(7, TOKEN_IMPERSONATE) {}
};

#endif
