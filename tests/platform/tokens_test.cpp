#include "layer_probe.h"
#include "platform/kernel/token.h"

#include <algorithm>
#include <vector>

#include <linux/capability.h>
#include <sys/syscall.h>
#include <unistd.h>

using namespace qn_platform::kernel;

namespace
{

constexpr DWORD SHUTDOWN = 19;
constexpr DWORD DEBUG_PRIVILEGE = 20;
constexpr DWORD SYSTEM_PROFILE = 11;
constexpr DWORD CHANGE_NOTIFY = 23;
constexpr DWORD TIME_ZONE = 34;

std::uint64_t s_nCapabilities = 0;

Privilege_Set Held_With(std::uint64_t capabilities)
{
    s_nCapabilities = capabilities;
    system_calls.get_capabilities = [](void*, void* data)
    {
        auto* const sets = static_cast<__user_cap_data_struct*>(data);
        sets[0].permitted = static_cast<std::uint32_t>(s_nCapabilities);
        sets[1].permitted = static_cast<std::uint32_t>(s_nCapabilities >> 32);
        return 0;
    };
    return Read_Held_Privileges();
}

Privilege_Set Set_Of(std::initializer_list<DWORD> privileges)
{
    Privilege_Set set = 0;
    for (const DWORD privilege : privileges)
        set |= Privilege_Bit(privilege);
    return set;
}

class Tokens : public test_support::Layer_Test
{
};

/// A handle to a token of the test's own.
class Test_Token
{
public:
    explicit Test_Token(Privilege_Set held)
        : m_Token(TOKEN_ALL_ACCESS, held),
          m_Full(Open_Token(New_Record(Kind::Token, &m_Token, [](void*) {}), MAXIMUM_ALLOWED))
    {
    }
    Test_Token(const Test_Token&) = delete;
    Test_Token& operator=(const Test_Token&) = delete;
    ~Test_Token() { CloseHandle(m_Full); }

    DWORD Adjust(const std::vector<LUID_AND_ATTRIBUTES>& wishes)
    {
        std::vector<DWORD> block(1 + 3 * wishes.size());
        auto* const wanted = reinterpret_cast<TOKEN_PRIVILEGES*>(block.data());
        wanted->PrivilegeCount = static_cast<DWORD>(wishes.size());
        std::copy(wishes.begin(), wishes.end(), wanted->Privileges);
        EXPECT_TRUE(AdjustTokenPrivileges(m_Full, FALSE, wanted, 0, nullptr, nullptr));
        return GetLastError();
    }

    Privilege_Set Held() const { return m_Token.Get_Privileges().held; }
    Privilege_Set Enabled() const { return m_Token.Get_Privileges().enabled; }
    HANDLE Full() const { return m_Full; }

private:
    Token m_Token;
    HANDLE m_Full;
};

} // namespace

TEST_F(Tokens, Hold_What_The_Process_Is_Capable_Of)
{
    const Privilege_Set everybody = Held_With(0);
    EXPECT_EQ(Set_Of({CHANGE_NOTIFY, 30, 33, TIME_ZONE, 35}), everybody);
    EXPECT_EQ(everybody | Set_Of({DEBUG_PRIVILEGE}), Held_With(1ULL << CAP_SYS_PTRACE));
    EXPECT_EQ(everybody | Set_Of({SYSTEM_PROFILE, 13}), Held_With(1ULL << CAP_PERFMON))
        << "in the second word";
    EXPECT_EQ(0U, Held_With(~0ULL) & Set_Of({2, 6, 24, 36})) << "nobody holds these";

    system_calls.get_capabilities = [](void*, void* data)
    {
        static_cast<__user_cap_data_struct*>(data)->permitted = 0xFFFFFFFF;
        errno = EPERM;
        return -1;
    };
    EXPECT_EQ(everybody, Read_Held_Privileges());
}

TEST_F(Tokens, Hold_The_Same_Whichever_Thread_Asks_First)
{
    const Privilege_Set held = Read_Held_Privileges();
    Privilege_Set seen = 0;
    std::thread(
        [&]
        {
            __user_cap_header_struct self = {_LINUX_CAPABILITY_VERSION_3, 0};
            const __user_cap_data_struct none[_LINUX_CAPABILITY_U32S_3] = {};
            EXPECT_EQ(0, syscall(SYS_capset, &self, none)) << "of this thread alone";
            seen = Read_Held_Privileges();
        })
        .join();
    EXPECT_EQ(held, seen);
}

