#include "platform/kernel.h"
#include "platform/kernel/access_rights.h"
#include "platform/kernel/find_object.h"
#include "platform/kernel/handle_table.h"
#include "platform/kernel/thread_record.h"
#include "platform/modules.h"

#include <utility>

#include <unistd.h>

// Operations on handles of any kind.

namespace qn_platform
{

using namespace kernel;

namespace
{

constexpr DWORD PROCESS_DUP_HANDLE = 0x40;

/// For tokens a duplicate has no right that its source lacks: a token may have been made for some rights
/// only.
bool can_Be_Granted(const Found& source, DWORD wanted)
{
    return (wanted & ~source.access) == 0 || Get_Kind(*source.object) != Kind::Token;
}

DWORD get_Wanted_Access(const Found& source, DWORD access, DWORD options)
{
    if ((options & DUPLICATE_SAME_ACCESS) != 0)
    {
        return source.access;
    }
    const Kind kind = Get_Kind(*source.object);
    return kind == Kind::Token && (access & MAXIMUM_ALLOWED) != 0 ? source.access : Map_Access(kind, access);
}

/// False, with the last error, for what is no handle to this process that allows duplication.
bool is_This_Process(HANDLE process)
{
    return process == GetCurrentProcess() || Check_Handle(process, Kind::Process, PROCESS_DUP_HANDLE);
}

BOOL duplicate(Found source, LPHANDLE target, DWORD access, BOOL inherit, DWORD options)
{
    const DWORD dwWanted = get_Wanted_Access(source, access, options);
    if (!can_Be_Granted(source, dwWanted))
    {
        return Fail(ERROR_ACCESS_DENIED);
    }
    if (target == nullptr)
    {
        return TRUE;
    }
    *target = New_Handle(std::move(source.object), dwWanted, inherit != 0);
    return *target != nullptr;
}

} // namespace

BOOL CloseHandle(HANDLE handle) { return Is_Pseudo(handle) || Close_Handle(handle); }

BOOL DuplicateHandle(HANDLE source_process, HANDLE source, HANDLE target_process, LPHANDLE target,
                     DWORD access, BOOL inherit, DWORD options)
{
    // There are no handles to other processes.
    if (!is_This_Process(source_process) || !is_This_Process(target_process))
    {
        return FALSE;
    }
    if ((options & ~(DUPLICATE_CLOSE_SOURCE | DUPLICATE_SAME_ACCESS)) != 0)
    {
        return Fail(ERROR_INVALID_PARAMETER);
    }
    Found found = Find_Any(source);
    if (!found.object)
    {
        return FALSE;
    }
    const BOOL bDone = duplicate(std::move(found), target, access, inherit, options);
    if ((options & DUPLICATE_CLOSE_SOURCE) != 0 && !Is_Pseudo(source))
    {
        const DWORD dwError = GetLastError();
        Close_Handle(source);
        SetLastError(dwError);
    }
    return bDone;
}

BOOL GetHandleInformation(HANDLE handle, LPDWORD flags)
{
    std::uint64_t nWord = 0;
    if (Find_Slot(handle, nWord) == nullptr)
    {
        return Fail(ERROR_INVALID_HANDLE);
    }
    if (flags == nullptr)
    {
        return Fail(ERROR_INVALID_PARAMETER);
    }
    *flags = ((nWord & SLOT_INHERIT) != 0 ? HANDLE_FLAG_INHERIT : 0) |
             ((nWord & SLOT_PROTECT) != 0 ? HANDLE_FLAG_PROTECT_FROM_CLOSE : 0);
    return TRUE;
}

BOOL SetHandleInformation(HANDLE handle, DWORD mask, DWORD flags)
{
    if ((mask & ~(HANDLE_FLAG_INHERIT | HANDLE_FLAG_PROTECT_FROM_CLOSE)) != 0)
    {
        return Fail(ERROR_INVALID_PARAMETER);
    }
    const auto get_Bits = [](DWORD of)
    {
        return ((of & HANDLE_FLAG_INHERIT) != 0 ? SLOT_INHERIT : 0) |
               ((of & HANDLE_FLAG_PROTECT_FROM_CLOSE) != 0 ? SLOT_PROTECT : 0);
    };
    std::uint64_t nWord = 0;
    Slot* const pSlot = Find_Slot(handle, nWord);
    do
    {
        if (pSlot == nullptr || !Is_Open_As(handle, nWord))
        {
            return Fail(ERROR_INVALID_HANDLE);
        }
    } while (!pSlot->word.compare_exchange_weak(nWord, (nWord & ~get_Bits(mask)) | get_Bits(flags & mask),
                                                std::memory_order_acq_rel));
    return TRUE;
}

HANDLE GetCurrentProcess() { return reinterpret_cast<HANDLE>(THIS_PROCESS); }

HANDLE GetCurrentThread() { return reinterpret_cast<HANDLE>(THIS_THREAD); }

DWORD GetCurrentProcessId()
{
    return g_pCurrent_Thread != nullptr ? g_pCurrent_Thread->process : static_cast<DWORD>(getpid());
}

DWORD GetCurrentThreadId()
{
    return g_pCurrent_Thread != nullptr ? g_pCurrent_Thread->id : static_cast<DWORD>(gettid());
}

} // namespace qn_platform
