#include "platform/modules.h"
#include "platform/security.h"
#include "platform/security/layout.h"

#include <algorithm>
#include <cstring>

// Callers find this operation at run time by the module's name, as on the platform.

using namespace qn_platform;

namespace
{

DWORD append_Label(ACL& acl, DWORD revision, DWORD flags, DWORD policy, const SID& label)
{
    BYTE* const room = security::Find_Free_Room(&acl);
    if (room == nullptr)
    {
        return ERROR_INVALID_ACL;
    }
    const DWORD label_size = security::Sid_Length(label.SubAuthorityCount);
    const std::size_t size = offsetof(SYSTEM_MANDATORY_LABEL_ACE, SidStart) + label_size;
    const std::size_t used = static_cast<std::size_t>(room - reinterpret_cast<BYTE*>(&acl));
    if (size > acl.AclSize - used)
    {
        return ERROR_ALLOTTED_SPACE_EXCEEDED;
    }
    auto* const entry = reinterpret_cast<SYSTEM_MANDATORY_LABEL_ACE*>(room);
    entry->Header = {SYSTEM_MANDATORY_LABEL_ACE_TYPE, static_cast<BYTE>(flags), static_cast<WORD>(size)};
    entry->Mask = policy;
    std::memcpy(room + offsetof(SYSTEM_MANDATORY_LABEL_ACE, SidStart), &label, label_size);
    acl.AclRevision = std::max(acl.AclRevision, static_cast<BYTE>(revision));
    ++acl.AceCount;
    return ERROR_SUCCESS;
}

DWORD find_Fault(const ACL* acl, DWORD revision, DWORD flags, DWORD policy, const SID* label)
{
    constexpr DWORD POLICIES = SYSTEM_MANDATORY_LABEL_NO_WRITE_UP | SYSTEM_MANDATORY_LABEL_NO_READ_UP |
                               SYSTEM_MANDATORY_LABEL_NO_EXECUTE_UP;
    if (!security::Is_Sid(label))
    {
        return ERROR_INVALID_SID;
    }
    if (acl == nullptr || (policy & ~POLICIES) != 0 || (flags & ~VALID_INHERIT_FLAGS) != 0)
    {
        return ERROR_INVALID_PARAMETER;
    }
    const bool known = revision <= MAX_ACL_REVISION && acl->AclRevision <= MAX_ACL_REVISION;
    return known ? ERROR_SUCCESS : ERROR_REVISION_MISMATCH;
}

} // namespace

extern "C"
{
    __attribute__((visibility("default"))) BOOL AddMandatoryAce(PACL acl, DWORD revision, DWORD flags,
                                                                DWORD policy, PSID label);
}

/// Appends a label entry to a list, whose revision goes up to `revision`. 1337 for a label that is no valid
/// SID, 87 for a null list and for unknown bits of `policy` or `flags`, 1306 for a revision above 4, 1336 for
/// a list that is not valid, 1344 when it has no room.
BOOL AddMandatoryAce(PACL acl, DWORD revision, DWORD flags, DWORD policy, PSID label)
{
    const SID* const sid = static_cast<const SID*>(label);
    DWORD error = find_Fault(acl, revision, flags, policy, sid);
    if (error == ERROR_SUCCESS)
    {
        error = append_Label(*acl, revision, flags, policy, *sid);
    }
    if (error != ERROR_SUCCESS)
    {
        SetLastError(error);
    }
    return error == ERROR_SUCCESS;
}
