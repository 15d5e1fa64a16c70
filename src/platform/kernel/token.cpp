#include "platform/kernel/token.h"

#include "platform/fail.h"
#include "platform/kernel.h"
#include "platform/kernel/access_rights.h"
#include "platform/kernel/object_pool.h"
#include "platform/kernel/session.h"
#include "platform/kernel/thread_state.h"
#include "platform/tokens.h"

#include <new>
#include <utility>

#include <unistd.h>

namespace qn_platform::kernel
{

namespace
{

/// These name no right: they mean some.
constexpr DWORD GENERIC_RIGHTS =
    GENERIC_READ | GENERIC_WRITE | GENERIC_EXECUTE | GENERIC_ALL | MAXIMUM_ALLOWED;

/// What handles to the token of this process stand for. Made at first need, and kept.
constinit std::atomic<Object*> g_pProcess_Token{nullptr};

} // namespace

constinit Ranked_Lock g_Privileges_Lock{Lock_Rank::Privileges};

Privilege_State Token::Get_Privileges() const
{
    const std::lock_guard<Ranked_Lock> guard(g_Privileges_Lock);
    return m_Privileges;
}

DWORD Token::Get_Session(DWORD& session) const
{
    if (!m_Client.has_value())
    {
        return Get_Own_Session(session);
    }
    session = m_Client->session;
    return ERROR_SUCCESS;
}

DWORD Token::Get_User() const { return m_Client.has_value() ? m_Client->user : ::geteuid(); }

namespace
{

/// The lock is held across a fork, so that no child finds the token half made.
Token& get_Process_Token()
{
    const std::lock_guard<Ranked_Lock> guard(g_Privileges_Lock);
    static Token token(TOKEN_ALL_ACCESS, Read_Held_Privileges());
    return token;
}

} // namespace

Object_Reference Get_Process_Token()
{
    Object* pObject = g_pProcess_Token.load(std::memory_order_acquire);
    if (pObject == nullptr)
    {
        Object_Reference made = New_Record(Kind::Token, &get_Process_Token(), [](void*) {});
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
    const DWORD wanted = (access & ~GENERIC_RIGHTS) | Map_Access(Kind::Token, access & ~MAXIMUM_ALLOWED);
    const bool all = (access & MAXIMUM_ALLOWED) != 0;
    if ((wanted & ~(granted | SYNCHRONIZE)) != 0 || (all && granted == 0))
    {
        Fail(ERROR_ACCESS_DENIED);
        return nullptr;
    }
    return New_Handle(std::move(token), all ? granted : wanted & granted, false);
}

HANDLE New_Client_Token(DWORD granted_access, const Identity& client)
{
    auto* const token = new (std::nothrow) Token(granted_access, client);
    if (token == nullptr)
    {
        Fail(ERROR_NOT_ENOUGH_MEMORY);
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
