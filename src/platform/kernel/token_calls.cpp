#include "platform/fail.h"
#include "platform/kernel.h"
#include "platform/kernel/token.h"
#include "platform/tokens.h"

#include <bit>
#include <cstddef>
#include <cstring>
#include <utility>

namespace qn_platform
{

using namespace kernel;

namespace
{

constexpr DWORD PROCESS_QUERY_LIMITED_INFORMATION = 0x1000;

/// What AdjustTokenPrivileges is asked for; a privilege is in one of the sets at most.
struct Wish
{
    Privilege_Set enable = 0;
    Privilege_Set disable = 0;
    Privilege_Set remove = 0;
    bool has_unknown = false;

    Privilege_Set All() const { return enable | disable | remove; }
};

void add_Wish(Wish& wish, const LUID_AND_ATTRIBUTES& wanted)
{
    const DWORD number = wanted.Luid.LowPart;
    if (wanted.Luid.HighPart != 0 || number < FIRST_PRIVILEGE || number > LAST_PRIVILEGE)
    {
        wish.has_unknown = true;
        return;
    }
    const Privilege_Set bit = Privilege_Bit(number);
    // The last word counts if a privilege is named twice.
    wish.enable &= ~bit;
    wish.disable &= ~bit;
    wish.remove &= ~bit;
    if ((wanted.Attributes & SE_PRIVILEGE_REMOVED) != 0)
    {
        wish.remove |= bit;
    }
    else
    {
        ((wanted.Attributes & SE_PRIVILEGE_ENABLED) != 0 ? wish.enable : wish.disable) |= bit;
    }
}

Wish read_Wish(BOOL disable_all, const TOKEN_PRIVILEGES* wanted)
{
    Wish wish;
    if (disable_all != FALSE)
    {
        wish.disable = ~Privilege_Set{0};
        return wish;
    }
    for (DWORD i = 0; i < wanted->PrivilegeCount; ++i)
    {
        add_Wish(wish, wanted->Privileges[i]);
    }
    return wish;
}

Privilege_State fulfil(const Wish& wish, const Privilege_State& before)
{
    const Privilege_Set held = before.held & ~wish.remove;
    return {held, (before.enabled | wish.enable) & ~wish.disable & held};
}

Privilege_Set find_Changes(const Privilege_State& before, const Privilege_State& after)
{
    return (before.held & ~after.held) | (before.enabled ^ after.enabled);
}

DWORD list_Size(Privilege_Set privileges)
{
    const auto count = static_cast<std::size_t>(std::popcount(privileges));
    return static_cast<DWORD>(offsetof(TOKEN_PRIVILEGES, Privileges) + count * sizeof(LUID_AND_ATTRIBUTES));
}

void write_List(Privilege_Set privileges, Privilege_Set enabled, TOKEN_PRIVILEGES& list)
{
    const Privilege_Set defaults = Get_Default_Privileges();
    LUID_AND_ATTRIBUTES* entry = list.Privileges;
    list.PrivilegeCount = static_cast<DWORD>(std::popcount(privileges));
    for (DWORD number = FIRST_PRIVILEGE; number <= LAST_PRIVILEGE; ++number)
    {
        const Privilege_Set bit = Privilege_Bit(number);
        if ((privileges & bit) != 0)
        {
            const DWORD by_default = (defaults & bit) != 0 ? SE_PRIVILEGE_ENABLED_BY_DEFAULT : 0;
            *entry++ = {{number, 0}, by_default | ((enabled & bit) != 0 ? SE_PRIVILEGE_ENABLED : 0)};
        }
    }
}

/// Gives the state before, or false with the last error 122. `size` bounds the list of changes if there is a
/// `needed`.
bool adjust(Token& token, const Wish& wish, DWORD size, PDWORD needed, Privilege_State& before)
{
    DWORD list_size = 0;
    const bool done = token.Change_Privileges(
        [&](Privilege_State& state)
        {
            before = state;
            const Privilege_State after = fulfil(wish, state);
            list_size = list_Size(find_Changes(before, after));
            const bool fits = needed == nullptr || list_size <= size;
            state = fits ? after : before;
            return fits;
        });
    if (needed != nullptr)
    {
        *needed = list_size;
    }
    return done || Fail(ERROR_INSUFFICIENT_BUFFER);
}

/// Where information of a token goes.
struct Target
{
    void* block;
    DWORD size;
    DWORD& needed;

