#include "platform/kernel/token.h"

#include "platform/kernel/access_rights.h"
#include "platform/kernel/object_pool.h"
#include "platform/kernel/session.h"
#include "platform/kernel/thread_state.h"
#include "platform/modules.h"
#include "platform/tokens.h"

#include <new>
#include <utility>

#include <unistd.h>

namespace qn_platform::kernel
{

namespace
{

constexpr DWORD ACCESS_SYSTEM_SECURITY = 0x01000000;

/// What handles to the token of this process stand for. Made at first need, and kept.
constinit std::atomic<Object*> g_pProcess_Token{nullptr};

} // namespace

Privilege_State Token::Get_Privileges() const
{
    // In this order, so that a privilege that is being removed is not seen as held again.
    const Privilege_Set enabled = m_Enabled.load(std::memory_order_acquire);
    return {m_Held.load(std::memory_order_acquire), enabled};
}

bool Token::Change_Privileges(Privilege_State& before, const Privilege_State& after)
{
    if (!m_Enabled.compare_exchange_strong(before.enabled, after.enabled, std::memory_order_acq_rel))
    {
        before.held = m_Held.load(std::memory_order_acquire);
        return false;
    }
    m_Held.fetch_and(~(before.held & ~after.held), std::memory_order_acq_rel);
    return true;
}

DWORD Token::Get_Session() const { return m_Client.has_value() ? m_Client->session : Get_Own_Session(); }

DWORD Token::Get_User() const { return m_Client.has_value() ? m_Client->user : ::geteuid(); }

Object_Reference Get_Process_Token()
{
    static Token token(TOKEN_ALL_ACCESS, Read_Held_Privileges());
    Object* pObject = g_pProcess_Token.load(std::memory_order_acquire);
    if (pObject == nullptr)
    {
        Object_Reference made = New_Record(Kind::Token, &token, [](void*) {});
        if (!made)
        {
            return made;
        }
        if (g_pProcess_Token.compare_exchange_strong(pObject, made.get(), std::memory_order_acq_rel))
        {
            pObject = made.Detach();
        }
    }
    return Share(*pObject);
}

HANDLE Open_Token(Object_Reference token, DWORD access, DWORD most)
{
    const DWORD granted = Get_Token(*token).Get_Granted_Access() & most;
    const DWORD wanted = Map_Access(Kind::Token, access);
    if ((wanted & ~granted) != 0 || (access & ACCESS_SYSTEM_SECURITY) != 0)
    {
        SetLastError(ERROR_ACCESS_DENIED);
        return nullptr;
    }
    return New_Handle(std::move(token), wanted, false);
}

HANDLE New_Client_Token(DWORD granted_access, const Identity& client)
{
    auto* const token = new (std::nothrow) Token(granted_access, client);
    if (token == nullptr)
    {
        SetLastError(ERROR_NOT_ENOUGH_MEMORY);
        return nullptr;
    }
    Object_Reference object =
        New_Record(Kind::Token, token, [](void* record) { delete static_cast<Token*>(record); });
    return object ? New_Handle(std::move(object), TOKEN_ALL_ACCESS, false) : nullptr;
}

DWORD Get_Own_Grant()
{
    const Object_Reference own = Get_Own_Token();
    return own ? Get_Token(*own).Get_Granted_Access() : ~DWORD{0};
}

void Forget_Process_Token() { g_pProcess_Token.store(nullptr, std::memory_order_relaxed); }

} // namespace qn_platform::kernel
