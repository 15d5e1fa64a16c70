#include "platform/modules/provider.h"

#include "platform/modules.h"

namespace qn_platform
{

void* Provider_Entry(LPCWSTR module, const char* name)
{
    const HMODULE provider = LoadLibraryW(module);
    if (provider == nullptr)
    {
        return nullptr;
    }
    const FARPROC entry = GetProcAddress(provider, name);
    if (entry == nullptr)
    {
        FreeLibrary(provider);
        SetLastError(ERROR_PROC_NOT_FOUND);
    }
    // Every entry point found keeps a reference of its own, so its address stays good.
    return reinterpret_cast<void*>(entry);
}

} // namespace qn_platform
