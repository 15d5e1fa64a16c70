#include "layer_probe.h"
#include "lib_services.h"
#include "test_process.h"

#include <cstring>

#include <dlfcn.h>
#include <unistd.h>

// What Linux cannot express is refused, and what fails on the way leaves its code and nothing else.

namespace
{

int s_nOpen = 0; // modules that were loaded and not released

class Security : public test_support::Layer_Test
{
protected:
    void SetUp() override { s_nOpen = 0; }

    /// The last error of a refusal.
    static DWORD Label(const wchar_t* pName, _SE_OBJECT_TYPE type)
    {
        SetLastError(77);
        EXPECT_FALSE(Lib_Set_Low_Integrity_Access_Level(const_cast<wchar_t*>(pName), type, 0x1000));
        return GetLastError();
    }

    static void Count_Modules()
    {
        system_calls.open_module = [](const char* path, int mode)
        {
            void* const handle = dlopen(path, mode);
            s_nOpen += handle != nullptr ? 1 : 0;
            return handle;
        };
        system_calls.close_module = [](void* handle)
        {
            --s_nOpen;
            SetLastError(99); // a clean-up that fails
            return dlclose(handle);
        };
    }
};

} // namespace

TEST_F(Security, Looks_At_Every_Part_Of_A_Descriptor)
{
    struct
    {
        ACL m_Acl;
        ACE_HEADER m_Entries[2];
    } list{};
    ASSERT_TRUE(InitializeAcl(&list.m_Acl, sizeof list, 2));
    list.m_Entries[0] = {0, 0, sizeof list.m_Entries};
    list.m_Acl.AceCount = 1;
    SECURITY_DESCRIPTOR descriptor;
    InitializeSecurityDescriptor(&descriptor, 1);
    SetSecurityDescriptorDacl(&descriptor, TRUE, &list.m_Acl, FALSE);
    EXPECT_TRUE(IsValidSecurityDescriptor(&descriptor));

    const auto Faulty = [&]
    {
        EXPECT_FALSE(IsValidAcl(&list.m_Acl));
        return !IsValidSecurityDescriptor(&descriptor) && GetLastError() == 1338;
    };
    list.m_Acl.AceCount = 2;
    EXPECT_TRUE(Faulty()) << "the second one begins at the end";
    list.m_Acl.AceCount = 1;
    list.m_Entries[0].AceSize = 0;
    EXPECT_TRUE(Faulty()) << "a walk over it would not end";
    list.m_Entries[0].AceSize = 6;
    EXPECT_TRUE(Faulty()) << "the next one would not be aligned";
    list.m_Entries[0].AceSize = sizeof list.m_Entries;

    SID owner = {2, 1, {}, {}};
    EXPECT_TRUE(IsValidSecurityDescriptor(&descriptor));
    descriptor.Owner = &owner;
    EXPECT_FALSE(IsValidSecurityDescriptor(&descriptor));
}

TEST_F(Security, Refuses_A_Label_On_What_Is_There)
{
    EXPECT_EQ(50U, Label(L"\\proc\\self", SE_FILE_OBJECT));
    EXPECT_EQ(50U, Label(L".", SE_FILE_OBJECT));
    EXPECT_EQ(50U, Label(L"anything", SE_SERVICE));
    const HANDLE event = CreateEventW(nullptr, FALSE, FALSE, L"qnlib security test event");
    const HANDLE mutex = CreateMutexW(nullptr, FALSE, L"qnlib security test mutex");
    EXPECT_EQ(50U, Label(L"qnlib security test event", SE_KERNEL_OBJECT));
    EXPECT_EQ(50U, Label(L"qnlib security test mutex", SE_KERNEL_OBJECT));
    CloseHandle(event);
    CloseHandle(mutex);
    EXPECT_EQ(2U, Label(L"qnlib security test event", SE_KERNEL_OBJECT));
}

