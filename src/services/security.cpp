#include "services/security.h"

#include <atomic>
#include <mutex>

namespace
{

struct Public_Security
{
    SECURITY_DESCRIPTOR m_Descriptor;
    _SECURITY_ATTRIBUTES m_Attributes;
};

bool build(Public_Security& Security)
{
    if (InitializeSecurityDescriptor(&Security.m_Descriptor, SECURITY_DESCRIPTOR_REVISION) == FALSE ||
        SetSecurityDescriptorDacl(&Security.m_Descriptor, TRUE, nullptr, FALSE) == FALSE)
    {
        return false;
    }
    Security.m_Attributes = {sizeof Security.m_Attributes, &Security.m_Descriptor, TRUE};
    return true;
}

using Add_Mandatory_Ace = BOOL(WINAPI*)(PACL, DWORD, DWORD, DWORD, PSID);

/// A list with one label, and what it took to make it.
class Label
{
public:
    Label() = default;
    Label(const Label&) = delete;
    Label& operator=(const Label&) = delete;

    /// False with the cause as the last error.
    bool Build(DWORD dwLevel);

    PACL Get_Acl() const { return m_pAcl; }

    /// Releases everything; may change the last error.
    ~Label();

private:
    bool make_List();
    bool add_Entry();

    PSID m_pSid = nullptr;
    PACL m_pAcl = nullptr;
    HMODULE m_hModule = nullptr;
};

bool Label::Build(DWORD dwLevel)
{
    SID_IDENTIFIER_AUTHORITY Authority = {{0, 0, 0, 0, 0, 16}};
    return AllocateAndInitializeSid(&Authority, 1, dwLevel, 0, 0, 0, 0, 0, 0, 0, &m_pSid) != FALSE &&
           make_List() && add_Entry();
}

bool Label::make_List()
{
    // The header and the entry's own fields are 8 bytes each; all is brought up to a multiple of 4.
    const DWORD dwSize = (GetLengthSid(m_pSid) + 19) & ~DWORD{3};
    m_pAcl = static_cast<PACL>(LocalAlloc(LPTR, dwSize));
    return m_pAcl != nullptr && InitializeAcl(m_pAcl, dwSize, ACL_REVISION) != FALSE;
}

bool Label::add_Entry()
{
    constexpr DWORD dwPolicy = SYSTEM_MANDATORY_LABEL_NO_WRITE_UP | SYSTEM_MANDATORY_LABEL_NO_READ_UP |
                               SYSTEM_MANDATORY_LABEL_NO_EXECUTE_UP;
    m_hModule = LoadLibraryW(L"advapi32.dll");
    if (m_hModule == nullptr)
    {
        return false;
    }
    const auto pFound = reinterpret_cast<void (*)()>(GetProcAddress(m_hModule, "AddMandatoryAce"));
    const auto pfnAdd = reinterpret_cast<Add_Mandatory_Ace>(pFound);
    return pfnAdd != nullptr && pfnAdd(m_pAcl, ACL_REVISION, 0, dwPolicy, m_pSid) != FALSE;
}

Label::~Label()
{
    if (m_pSid != nullptr)
    {
        FreeSid(m_pSid);
    }
    if (m_pAcl != nullptr)
    {
        LocalFree(m_pAcl);
    }
    if (m_hModule != nullptr)
    {
        FreeLibrary(m_hModule);
    }
}

/// The code is that of the step that failed, which can be 0 if the platform gave none.
bool set_Label(wchar_t* pName, _SE_OBJECT_TYPE Type, DWORD dwLevel, DWORD& dwError)
{
    Label NewLabel;
    if (!NewLabel.Build(dwLevel))
    {
        dwError = GetLastError();
        return false;
    }
    dwError = SetNamedSecurityInfoW(pName, Type, LABEL_SECURITY_INFORMATION, nullptr, nullptr, nullptr,
                                    NewLabel.Get_Acl());
    return dwError == ERROR_SUCCESS;
}

} // namespace

_SECURITY_ATTRIBUTES* Lib_Get_Public_Security_Attributes()
{
    static Public_Security s_Security;
    static std::atomic<bool> s_bInitialised{false};
    static std::mutex s_First_Call;

    if (!s_bInitialised.load(std::memory_order_acquire))
    {
        const std::lock_guard<std::mutex> Guard(s_First_Call);
        if (!s_bInitialised.load(std::memory_order_relaxed))
        {
            if (!build(s_Security))
            {
                return nullptr;
            }
            s_bInitialised.store(true, std::memory_order_release);
        }
    }
    return &s_Security.m_Attributes;
}

bool Lib_Set_Low_Integrity_Access_Level(wchar_t* pName, _SE_OBJECT_TYPE Type, unsigned long ulLevel)
{
    DWORD dwError = ERROR_SUCCESS;
    const bool bSet = set_Label(pName, Type, static_cast<DWORD>(ulLevel), dwError);
    if (dwError != ERROR_SUCCESS)
    {
        SetLastError(dwError); // the clean-up may have left another one
    }
    return bSet;
}

bool SetProcessPrivilege(wchar_t* pName, bool bEnable)
{
    HANDLE hToken = nullptr;
    if (OpenProcessToken(GetCurrentProcess(), TOKEN_ADJUST_PRIVILEGES, &hToken) == FALSE)
    {
        return false;
    }
    TOKEN_PRIVILEGES Wanted = {1, {{{0, 0}, bEnable ? DWORD{SE_PRIVILEGE_ENABLED} : 0}}};
    const bool bDone =
        LookupPrivilegeValueW(nullptr, pName, &Wanted.Privileges[0].Luid) != FALSE &&
        AdjustTokenPrivileges(hToken, FALSE, &Wanted, sizeof Wanted, nullptr, nullptr) != FALSE;
    const DWORD dwError = GetLastError();
    CloseHandle(hToken);
    if (!bDone)
    {
        SetLastError(dwError);
    }
    return bDone;
}