TEST_F(Tokens, Take_Each_Wish_By_Itself)
{
    Test_Token token(Set_Of({SHUTDOWN, DEBUG_PRIVILEGE, CHANGE_NOTIFY}));
    EXPECT_EQ(Set_Of({CHANGE_NOTIFY}), token.Enabled());
    EXPECT_EQ(1300U, token.Adjust({{{DEBUG_PRIVILEGE, 0}, SE_PRIVILEGE_ENABLED},
                                   {{TIME_ZONE, 0}, SE_PRIVILEGE_ENABLED},
                                   {{SHUTDOWN, 1}, SE_PRIVILEGE_ENABLED},
                                   {{CHANGE_NOTIFY, 0}, SE_PRIVILEGE_ENABLED_BY_DEFAULT}}));
    EXPECT_EQ(Set_Of({DEBUG_PRIVILEGE}), token.Enabled());
    EXPECT_EQ(0U, token.Adjust({{{SHUTDOWN, 0}, 0}, {{SHUTDOWN, 0}, SE_PRIVILEGE_ENABLED}}))
        << "the last word";
    EXPECT_EQ(Set_Of({DEBUG_PRIVILEGE, SHUTDOWN}), token.Enabled());
    EXPECT_EQ(0U, token.Adjust({}));

    EXPECT_EQ(0U, token.Adjust({{{SHUTDOWN, 0}, SE_PRIVILEGE_REMOVED | SE_PRIVILEGE_ENABLED}}));
    EXPECT_EQ(Set_Of({DEBUG_PRIVILEGE, CHANGE_NOTIFY}), token.Held());
    EXPECT_EQ(1300U, token.Adjust({{{SHUTDOWN, 0}, SE_PRIVILEGE_ENABLED}}));
    EXPECT_EQ(1300U, token.Adjust({{{SHUTDOWN, 0}, SE_PRIVILEGE_REMOVED}}));
    EXPECT_EQ(Set_Of({DEBUG_PRIVILEGE}), token.Enabled());

    EXPECT_TRUE(AdjustTokenPrivileges(token.Full(), TRUE, nullptr, 0, nullptr, nullptr));
    EXPECT_EQ(0U, GetLastError());
    EXPECT_EQ(0U, token.Enabled());
}

TEST_F(Tokens, Tell_What_Was_Changed)
{
    Test_Token token(Set_Of({SHUTDOWN, CHANGE_NOTIFY}));
    struct
    {
        DWORD m_nCount;
        LUID_AND_ATTRIBUTES m_Entries[2];
    } wanted = {2, {{{SHUTDOWN, 0}, 0}, {{CHANGE_NOTIFY, 0}, 0}}}, previous{};
    auto* const pWanted = reinterpret_cast<TOKEN_PRIVILEGES*>(&wanted);
    auto* const pPrevious = reinterpret_cast<TOKEN_PRIVILEGES*>(&previous);
    DWORD needed = 0;
    EXPECT_FALSE(AdjustTokenPrivileges(token.Full(), FALSE, pWanted, 15, pPrevious, &needed));
    EXPECT_EQ(122U, GetLastError());
    EXPECT_EQ(16U, needed) << "one of them is disabled already";
    EXPECT_EQ(Set_Of({CHANGE_NOTIFY}), token.Enabled());

    EXPECT_TRUE(AdjustTokenPrivileges(token.Full(), FALSE, pWanted, 16, pPrevious, &needed));
    EXPECT_EQ(1U, previous.m_nCount);
    EXPECT_EQ(CHANGE_NOTIFY, previous.m_Entries[0].Luid.LowPart);
    EXPECT_EQ(SE_PRIVILEGE_ENABLED | SE_PRIVILEGE_ENABLED_BY_DEFAULT, previous.m_Entries[0].Attributes);
    EXPECT_EQ(0U, token.Enabled());

    EXPECT_TRUE(AdjustTokenPrivileges(token.Full(), FALSE, pPrevious, 0, nullptr, nullptr));
    EXPECT_EQ(Set_Of({CHANGE_NOTIFY}), token.Enabled()) << "it can be handed back";

    const DWORD size = sizeof wanted;
    EXPECT_FALSE(AdjustTokenPrivileges(token.Full(), FALSE, pWanted, size, pPrevious, nullptr));
    EXPECT_EQ(87U, GetLastError());
    EXPECT_FALSE(GetTokenInformation(token.Full(), TOKEN_INFORMATION_CLASS(2), &wanted, size, &needed));
    EXPECT_EQ(50U, GetLastError());
    EXPECT_FALSE(GetTokenInformation(token.Full(), TokenPrivileges, &wanted, size - 1, &needed));
    EXPECT_EQ(122U, GetLastError());
    EXPECT_EQ(size, needed);
}

TEST_F(Tokens, Lose_No_Change_Of_Several_Threads)
{
    Test_Token token(Held_With(~0ULL));
    std::vector<std::thread> threads;
    for (const DWORD privilege : {SHUTDOWN, DEBUG_PRIVILEGE, SYSTEM_PROFILE, TIME_ZONE})
    {
        threads.emplace_back(
            [&, privilege]
            {
                for (int i = 0; i < 2001; ++i)
                {
                    token.Adjust({{{privilege, 0}, i % 2 == 0 ? SE_PRIVILEGE_ENABLED : 0}});
                }
                if (privilege == TIME_ZONE)
                {
                    token.Adjust({{{privilege, 0}, SE_PRIVILEGE_REMOVED}});
                }
            });
    }
    for (std::thread& thread : threads)
    {
        thread.join();
    }
    EXPECT_EQ(Set_Of({SHUTDOWN, DEBUG_PRIVILEGE, SYSTEM_PROFILE, CHANGE_NOTIFY, 30}), token.Enabled());
    EXPECT_EQ(0U, token.Held() & Set_Of({TIME_ZONE}));
}
