#include "platform/modules.h"
#include "platform/security.h"
#include "platform/security/layout.h"

#include <algorithm>
#include <iterator>
#include <new>

namespace qn_platform
{

BOOL AllocateAndInitializeSid(PSID_IDENTIFIER_AUTHORITY authority, BYTE count, DWORD sub_authority_0,
                              DWORD sub_authority_1, DWORD sub_authority_2, DWORD sub_authority_3,
                              DWORD sub_authority_4, DWORD sub_authority_5, DWORD sub_authority_6,
                              DWORD sub_authority_7, PSID* sid)
{
    const DWORD sub_authorities[] = {sub_authority_0, sub_authority_1, sub_authority_2, sub_authority_3,
                                     sub_authority_4, sub_authority_5, sub_authority_6, sub_authority_7};
    if (authority == nullptr || sid == nullptr)
    {
        SetLastError(ERROR_INVALID_PARAMETER);
        return FALSE;
    }
    if (count > std::size(sub_authorities))
    {
        SetLastError(ERROR_INVALID_SID);
        return FALSE;
    }
    // Room for the one that the structure itself has, also for a SID without any.
    void* const block =
        ::operator new(std::max<std::size_t>(security::Sid_Length(count), sizeof(SID)), std::nothrow);
    if (block == nullptr)
    {
        SetLastError(ERROR_NOT_ENOUGH_MEMORY);
        return FALSE;
    }
    SID* const made = ::new (block) SID{SID_REVISION, count, *authority, {}};
    std::copy_n(sub_authorities, count, made->SubAuthority);
    *sid = made;
    return TRUE;
}

PVOID FreeSid(PSID sid)
{
    ::operator delete(sid);
    return nullptr;
}

DWORD GetLengthSid(PSID sid)
{
    if (!security::Is_Sid(static_cast<const SID*>(sid)))
    {
        SetLastError(ERROR_INVALID_SID);
        return 0;
    }
    return security::Sid_Length(static_cast<const SID*>(sid)->SubAuthorityCount);
}

BOOL IsValidSid(PSID sid) { return security::Is_Sid(static_cast<const SID*>(sid)); }

} // namespace qn_platform
