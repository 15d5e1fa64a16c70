#include "platform/kernel/access_rights.h"

#include "platform/kernel.h"

namespace qn_platform::kernel
{

namespace
{

/// What the generic rights mean to a kind of object.
struct Rights
{
    DWORD read;
    DWORD write;
    DWORD execute;
    DWORD all;
};

constexpr DWORD EVENT_OR_MUTEX_QUERY_STATE = 1;

// Threads: get context, query; terminate, suspend and resume, set context, set information, set limited
// information; query limited information. Processes: query, read memory; create threads, operate on, write
// memory, create processes, set quota, set information; terminate, query limited information. Tokens: query;
// adjust privileges, groups and defaults.
constexpr Rights EVENT_RIGHTS{READ_CONTROL | EVENT_OR_MUTEX_QUERY_STATE, READ_CONTROL | EVENT_MODIFY_STATE,
                              READ_CONTROL | SYNCHRONIZE, EVENT_ALL_ACCESS};
constexpr Rights MUTEX_RIGHTS{READ_CONTROL | EVENT_OR_MUTEX_QUERY_STATE, READ_CONTROL,
                              READ_CONTROL | SYNCHRONIZE, MUTEX_ALL_ACCESS};
constexpr Rights THREAD_RIGHTS{READ_CONTROL | 0x48, READ_CONTROL | 0x433, READ_CONTROL | SYNCHRONIZE | 0x800,
                               0x001FFFFF};
constexpr Rights PROCESS_RIGHTS{READ_CONTROL | 0x410, READ_CONTROL | 0xBEA,
                                READ_CONTROL | SYNCHRONIZE | 0x1001, 0x001FFFFF};
constexpr Rights TOKEN_RIGHTS{READ_CONTROL | 0x8, READ_CONTROL | 0xE0, READ_CONTROL, 0x000F01FF};

const Rights& get_Rights(Kind kind)
{
    switch (kind)
    {
    case Kind::Event:
        return EVENT_RIGHTS;
    case Kind::Mutex:
        return MUTEX_RIGHTS;
    case Kind::Thread:
        return THREAD_RIGHTS;
    case Kind::Token:
        return TOKEN_RIGHTS;
    default:
        return PROCESS_RIGHTS;
    }
}

} // namespace

DWORD Get_All_Access(Kind kind) { return get_Rights(kind).all; }

DWORD Map_Access(Kind kind, DWORD access)
{
    const Rights& rights = get_Rights(kind);
    DWORD mapped = access;
    mapped |= (access & GENERIC_READ) != 0 ? rights.read : 0;
    mapped |= (access & GENERIC_WRITE) != 0 ? rights.write : 0;
    mapped |= (access & GENERIC_EXECUTE) != 0 ? rights.execute : 0;
    mapped |= (access & (GENERIC_ALL | MAXIMUM_ALLOWED)) != 0 ? rights.all : 0;
    return mapped & rights.all;
}

} // namespace qn_platform::kernel
