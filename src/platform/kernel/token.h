#ifndef QNLIB_SRC_PLATFORM_KERNEL_TOKEN_H
#define QNLIB_SRC_PLATFORM_KERNEL_TOKEN_H

#include "platform/kernel/object.h"
#include "platform/kernel/privileges.h"

#include <atomic>

// The record behind the handles to a token.

namespace qn_platform::kernel
{

/// The privileges that a token holds, and which of those are enabled.
struct Privilege_State
{
    Privilege_Set held;
    Privilege_Set enabled; // only those that are held count
};

/// Any thread may use it at any time.
class Token
{
public:
    /// `granted_access` is what may be asked for when the token is opened.
    Token(DWORD granted_access, Privilege_Set held)
        : m_dwGranted_Access(granted_access), m_Held(held), m_Enabled(held & Get_Default_Privileges())
    {
    }

    DWORD Get_Granted_Access() const { return m_dwGranted_Access; }

    Privilege_State Get_Privileges() const;

    /// Goes from one state to the next, which holds no more than it. False, and `before` is the state that
    /// is, if another thread was first.
    bool Change_Privileges(Privilege_State& before, const Privilege_State& after);

private:
    const DWORD m_dwGranted_Access;
    std::atomic<Privilege_Set> m_Held;
    std::atomic<Privilege_Set> m_Enabled;
};

Token& Get_Process_Token();

/// A new handle to a token of the process's own, which outlives it. Null with the last error 5 for an access
/// that the token does not grant, and 8 or 4.
HANDLE Open_Token(Token& token, DWORD access);

/// The token behind an object that Find_Object found as one.
inline Token& Get_Token(const Object& object) { return *static_cast<Token*>(Get_Record(object)); }

} // namespace qn_platform::kernel

#endif
