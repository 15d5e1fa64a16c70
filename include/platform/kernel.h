#ifndef QNLIB_PLATFORM_KERNEL_H
#define QNLIB_PLATFORM_KERNEL_H

#include "lib_api.h"
#include "platform/types.h"

// Kernel objects: handles, events, mutexes and waits. Included through lib_platform.h only.
//
// A handle is a value of this process with an access mask and two flags of its own; several handles, in one
// process or many, may stand for one object. Any thread may call any of these at any time; closing a handle
// on which another thread waits does not disturb that wait. Failures leave their code as the last error: 6
// for a value that is no handle, or a handle to another kind of object than the operation needs; 5 for a
// handle whose access mask does not allow the operation; 8 when memory is short and 4 when descriptors are.
// Success leaves the last error alone, but for the operations that create.
//
// A forked child has none of its parent's handles: their values answer 6 there.

struct _SECURITY_ATTRIBUTES
{
    qn_platform::DWORD nLength;
    qn_platform::LPVOID lpSecurityDescriptor;
    qn_platform::BOOL bInheritHandle;
};

namespace qn_platform
{

using SECURITY_ATTRIBUTES = ::_SECURITY_ATTRIBUTES;
using PSECURITY_ATTRIBUTES = SECURITY_ATTRIBUTES*;
using LPSECURITY_ATTRIBUTES = SECURITY_ATTRIBUTES*;

inline constexpr DWORD INFINITE = 0xFFFFFFFF;
inline constexpr DWORD WAIT_OBJECT_0 = 0;
inline constexpr DWORD WAIT_ABANDONED = 0x80;
inline constexpr DWORD WAIT_ABANDONED_0 = 0x80;
inline constexpr DWORD WAIT_TIMEOUT = 258;
inline constexpr DWORD WAIT_FAILED = 0xFFFFFFFF;
inline constexpr DWORD MAXIMUM_WAIT_OBJECTS = 64;

inline constexpr DWORD DUPLICATE_CLOSE_SOURCE = 1;
inline constexpr DWORD DUPLICATE_SAME_ACCESS = 2;
inline constexpr DWORD HANDLE_FLAG_INHERIT = 1;
inline constexpr DWORD HANDLE_FLAG_PROTECT_FROM_CLOSE = 2;

inline constexpr DWORD DELETE = 0x00010000;
inline constexpr DWORD READ_CONTROL = 0x00020000;
inline constexpr DWORD WRITE_DAC = 0x00040000;
inline constexpr DWORD WRITE_OWNER = 0x00080000;
inline constexpr DWORD SYNCHRONIZE = 0x00100000;
inline constexpr DWORD STANDARD_RIGHTS_REQUIRED = 0x000F0000;
inline constexpr DWORD STANDARD_RIGHTS_READ = READ_CONTROL;
inline constexpr DWORD MAXIMUM_ALLOWED = 0x02000000;
inline constexpr DWORD GENERIC_ALL = 0x10000000;
inline constexpr DWORD GENERIC_EXECUTE = 0x20000000;
inline constexpr DWORD GENERIC_WRITE = 0x40000000;
inline constexpr DWORD GENERIC_READ = 0x80000000;
inline constexpr DWORD EVENT_MODIFY_STATE = 2;
inline constexpr DWORD EVENT_ALL_ACCESS = 0x001F0003;
inline constexpr DWORD MUTEX_MODIFY_STATE = 1;
inline constexpr DWORD MUTEX_ALL_ACCESS = 0x001F0001;
inline constexpr DWORD THREAD_TERMINATE = 0x0001;
inline constexpr DWORD THREAD_SUSPEND_RESUME = 0x0002;
inline constexpr DWORD THREAD_QUERY_INFORMATION = 0x0040;
inline constexpr DWORD THREAD_SET_THREAD_TOKEN = 0x0080;
inline constexpr DWORD THREAD_IMPERSONATE = 0x0100;
inline constexpr DWORD THREAD_QUERY_LIMITED_INFORMATION = 0x0800;
inline constexpr DWORD THREAD_ALL_ACCESS = 0x001FFFFF;

/// Closes a handle; the object goes with its last handle in any process. 6 also for a handle that is
/// protected from closing, which stays open. The pseudo handles succeed and nothing happens.
LIB_API BOOL CloseHandle(HANDLE handle);

/// Makes another handle to the object behind `source`, with a life, flags and access mask of its own. Both
/// processes are GetCurrentProcess() or handles to this process, which are all that there are; anything else
/// is refused with 6, and options other than the two with 87. `access` counts unless `options` has
/// DUPLICATE_SAME_ACCESS. With DUPLICATE_CLOSE_SOURCE the source is closed, also when no new handle can be
/// made. A null `target` makes no handle, and serves to close the source. The pseudo handles become real
/// ones: that of the thread stands for the calling thread.
LIB_API BOOL DuplicateHandle(HANDLE source_process, HANDLE source, HANDLE target_process, LPHANDLE target,
                             DWORD access, BOOL inherit, DWORD options);

/// The two HANDLE_FLAG values of a handle.
LIB_API BOOL GetHandleInformation(HANDLE handle, LPDWORD flags);

/// Sets those flags of a handle that `mask` names. The inherit flag is remembered and told; no Linux process
/// inherits a handle by it.
LIB_API BOOL SetHandleInformation(HANDLE handle, DWORD mask, DWORD flags);

/// Creates an event, or opens the one of that name: then the last error is 183 and `manual_reset` and
/// `initial_state` are ignored. A null or empty name makes an unnamed event. The last error is 0 after an
/// object was made. 6 when the name belongs to another kind of object, 5 when the object is not open to the
/// caller, 3 for a backslash behind the prefix, 123 for a prefix alone, 206 for a name of more than 260
/// units, 170 when another process holds the object's file for a second, 50 where the system has no named
/// objects, 8 and 4 when memory or descriptors are short.
///
/// A name beginning "Global\" reaches the whole machine, others (and "Local\") the caller's session.
/// Attributes with a descriptor whose DACL is present and null open a named object to every user; null
/// attributes, or none in them, to the creator's user alone. Any other descriptor cannot be expressed and is
/// refused with 50.
LIB_API HANDLE CreateEventW(LPSECURITY_ATTRIBUTES attributes, BOOL manual_reset, BOOL initial_state,
                            LPCWSTR name);

/// Opens an event by its name, with `access` as the handle's mask. 2 when there is none, 87 for a null name;
/// otherwise as CreateEventW.
LIB_API HANDLE OpenEventW(DWORD access, BOOL inherit, LPCWSTR name);

/// Need EVENT_MODIFY_STATE. A pulse releases those who wait at this moment (one for an event that resets
/// itself) and leaves the event reset; it never satisfies a wait for all on a named event.
LIB_API BOOL SetEvent(HANDLE event);
LIB_API BOOL ResetEvent(HANDLE event);
LIB_API BOOL PulseEvent(HANDLE event);

/// As CreateEventW. A new mutex belongs to the calling thread if `initial_owner` is not 0. A mutex is
/// abandoned when its owner thread ends, however that comes; only an owner that calls exec in a thread other
/// than its process's first one leaves a named mutex taken.
LIB_API HANDLE CreateMutexW(LPSECURITY_ATTRIBUTES attributes, BOOL initial_owner, LPCWSTR name);
LIB_API HANDLE OpenMutexW(DWORD access, BOOL inherit, LPCWSTR name);

/// Undoes one wait of the owning thread. 288 when the calling thread is not the owner. Needs no access right.
LIB_API BOOL ReleaseMutex(HANDLE mutex);

/// Waits until the object is signalled, taking it (an event that resets itself, a mutex). `milliseconds` is
/// infinite for 0xFFFFFFFF alone. The answer is 0, 0x80 for a mutex whose owner ended without releasing it
/// (it is the caller's now), 258 after the time, 0xFFFFFFFF on failure. Needs SYNCHRONIZE. Signals of the
/// program do not end a wait.
LIB_API DWORD WaitForSingleObject(HANDLE handle, DWORD milliseconds);

/// Waits for one of, or all of, 1 to 64 objects (otherwise 87), of any kinds. For one: the answer is the
/// lowest index that is signalled, or 0x80 plus the index of an abandoned mutex. For all: nothing is taken
/// before all can be taken at once; 0, or 0x80 plus the lowest index of an abandoned mutex; the same object
/// twice, through whatever handles, is refused with 87.
LIB_API DWORD WaitForMultipleObjects(DWORD count, const HANDLE* handles, BOOL wait_all, DWORD milliseconds);

/// Handles that stand for the calling process and thread wherever a handle is taken; they need no closing.
LIB_API HANDLE GetCurrentProcess();
LIB_API HANDLE GetCurrentThread();
LIB_API DWORD GetCurrentProcessId();
LIB_API DWORD GetCurrentThreadId();

} // namespace qn_platform

#endif
