#include "platform/kernel/token.h"

#include "platform/kernel/access_rights.h"
#include "platform/modules.h"
#include "platform/tokens.h"

namespace qn_platform::kernel
{

namespace
{

constexpr DWORD ACCESS_SYSTEM_SECURITY = 0x01000000;

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

Token& Get_Process_Token()
{
    static Token token(TOKEN_ALL_ACCESS, Read_Held_Privileges());
    return token;
}

HANDLE Open_Token(Token& token, DWORD access)
{
    const DWORD wanted = Map_Access(Kind::Token, access);
    if ((wanted & ~token.Get_Granted_Access()) != 0 || (access & ACCESS_SYSTEM_SECURITY) != 0)
    {
        SetLastError(ERROR_ACCESS_DENIED);
        return nullptr;
    }
    const Object_Reference object = New_Record(Kind::Token, &token, [](void*) {});
    return object ? New_Handle(object, wanted, false) : nullptr;
}

} // namespace qn_platform::kernel
