#ifndef QNLIB_SRC_PLATFORM_SECURITY_LAYOUT_H
#define QNLIB_SRC_PLATFORM_SECURITY_LAYOUT_H

#include "platform/security.h"

#include <cstddef>

// Where things are in SIDs and access control lists. Inline, for the layer and its providers alike.

namespace qn_platform::security
{

inline bool Is_Sid(const SID* sid)
{
    return sid != nullptr && sid->Revision == SID_REVISION &&
           sid->SubAuthorityCount <= SID_MAX_SUB_AUTHORITIES;
}

inline constexpr DWORD Sid_Length(unsigned int sub_authorities)
{
    return static_cast<DWORD>(offsetof(SID, SubAuthority) + sub_authorities * sizeof(DWORD));
}

/// Where the entries of a list end and its free room begins; null if the list is not valid.
inline BYTE* Find_Free_Room(ACL* acl)
{
    if (acl == nullptr || acl->AclRevision < MIN_ACL_REVISION || acl->AclRevision > MAX_ACL_REVISION ||
        acl->AclSize < sizeof(ACL))
    {
        return nullptr;
    }
    BYTE* const begin = reinterpret_cast<BYTE*>(acl);
    std::size_t used = sizeof(ACL);
    for (unsigned int i = 0; i < acl->AceCount; ++i)
    {
        if (acl->AclSize - used < sizeof(ACE_HEADER))
        {
            return nullptr;
        }
        const std::size_t size = reinterpret_cast<const ACE_HEADER*>(begin + used)->AceSize;
        if (size < sizeof(ACE_HEADER) || size % sizeof(DWORD) != 0 || size > acl->AclSize - used)
        {
            return nullptr;
        }
        used += size;
    }
    return begin + used;
}

} // namespace qn_platform::security

#endif
