#ifndef QNLIB_THREAD_IMPERSONATED_THREAD_H
#define QNLIB_THREAD_IMPERSONATED_THREAD_H

#include "foundation/lib_result.h"
#include "lib_api.h"

/// Makes a thread that works for the same client as another one, by default the caller. A new thread runs
/// under the process's token even if its maker impersonates a client; this one bears the impersonation token
/// of the source thread before its first instruction, so that work can be handed over within the client's
/// security context. Any thread can call it.
///
/// | argument       | meaning                                                                              |
/// |----------------|--------------------------------------------------------------------------------------|
/// | pAttributes    | security attributes of the new thread (_SECURITY_ATTRIBUTES), may be null            |
/// | nStack_Size    | 0 for the default                                                                    |
/// | pfnProcedure   | what the thread runs; its answer is the thread's exit code                           |
/// | pArgument      | what the procedure is given                                                          |
/// | nFlags         | creation flags; with CREATE_SUSPENDED (4) the caller resumes the thread by itself    |
/// | result         | receives failures, with source 1                                                     |
/// | pnThread_ID    | receives the identifier once there is a thread, also before a later failure; or null |
/// | hSource_Thread | whose token is taken (a handle with the right to query); null for the calling thread |
/// | phThread       | receives the handle, the caller's then; null: none is wanted. Untouched on failure   |
///
/// True if the thread exists and runs, or is suspended as asked for. That says nothing of a token: where
/// there is none to take, or it is denied, the thread runs under the process's identity, and why is in
/// `result` after a true answer as well (1008 for a source that impersonates nobody).
///
/// False, with the platform's code, if the thread could not be made, given the token, or resumed. A thread
/// that was made is ended then, its procedure never runs, and what it had is freed (on Windows but for the
/// few bytes that the runtime library keeps for a thread that never started). One that was left suspended as
/// asked for and is never resumed is ended with its last handle on Linux; on Windows it stays suspended.
LIB_API bool Lib_Create_Impersonated_Thread_Ex(void* pAttributes, unsigned int nStack_Size,
                                               unsigned int (*pfnProcedure)(void* pArgument), void* pArgument,
                                               unsigned int nFlags, Lib_Result& result,
                                               unsigned int* pnThread_ID, void* hSource_Thread,
                                               void** phThread);

#endif
