#ifndef QNLIB_TESTS_ENVIRONMENT_SESSION_H
#define QNLIB_TESTS_ENVIRONMENT_SESSION_H

#include "client.h"

/// While it lives, the calling thread works for a client of a session, whose token may be asked for it or
/// not.
class Session
{
public:
    explicit Session(unsigned int nSession, DWORD dwGranted = TOKEN_QUERY)
    {
        EXPECT_TRUE(test_support::Impersonate_Client(nSession, dwGranted)) << GetLastError();
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
