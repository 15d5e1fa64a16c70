#include "lib_platform.h"

/// The module's entry, called by the loader (on Linux by the layer when it is loaded). The
/// library keeps nothing per thread, so it declines the notifications of threads; it cannot refuse a load.
extern "C" BOOL WINAPI DllMain(HINSTANCE hModule, DWORD dwReason, LPVOID)
{
    if (dwReason == DLL_PROCESS_ATTACH)
    {
        DisableThreadLibraryCalls(hModule);
    }
    return TRUE;
}
