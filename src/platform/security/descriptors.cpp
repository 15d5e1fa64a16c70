#include "platform/fail.h"
#include "platform/security.h"
#include "platform/security/layout.h"

namespace qn_platform
{

namespace
{

/// 0 for a descriptor that can be looked into.
DWORD find_Fault(const SECURITY_DESCRIPTOR* descriptor)
{
    if (descriptor == nullptr)
    {
        return ERROR_INVALID_PARAMETER;
    }
    return descriptor->Revision == SECURITY_DESCRIPTOR_REVISION ? ERROR_SUCCESS : ERROR_UNKNOWN_REVISION;
}

/// A descriptor of either form in absolute form.
SECURITY_DESCRIPTOR absolute_Form(SECURITY_DESCRIPTOR* descriptor)
{
    if ((descriptor->Control & SE_SELF_RELATIVE) == 0)
    {
        return *descriptor;
    }
    const auto* const relative = reinterpret_cast<const SECURITY_DESCRIPTOR_RELATIVE*>(descriptor);
    BYTE* const begin = reinterpret_cast<BYTE*>(descriptor);
    const auto part = [&](DWORD distance) -> void* { return distance != 0 ? begin + distance : nullptr; };
    return {relative->Revision,
            relative->Sbz1,
            relative->Control,
            part(relative->Owner),
            part(relative->Group),
            static_cast<PACL>(part(relative->Sacl)),
            static_cast<PACL>(part(relative->Dacl))};
}

void set_Bits(SECURITY_DESCRIPTOR& descriptor, SECURITY_DESCRIPTOR_CONTROL bits, bool on)
{
    const int control = on ? descriptor.Control | bits : descriptor.Control & ~bits;
    descriptor.Control = static_cast<SECURITY_DESCRIPTOR_CONTROL>(control);
}

bool is_Sid_Or_None(PSID sid) { return sid == nullptr || IsValidSid(sid) != FALSE; }

bool is_Acl_Or_None(PACL acl, bool present) { return !present || acl == nullptr || IsValidAcl(acl) != FALSE; }

} // namespace

BOOL InitializeSecurityDescriptor(PSECURITY_DESCRIPTOR descriptor, DWORD revision)
{
    if (descriptor == nullptr)
    {
        return Fail(ERROR_INVALID_PARAMETER);
    }
    if (revision != SECURITY_DESCRIPTOR_REVISION)
    {
        return Fail(ERROR_UNKNOWN_REVISION);
    }
    *static_cast<SECURITY_DESCRIPTOR*>(descriptor) = {
        static_cast<BYTE>(revision), 0, 0, nullptr, nullptr, nullptr, nullptr};
    return TRUE;
}

BOOL SetSecurityDescriptorDacl(PSECURITY_DESCRIPTOR descriptor, BOOL present, PACL dacl, BOOL defaulted)
{
    auto* const target = static_cast<SECURITY_DESCRIPTOR*>(descriptor);
    if (const DWORD fault = find_Fault(target); fault != ERROR_SUCCESS)
    {
        return Fail(fault);
    }
    if ((target->Control & SE_SELF_RELATIVE) != 0)
    {
        return Fail(ERROR_INVALID_SECURITY_DESCR);
    }
    set_Bits(*target, SE_DACL_PRESENT, present != FALSE);
    if (present != FALSE)
    {
        set_Bits(*target, SE_DACL_DEFAULTED, defaulted != FALSE);
        target->Dacl = dacl;
    }
    return TRUE;
}

BOOL GetSecurityDescriptorDacl(PSECURITY_DESCRIPTOR descriptor, LPBOOL present, PACL* dacl, LPBOOL defaulted)
{
    auto* const source = static_cast<SECURITY_DESCRIPTOR*>(descriptor);
    if (const DWORD fault = find_Fault(source); fault != ERROR_SUCCESS)
    {
        return Fail(fault);
    }
    if (present == nullptr || dacl == nullptr || defaulted == nullptr)
    {
        return Fail(ERROR_INVALID_PARAMETER);
    }
    *present = (source->Control & SE_DACL_PRESENT) != 0;
    if (*present != FALSE)
    {
        *dacl = absolute_Form(source).Dacl;
        *defaulted = (source->Control & SE_DACL_DEFAULTED) != 0;
    }
    return TRUE;
}

BOOL IsValidSecurityDescriptor(PSECURITY_DESCRIPTOR descriptor)
{
    auto* const source = static_cast<SECURITY_DESCRIPTOR*>(descriptor);
    const DWORD fault = find_Fault(source);
    if (fault != ERROR_SUCCESS)
    {
        return Fail(fault == ERROR_INVALID_PARAMETER ? ERROR_INVALID_SECURITY_DESCR : fault);
    }
    const SECURITY_DESCRIPTOR parts = absolute_Form(source);
    if (!is_Sid_Or_None(parts.Owner) || !is_Sid_Or_None(parts.Group) ||
        !is_Acl_Or_None(parts.Dacl, (parts.Control & SE_DACL_PRESENT) != 0) ||
        !is_Acl_Or_None(parts.Sacl, (parts.Control & SE_SACL_PRESENT) != 0))
    {
        return Fail(ERROR_INVALID_SECURITY_DESCR);
    }
    return TRUE;
}

BOOL InitializeAcl(PACL acl, DWORD size, DWORD revision)
{
    if (size < sizeof(ACL))
    {
        return Fail(ERROR_INSUFFICIENT_BUFFER);
    }
    if (acl == nullptr || size > 0xFFFF || revision < MIN_ACL_REVISION || revision > MAX_ACL_REVISION)
    {
        return Fail(ERROR_INVALID_PARAMETER);
    }
    *acl = {static_cast<BYTE>(revision), 0, static_cast<WORD>(size), 0, 0};
    return TRUE;
}

BOOL IsValidAcl(PACL acl) { return security::Find_Free_Room(acl) != nullptr; }

} // namespace qn_platform
