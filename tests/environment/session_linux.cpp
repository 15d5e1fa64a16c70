#include "session.h"

#include "lib_platform.h"

#include <gtest/gtest.h>

namespace
{

void bear(unsigned int dwSession, DWORD dwGranted)
{
    const HANDLE hToken = Lib_Create_Session_Token(dwSession, dwGranted);
    EXPECT_TRUE(SetThreadToken(nullptr, hToken)) << GetLastError();
    EXPECT_TRUE(CloseHandle(hToken));
}

} // namespace

Session::Session(unsigned int dwSession) { bear(dwSession, TOKEN_QUERY); }
Session::~Session() { RevertToSelf(); }

Denied_Session::Denied_Session() { bear(7, TOKEN_IMPERSONATE); }
Denied_Session::~Denied_Session() { RevertToSelf(); }
