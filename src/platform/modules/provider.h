#ifndef QNLIB_SRC_PLATFORM_MODULES_PROVIDER_H
#define QNLIB_SRC_PLATFORM_MODULES_PROVIDER_H

#include "platform/types.h"

#include <atomic>

// Entry points of the layer's providers, the modules with third-party parts, which are loaded when one of
// their operations is called for the first time. Any thread may call these.

namespace qn_platform
{

/// The address of a provider's entry point. The provider is loaded if need be and then stays loaded. Null on
/// failure, with 126 as the last error for a missing provider, 193 for a file that is no module, and 127 for
/// a missing entry point; nothing is remembered then, so that the next call tries again. `module` is a name
/// as LoadLibraryW takes it.
void* Provider_Entry(LPCWSTR module, const char* name);

/// An entry point that is looked up once. For constants with static lifetime:
///     constinit Provider_Function<BOOL(LPVOID, DWORD, DWORD)> entry(L"crypt32", "CryptProtectMemory");
///     const auto function = entry.Get();
///     return function != nullptr ? function(data, size, flags) : FALSE;
template <class Function>
class Provider_Function
{
public:
    constexpr Provider_Function(LPCWSTR module, const char* name) : m_pModule(module), m_pName(name) {}

    /// Null with the last error of Provider_Entry.
    Function* Get()
    {
        Function* function = m_pFunction.load(std::memory_order_acquire);
        if (function == nullptr)
        {
            function = reinterpret_cast<Function*>(Provider_Entry(m_pModule, m_pName));
            if (function != nullptr)
            {
                m_pFunction.store(function, std::memory_order_release);
            }
        }
        return function;
    }

private:
    LPCWSTR m_pModule;
    const char* m_pName;
    std::atomic<Function*> m_pFunction{nullptr};
};

} // namespace qn_platform

#endif
