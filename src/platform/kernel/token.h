#ifndef QNLIB_SRC_PLATFORM_KERNEL_TOKEN_H
#define QNLIB_SRC_PLATFORM_KERNEL_TOKEN_H

#include "platform/kernel/object.h"
#include "platform/kernel/privileges.h"
#include "platform/kernel/ranked_lock.h"

#include <mutex>
#include <optional>

// The record behind the handles to a token.

namespace qn_platform::kernel
{

/// The privileges that a token holds, and which of those are enabled.
struct Privilege_State
{
    Privilege_Set held;
    Privilege_Set enabled;
};

/// Whom a token stands for.
struct Identity
{
    DWORD session;
    DWORD user;
};

/// Guards the privileges of all tokens.
extern Ranked_Lock g_Privileges_Lock;

/// Any thread may use it at any time.
class Token
{
public:
    /// That of this process. `granted_access` is what may be asked for when the token is opened.
    Token(DWORD granted_access, Privilege_Set held)
        : m_dwGranted_Access(granted_access), m_Privileges{held, held & Get_Default_Privileges()}
    {
    }

    /// One for threads to bear.
    Token(DWORD granted_access, const Identity& client)
        : m_dwGranted_Access(granted_access),
          m_Client(client), m_Privileges{Get_Default_Privileges(), Get_Default_Privileges()}
    {
    }

    DWORD Get_Granted_Access() const { return m_dwGranted_Access; }

    bool Can_Be_Borne() const { return m_Client.has_value(); }

    /// Those of this process, the user being the one that it has now, unless the token is a client's.
    DWORD Get_Session(DWORD& session) const; // 0, or why it is not known just now
    DWORD Get_User() const;

    Privilege_State Get_Privileges() const;

    /// Has `change` alter the state, or leave it, while no other thread sees it. Its answer is the result.
    template <class Change>
    bool Change_Privileges(const Change& change)
    {
        const std::lock_guard<Ranked_Lock> guard(g_Privileges_Lock);
        return change(m_Privileges);
    }

private:
    const DWORD m_dwGranted_Access;
    const std::optional<Identity> m_Client;
    Privilege_State m_Privileges;
};

/// The token of this process. Empty, last error 8, when memory is short.
Object_Reference Get_Process_Token();

/// A new handle to a token. Null with the last error 5 for access that the token does not grant or that is
/// not in `most`, and 8 or 4 when there is no room.
HANDLE Open_Token(Object_Reference token, DWORD access, DWORD most = ~DWORD{0});

/// A handle with all rights to a new token for threads to bear. Null with the last error 8 or 4 when there is
/// no room.
HANDLE New_Client_Token(DWORD granted_access, const Identity& client);

/// What tokens may be opened for by the calling thread: what the token that it bears grants, or anything.
DWORD Get_Own_Grant();

/// In a forked child: the token is there, and no object stands for it.
void Forget_Process_Token();

/// The token behind an object that Find_Object found as one.
inline Token& Get_Token(const Object& object) { return *static_cast<Token*>(Get_Record(object)); }

} // namespace qn_platform::kernel

#endif
