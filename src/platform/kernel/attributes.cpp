#include "platform/kernel/attributes.h"

#include "platform/security.h"

namespace qn_platform::kernel
{

namespace
{

/// Whether the layer can keep what the descriptor says: nothing, or a DACL that is null.
bool is_Expressible(const SECURITY_DESCRIPTOR& descriptor)
{
    const bool bHas_Dacl = (descriptor.Control & SE_DACL_PRESENT) != 0 && descriptor.Dacl != nullptr;
    const bool bHas_Sacl = (descriptor.Control & SE_SACL_PRESENT) != 0 && descriptor.Sacl != nullptr;
    return (descriptor.Control & SE_SELF_RELATIVE) == 0 && !bHas_Dacl && !bHas_Sacl &&
           descriptor.Owner == nullptr && descriptor.Group == nullptr;
}

} // namespace

DWORD Read_Attributes(const SECURITY_ATTRIBUTES* attributes, bool& open_to_all, bool& inherit)
{
    open_to_all = false;
    inherit = attributes != nullptr && attributes->bInheritHandle != 0;
    if (attributes == nullptr || attributes->lpSecurityDescriptor == nullptr)
    {
        return ERROR_SUCCESS;
    }
    const auto& descriptor = *static_cast<const SECURITY_DESCRIPTOR*>(attributes->lpSecurityDescriptor);
    if (descriptor.Revision != SECURITY_DESCRIPTOR_REVISION)
    {
        return ERROR_UNKNOWN_REVISION;
    }
    if (!is_Expressible(descriptor))
    {
        return ERROR_NOT_SUPPORTED;
    }
    open_to_all = (descriptor.Control & SE_DACL_PRESENT) != 0;
    return ERROR_SUCCESS;
}

} // namespace qn_platform::kernel
