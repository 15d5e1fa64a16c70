#include "platform/modules/module_loads.h"

#include "platform/modules.h"

// A part of every provider: providers are not linked with the layer, of which a process may hold the shared
// or the static form, so the layer lends them its last error when it loads them.

extern "C"
{
    /// Filled in by the layer.
    extern __attribute__((visibility("default"))) qn_platform::Provider_Last_Error qn_provider_last_error;
    qn_platform::Provider_Last_Error qn_provider_last_error = {nullptr, nullptr};
}

namespace qn_platform
{

DWORD GetLastError() { return qn_provider_last_error.get(); }

void SetLastError(DWORD code) { qn_provider_last_error.set(code); }

} // namespace qn_platform
