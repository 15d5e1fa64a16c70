#include "platform/kernel/attributes.h"

namespace qn_platform::kernel
{

namespace
{

/// A security descriptor in its absolute form, as the platform lays it out.
struct Descriptor
{
    BYTE revision;
    BYTE unused;
    WORD control;
    void* owner;
    void* group;
    void* sacl;
    void* dacl;
};

constexpr BYTE KNOWN_REVISION = 1;
constexpr WORD DACL_PRESENT = 0x0004;
constexpr WORD SACL_PRESENT = 0x0010;
constexpr WORD SELF_RELATIVE = 0x8000;

bool is_Expressible(const Descriptor& descriptor)
{
    const bool bHas_Dacl = (descriptor.control & DACL_PRESENT) != 0 && descriptor.dacl != nullptr;
    const bool bHas_Sacl = (descriptor.control & SACL_PRESENT) != 0 && descriptor.sacl != nullptr;
    return !bHas_Dacl && !bHas_Sacl && descriptor.owner == nullptr && descriptor.group == nullptr;
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
    const auto& descriptor = *static_cast<const Descriptor*>(attributes->lpSecurityDescriptor);
    if (descriptor.revision != KNOWN_REVISION)
    {
        return ERROR_UNKNOWN_REVISION;
    }
    if ((descriptor.control & SELF_RELATIVE) != 0 || !is_Expressible(descriptor))
    {
        return ERROR_NOT_SUPPORTED;
    }
    open_to_all = (descriptor.control & DACL_PRESENT) != 0;
    return ERROR_SUCCESS;
}

} // namespace qn_platform::kernel
