#include "client.h"

namespace test_support
{

bool Impersonate_Client() { return ImpersonateSelf(SecurityImpersonation) != FALSE; }

bool Works_For_Client()
{
    HANDLE token = nullptr;
    return OpenThreadToken(GetCurrentThread(), TOKEN_QUERY, TRUE, &token) != FALSE &&
           CloseHandle(token) != FALSE;
}

} // namespace test_support
