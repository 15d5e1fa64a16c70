#include "platform/crypt.h"
#include "platform/crypt/cipher_calls.h"
#include "platform/modules/provider.h"

namespace qn_platform
{

namespace
{

using Entry = Provider_Function<BOOL(LPVOID, DWORD, DWORD)>;

constinit Entry protect_entry(L"crypt32", "CryptProtectMemory");
constinit Entry unprotect_entry(L"crypt32", "CryptUnprotectMemory");

template <Entry& entry>
BOOL call_Provider(LPVOID data, DWORD size, DWORD flags)
{
    const auto function = entry.Get();
    return function != nullptr ? function(data, size, flags) : FALSE;
}

} // namespace

constinit Cipher_Calls cipher_calls{call_Provider<protect_entry>, call_Provider<unprotect_entry>};

BOOL CryptProtectMemory(LPVOID data, DWORD size, DWORD flags)
{
    return cipher_calls.protect(data, size, flags);
}

BOOL CryptUnprotectMemory(LPVOID data, DWORD size, DWORD flags)
{
    return cipher_calls.unprotect(data, size, flags);
}

} // namespace qn_platform
