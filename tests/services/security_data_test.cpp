#include "lib_services.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <vector>

// Descriptors, SIDs and lists in the platform's layout: both targets answer alike.

namespace
{

template <class Call>
DWORD Error_Of(Call call)
{
    SetLastError(77);
    EXPECT_FALSE(call());
    return GetLastError();
}

SID_IDENTIFIER_AUTHORITY g_Label_Authority = {{0, 0, 0, 0, 0, 16}};

PSID Make_Sid(BYTE count, DWORD first)
{
    PSID sid = nullptr;
    EXPECT_TRUE(AllocateAndInitializeSid(&g_Label_Authority, count, first, 2, 3, 4, 5, 6, 7, 8, &sid));
    return sid;
}

/// A list in a block of its own size, so that a write behind it is found.
class List
{
public:
    explicit List(DWORD size, DWORD revision = 2) : m_Block(size)
    {
        EXPECT_TRUE(InitializeAcl(Get(), size, revision));
    }
    PACL Get() { return reinterpret_cast<PACL>(m_Block.data()); }
    const std::vector<BYTE>& Bytes() const { return m_Block; }

private:
    std::vector<BYTE> m_Block;
};

/// AddMandatoryAce, found as callers find it.
class Labels : public testing::Test
{
protected:
    using Function = BOOL(WINAPI*)(PACL, DWORD, DWORD, DWORD, PSID);

    void SetUp() override { ASSERT_NE(nullptr, m_pAdd); }
    void TearDown() override
    {
        FreeSid(m_Low);
        FreeLibrary(m_Module);
    }

    DWORD Fault(List& list, DWORD revision, DWORD policy, PSID sid)
    {
        return Error_Of([&] { return m_pAdd(list.Get(), revision, 0, policy, sid); });
    }

    HMODULE m_Module = LoadLibraryW(L"advapi32.dll");
    Function m_pAdd =
        reinterpret_cast<Function>(reinterpret_cast<void (*)()>(GetProcAddress(m_Module, "AddMandatoryAce")));
    PSID m_Low = Make_Sid(1, 0x1000);
};

} // namespace

TEST(Security_Descriptor, Holds_And_Tells_Its_Dacl)
{
    SECURITY_DESCRIPTOR descriptor;
    std::memset(&descriptor, 0xAB, sizeof descriptor);
    ASSERT_TRUE(InitializeSecurityDescriptor(&descriptor, SECURITY_DESCRIPTOR_REVISION));
    EXPECT_EQ(0, descriptor.Control);
    EXPECT_EQ(nullptr, descriptor.Owner);

    List list(8);
    BOOL present = 9;
    BOOL defaulted = 9;
    PACL dacl = nullptr;
    ASSERT_TRUE(SetSecurityDescriptorDacl(&descriptor, TRUE, list.Get(), TRUE));
    ASSERT_TRUE(GetSecurityDescriptorDacl(&descriptor, &present, &dacl, &defaulted));
    EXPECT_TRUE(present == TRUE && defaulted == TRUE && dacl == list.Get());
    EXPECT_TRUE(IsValidSecurityDescriptor(&descriptor));

    ASSERT_TRUE(SetSecurityDescriptorDacl(&descriptor, TRUE, nullptr, FALSE));
    ASSERT_TRUE(GetSecurityDescriptorDacl(&descriptor, &present, &dacl, &defaulted));
    EXPECT_TRUE(present == TRUE && defaulted == FALSE && dacl == nullptr);

    // Taken out again: nothing but the mark that there is one changes.
    ASSERT_TRUE(SetSecurityDescriptorDacl(&descriptor, TRUE, list.Get(), TRUE));
    ASSERT_TRUE(SetSecurityDescriptorDacl(&descriptor, FALSE, nullptr, FALSE));
    ASSERT_TRUE(GetSecurityDescriptorDacl(&descriptor, &present, &dacl, &defaulted));
    EXPECT_EQ(FALSE, present);
    EXPECT_EQ(SE_DACL_DEFAULTED, descriptor.Control);
    EXPECT_EQ(list.Get(), descriptor.Dacl);
}

TEST(Security_Descriptor, Refuses_What_It_Does_Not_Know)
{
    SECURITY_DESCRIPTOR descriptor{};
    BOOL flag = 0;
    PACL dacl = nullptr;
    EXPECT_EQ(1305U, Error_Of([&] { return InitializeSecurityDescriptor(&descriptor, 2); }));
    EXPECT_EQ(1305U, Error_Of([&] { return SetSecurityDescriptorDacl(&descriptor, TRUE, nullptr, FALSE); }));
    EXPECT_EQ(1305U, Error_Of([&] { return GetSecurityDescriptorDacl(&descriptor, &flag, &dacl, &flag); }));
    EXPECT_FALSE(IsValidSecurityDescriptor(&descriptor));
    EXPECT_FALSE(IsValidSecurityDescriptor(nullptr));
    descriptor.Revision = 1;
    descriptor.Control = SE_SELF_RELATIVE;
    EXPECT_EQ(1338U, Error_Of([&] { return SetSecurityDescriptorDacl(&descriptor, TRUE, nullptr, FALSE); }));
}

