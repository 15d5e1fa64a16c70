#include "platform/modules.h"

// What the loader of the other target does for every module: calls its entry when it is loaded. A static
// build is a part of its client's module: nothing there refers to this file, so the linker leaves it out.

extern "C"
{

    /// The module's entry, which the library defines.
    __attribute__((visibility("hidden"))) int DllMain(qn_platform::HINSTANCE module,
                                                      qn_platform::DWORD reason, void* reserved);

    /// The first byte of this module, by the linker.
    __attribute__((visibility("hidden"))) extern char __ehdr_start;
}

namespace
{

__attribute__((constructor)) void attach_Module()
{
    DllMain(reinterpret_cast<qn_platform::HINSTANCE>(&__ehdr_start), qn_platform::DLL_PROCESS_ATTACH,
            nullptr);
}

} // namespace