TEST_F(Security, Tells_Why_There_Is_Nothing_To_Label)
{
    EXPECT_EQ(3U, Label(L"\\no such folder\\file", SE_FILE_OBJECT));
    EXPECT_EQ(2U, Label(L"\\proc\\no such file", SE_FILE_OBJECT));
    EXPECT_EQ(3U, Label(L"\\proc\\version\\file", SE_FILE_OBJECT));
    EXPECT_EQ(2U, Label(L"half a pair \xD800", SE_FILE_OBJECT));
    EXPECT_EQ(87U, Label(L"", SE_KERNEL_OBJECT));
    EXPECT_EQ(87U, Label(L"name", SE_UNKNOWN_OBJECT_TYPE));
    EXPECT_EQ(87U, Label(L"name", static_cast<_SE_OBJECT_TYPE>(13)));

    system_calls.access_file = [](const char*, int)
    {
        errno = EACCES;
        return -1;
    };
    EXPECT_EQ(5U, Label(L"file", SE_FILE_OBJECT));
}

TEST_F(Security, Sees_Files_As_The_User_That_It_Acts_For)
{
    if (geteuid() != 0)
        GTEST_SKIP() << "only root can be two users";
    constexpr uid_t nNobody = 65534;
    char folder[] = "/tmp/qnlib_security_XXXXXX"; // nobody but its owner may look into it
    ASSERT_NE(nullptr, mkdtemp(folder));
    const std::string name = folder + std::string("/file");
    std::ofstream(name).put('x');
    const auto Label_As = [&](uid_t nReal, uid_t nEffective)
    {
        const auto label = [&] {
            return setresuid(nReal, nEffective, 0) == 0 ? Label(Lib_String(name.c_str()), SE_FILE_OBJECT)
                                                        : 255;
        };
        return test_support::In_Other_Process(label);
    };
    EXPECT_EQ(50, Label_As(nNobody, 0));
    EXPECT_EQ(5, Label_As(0, nNobody));
    std::filesystem::remove_all(folder);
}

TEST_F(Security, Looks_At_The_Information_First)
{
    wchar_t name[] = L".";
    ACL acl{};
    const auto Reason = [&](SECURITY_INFORMATION information)
    { return SetNamedSecurityInfoW(name, SE_FILE_OBJECT, information, nullptr, nullptr, &acl, &acl); };
    EXPECT_EQ(87U, Reason(0));
    EXPECT_EQ(1337U, Reason(OWNER_SECURITY_INFORMATION));
    EXPECT_EQ(1336U, Reason(LABEL_SECURITY_INFORMATION));
    ASSERT_TRUE(InitializeAcl(&acl, sizeof acl, 2));
    EXPECT_EQ(50U, Reason(DACL_SECURITY_INFORMATION | SACL_SECURITY_INFORMATION));
}

TEST_F(Security, Keeps_The_Code_Of_The_Step_That_Failed)
{
    Count_Modules();
    EXPECT_EQ(2U, Label(L"no such file", SE_FILE_OBJECT));
    EXPECT_EQ(50U, Label(L".", SE_FILE_OBJECT));
    EXPECT_EQ(0, s_nOpen);

    system_calls.find_symbol = [](void* module, const char* name) -> void*
    { return std::strcmp(name, "AddMandatoryAce") == 0 ? nullptr : dlsym(module, name); };
    EXPECT_EQ(127U, Label(L".", SE_FILE_OBJECT));
    EXPECT_EQ(0, s_nOpen);

    system_calls.open_module = [](const char*, int) -> void* { return nullptr; };
    EXPECT_EQ(126U, Label(L".", SE_FILE_OBJECT));
}

TEST_F(Security, Leaves_No_Token_Open)
{
    wchar_t known[] = L"SeTimeZonePrivilege";
    wchar_t unknown[] = L"SeNoSuchPrivilege";
    const std::size_t nBefore = test_support::Count_Open_Handles();
    ASSERT_TRUE(SetProcessPrivilege(known, true));
    ASSERT_FALSE(SetProcessPrivilege(unknown, true));
    EXPECT_EQ(nBefore, test_support::Count_Open_Handles());
}