TEST(Security_Descriptor, Is_Read_In_Self_Relative_Form_Too)
{
    struct
    {
        SECURITY_DESCRIPTOR_RELATIVE m_Descriptor;
        ACL m_Dacl;
    } block{};
    block.m_Descriptor = {1, 0, SE_SELF_RELATIVE | SE_DACL_PRESENT, 0, 0, 0, sizeof block.m_Descriptor};
    ASSERT_TRUE(InitializeAcl(&block.m_Dacl, sizeof block.m_Dacl, 2));
    BOOL present = FALSE;
    BOOL defaulted = TRUE;
    PACL dacl = nullptr;
    ASSERT_TRUE(GetSecurityDescriptorDacl(&block, &present, &dacl, &defaulted));
    EXPECT_TRUE(present == TRUE && defaulted == FALSE && dacl == &block.m_Dacl);
    EXPECT_TRUE(IsValidSecurityDescriptor(&block));
}

TEST(Sid, Has_The_Platforms_Layout)
{
    PSID sid = Make_Sid(2, 0x1000);
    const BYTE expected[] = {1, 2, 0, 0, 0, 0, 0, 16, 0, 0x10, 0, 0, 2, 0, 0, 0};
    ASSERT_EQ(sizeof expected, GetLengthSid(sid));
    EXPECT_EQ(0, std::memcmp(expected, sid, sizeof expected));
    EXPECT_TRUE(IsValidSid(sid));
    static_cast<BYTE*>(sid)[1] = 16;
    EXPECT_FALSE(IsValidSid(sid));
    static_cast<BYTE*>(sid)[1] = 2;
    EXPECT_EQ(nullptr, FreeSid(sid));
    EXPECT_FALSE(IsValidSid(nullptr));

    PSID most = Make_Sid(8, 1);
    EXPECT_EQ(40U, GetLengthSid(most));
    EXPECT_EQ(8U, static_cast<SID*>(most)->SubAuthority[7]);
    FreeSid(most);
    EXPECT_EQ(
        1337U,
        Error_Of([&]
                 { return AllocateAndInitializeSid(&g_Label_Authority, 9, 1, 2, 3, 4, 5, 6, 7, 8, &most); }));
}

TEST(Acl, Is_Made_And_Checked)
{
    alignas(ACL) BYTE block[16];
    ACL* const acl = reinterpret_cast<ACL*>(block);
    EXPECT_TRUE(InitializeAcl(acl, sizeof block, 4));
    EXPECT_EQ(4, acl->AclRevision);
    EXPECT_EQ(sizeof block, acl->AclSize);
    EXPECT_EQ(0, acl->AceCount);
    EXPECT_TRUE(IsValidAcl(acl));
    EXPECT_EQ(122U, Error_Of([&] { return InitializeAcl(acl, 7, 2); }));
    EXPECT_EQ(87U, Error_Of([&] { return InitializeAcl(acl, 16, 1); }));
    EXPECT_EQ(87U, Error_Of([&] { return InitializeAcl(acl, 16, 5); }));
    EXPECT_EQ(87U, Error_Of([&] { return InitializeAcl(acl, 0x10000, 2); }));

    // An entry that ends behind the list.
    acl->AceCount = 1;
    auto* const entry = reinterpret_cast<ACE_HEADER*>(block + sizeof(ACL));
    *entry = {0, 0, 8};
    EXPECT_TRUE(IsValidAcl(acl));
    *entry = {0, 0, 12};
    EXPECT_FALSE(IsValidAcl(acl));
}

TEST_F(Labels, Are_Appended_As_Entries_Or_Refused)
{
    List list(28);
    EXPECT_EQ(1337U, Fault(list, 2, 7, nullptr));
    EXPECT_EQ(87U, Fault(list, 2, 8, m_Low));
    EXPECT_EQ(1306U, Fault(list, 5, 7, m_Low));
    ASSERT_TRUE(m_pAdd(list.Get(), 4, 0, 7, m_Low));
    const std::vector<BYTE> expected = {4, 0, 28, 0, 1, 0, 0, 0, 0x11, 0,  20, 0,    7, 0,
                                        0, 0, 1,  1, 0, 0, 0, 0, 0,    16, 0,  0x10, 0, 0};
    EXPECT_EQ(expected, list.Bytes());
    EXPECT_TRUE(IsValidAcl(list.Get()));
    EXPECT_EQ(1344U, Fault(list, 2, 7, m_Low)) << "there is no room";
    EXPECT_EQ(expected, list.Bytes()) << "the higher revision stays";
    list.Get()->AclRevision = 9;
    EXPECT_EQ(1306U, Fault(list, 2, 7, m_Low));
}
