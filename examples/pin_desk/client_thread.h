#ifndef PIN_DESK_CLIENT_THREAD_H
#define PIN_DESK_CLIENT_THREAD_H

#include <lib_kernel.h>
#include <lib_thread.h>

/// Starts a thread that works for a client: it bears the client's token from its first instruction to its
/// last. A null token stands for a client of the desk's own session, whose thread bears none. The procedure's
/// argument must live until the thread has ended, for which to wait on `Thread`.
///
/// False, with the reason in `result`, if there is no such thread; never does one run under another token.
bool Start_Client_Thread(HANDLE hToken, unsigned int (*pfnProcedure)(void*), void* pArgument,
                         Lib_Synchro& Thread, Lib_Result& result);

#endif
