#ifndef QNLIB_TESTS_ENVIRONMENT_SESSION_H
#define QNLIB_TESTS_ENVIRONMENT_SESSION_H

/// While it lives, the calling thread works for a client of a session. Where no token can be made for that,
/// the thread stays in the session of its process.
class Session
{
public:
    explicit Session(unsigned int dwSession);
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;
    ~Session();
};

/// While it lives, the calling thread works for a client whose token may not be asked for its session.
class Denied_Session
{
public:
    Denied_Session();
    Denied_Session(const Denied_Session&) = delete;
    Denied_Session& operator=(const Denied_Session&) = delete;
    ~Denied_Session();
};

#endif
