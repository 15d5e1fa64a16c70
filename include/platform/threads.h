#ifndef QNLIB_PLATFORM_THREADS_H
#define QNLIB_PLATFORM_THREADS_H

#include "lib_api.h"
#include "platform/types.h"

#include <cstdint>

// Threads. Included through lib_platform.h only.
//
// A thread that is made here is one of the C library as any other: signals, thread-local objects, sanitizers
// and debuggers know it. It runs under the token of the process until it is given another one. Nobody joins
// it: it runs on when no handle is left, and gives back what it had when it ends. Its handle is set at its
// very end, after its procedure, the destructors of its thread-local objects, and its mutexes have become
// abandoned. An exception that leaves the procedure ends the program.
//
// There is no SuspendThread: Linux cannot stop a thread of a program at any instruction and tell its owner
// so. A thread is suspended between its creation and the first ResumeThread, or not at all. One that is still
// suspended when the last handle to it is closed can never be resumed: it is ended, and its procedure never
// runs.
//
// Threads made by other means have handles too (DuplicateHandle of GetCurrentThread); what exit code they
// leave the layer does not learn, and tells 0. A forked child has its parent's calling thread and no other.

namespace qn_platform
{

inline constexpr DWORD CREATE_SUSPENDED = 4;
inline constexpr DWORD STACK_SIZE_PARAM_IS_A_RESERVATION = 0x00010000;
inline constexpr DWORD STILL_ACTIVE = 259;

/// Makes a thread that runs `procedure` with `argument`; what that returns is its exit code. The answer is a
/// handle (a HANDLE, for the caller to close) with all rights. `id`, if not null, receives the thread's
/// identifier.
///
/// With CREATE_SUSPENDED in `flags` the thread exists, and can be given a token, but runs nothing of the
/// procedure before ResumeThread. `stack_size` is what the stack has at least; the system's default is used
/// if that is more, unless STACK_SIZE_PARAM_IS_A_RESERVATION is in `flags` (then at least 64 KiB).
/// `attributes` is null or SECURITY_ATTRIBUTES, of which the inherit flag counts.
///
/// 0 on failure, with the last error and errno: 87 and EINVAL for a null procedure and unknown flags, 50 and
/// EINVAL for a descriptor that cannot be expressed, 8 and EAGAIN when the system makes no more threads, 8 or
/// 4 and EACCES when there is no room for the handle. `id` is untouched then.
LIB_API std::uintptr_t _beginthreadex(void* attributes, unsigned int stack_size,
                                      unsigned int (*procedure)(void* argument), void* argument,
                                      unsigned int flags, unsigned int* id);

/// Lets a suspended thread run. The answer is its suspend count before: 1, or 0 if it was not suspended (and
/// nothing happens). 0xFFFFFFFF on failure: 6 for what is no thread, 5 without THREAD_SUSPEND_RESUME.
LIB_API DWORD ResumeThread(HANDLE thread);

/// The exit code of a thread, STILL_ACTIVE until it has ended. Needs THREAD_QUERY_INFORMATION or
/// THREAD_QUERY_LIMITED_INFORMATION. 87 for a null `code`.
LIB_API BOOL GetExitCodeThread(HANDLE thread, LPDWORD code);

/// The identifier of a thread, as GetCurrentThreadId tells it there; it stays the same after the thread's
/// end, and another thread may have it then. Needs the same right as GetExitCodeThread. 0 on failure.
LIB_API DWORD GetThreadId(HANDLE thread);

/// Ends a thread that is suspended, with `code`; its procedure never runs. That is all it does: a thread that
/// runs cannot be ended from outside without harm to the others, and is refused with 50. 5 for a thread that
/// has ended or is about to, and without THREAD_TERMINATE.
LIB_API BOOL TerminateThread(HANDLE thread, DWORD code);

} // namespace qn_platform

#endif
