#include "platform/modules/module_address.h"

#include <dlfcn.h>

namespace qn_platform
{

const char* Loader_Name(HMODULE module)
{
    Dl_info info;
    if (module == nullptr || dladdr(module, &info) == 0 || info.dli_fbase != module)
    {
        return nullptr;
    }
    return info.dli_fname;
}

HMODULE Module_Of(const void* address)
{
    Dl_info info;
    return dladdr(address, &info) == 0 ? nullptr : static_cast<HMODULE>(info.dli_fbase);
}

} // namespace qn_platform