    bool Has_Room_For(DWORD length) const
    {
        needed = length;
        return block != nullptr && length <= size;
    }
};

DWORD tell_Privileges(const Token& token, const Target& target)
{
    const Privilege_State state = token.Get_Privileges();
    if (!target.Has_Room_For(list_Size(state.held)))
    {
        return ERROR_INSUFFICIENT_BUFFER;
    }
    write_List(state.held, state.enabled, *static_cast<PTOKEN_PRIVILEGES>(target.block));
    return ERROR_SUCCESS;
}

DWORD tell_Session(const Token& token, const Target& target)
{
    DWORD session = 0;
    if (!target.Has_Room_For(sizeof session))
    {
        return ERROR_BAD_LENGTH;
    }
    const DWORD error = token.Get_Session(session);
    if (error == ERROR_SUCCESS)
    {
        std::memcpy(target.block, &session, sizeof session);
    }
    return error;
}

/// Users are the sub-authorities of S-1-22-1.
DWORD tell_User(const Token& token, const Target& target)
{
    struct
    {
        TOKEN_USER user;
        BYTE revision;
        BYTE count;
        SID_IDENTIFIER_AUTHORITY authority;
        DWORD sub_authorities[2];
    } told = {{}, SID_REVISION, 2, {{0, 0, 0, 0, 0, 22}}, {1, token.Get_User()}};
    if (!target.Has_Room_For(sizeof told))
    {
        return ERROR_INSUFFICIENT_BUFFER;
    }
    told.user.User.Sid = static_cast<BYTE*>(target.block) + sizeof told.user;
    std::memcpy(target.block, &told, sizeof told);
    return ERROR_SUCCESS;
}

DWORD tell(const Token& token, TOKEN_INFORMATION_CLASS information_class, const Target& target)
{
    switch (information_class)
    {
    case TokenUser:
        return tell_User(token, target);
    case TokenPrivileges:
        return tell_Privileges(token, target);
    case TokenSessionId:
        return tell_Session(token, target);
    default:
        return ERROR_NOT_SUPPORTED;
    }
}

/// As far as the client lets whom the calling thread works for.
HANDLE open_Process_Token(DWORD access)
{
    Object_Reference token = Get_Process_Token();
    return token ? Open_Token(std::move(token), access, Get_Own_Grant()) : nullptr;
}

} // namespace

BOOL OpenProcessToken(HANDLE process, DWORD access, PHANDLE token)
{
    if (!Check_Handle(process, Kind::Process, PROCESS_QUERY_LIMITED_INFORMATION))
    {
        return FALSE;
    }
    if (token == nullptr)
    {
        return Fail(ERROR_INVALID_PARAMETER);
    }
    const HANDLE opened = open_Process_Token(access);
    if (opened == nullptr)
    {
        return FALSE;
    }
    *token = opened;
    return TRUE;
}

BOOL LookupPrivilegeValueW(LPCWSTR system, LPCWSTR name, PLUID luid)
{
    if (luid == nullptr)
    {
        return Fail(ERROR_INVALID_PARAMETER);
    }
    if (system != nullptr && *system != L'\0')
    {
        return Fail(RPC_S_SERVER_UNAVAILABLE);
    }
    const DWORD number = name != nullptr ? Find_Privilege(name) : 0;
    if (number == 0)
    {
        return Fail(ERROR_NO_SUCH_PRIVILEGE);
    }
    *luid = {number, 0};
    return TRUE;
}

BOOL AdjustTokenPrivileges(HANDLE token, BOOL disable_all, PTOKEN_PRIVILEGES wanted, DWORD size,
                           PTOKEN_PRIVILEGES previous, PDWORD needed)
{
    const DWORD access = TOKEN_ADJUST_PRIVILEGES | (previous != nullptr ? TOKEN_QUERY : 0);
    const Object_Reference object = Find_Object(token, Kind::Token, access);
    if (!object)
    {
        return FALSE;
    }
    if ((disable_all == FALSE && wanted == nullptr) || (previous != nullptr && needed == nullptr))
    {
        return Fail(ERROR_INVALID_PARAMETER);
    }
    const Wish wish = read_Wish(disable_all, wanted);
    Privilege_State before;
    if (!adjust(Get_Token(*object), wish, size, previous != nullptr ? needed : nullptr, before))
    {
        return FALSE;
    }
    if (previous != nullptr)
    {
        const Privilege_Set changes = find_Changes(before, fulfil(wish, before));
        write_List(changes, before.enabled, *previous);
    }
    const bool all = !wish.has_unknown && (disable_all != FALSE || (wish.All() & ~before.held) == 0);
    SetLastError(all ? ERROR_SUCCESS : ERROR_NOT_ALL_ASSIGNED);
    return TRUE;
}

BOOL GetTokenInformation(HANDLE token, TOKEN_INFORMATION_CLASS information_class, LPVOID information,
                         DWORD size, PDWORD needed)
{
    const Object_Reference object = Find_Object(token, Kind::Token, TOKEN_QUERY);
    if (!object)
    {
        return FALSE;
    }
    if (needed == nullptr || information_class <= 0 || information_class >= MaxTokenInfoClass)
    {
        return Fail(ERROR_INVALID_PARAMETER);
    }
    const DWORD error = tell(Get_Token(*object), information_class, {information, size, *needed});
    return error == ERROR_SUCCESS || Fail(error);
}

} // namespace qn_platform
