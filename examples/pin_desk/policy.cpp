#include "policy.h"

#include "text_output.h"

#include <cstring>
#include <lib_platform.h>
#include <lib_services.h>

namespace
{

constexpr const wchar_t* KEY = L"Software\\Vorel Co\\Quillon\\pin_desk";

constexpr const Setting* SETTINGS[] = {&SETTING_EXPIRE, &SETTING_TRIES};

const Setting* find_Setting(const Lib_String& strName)
{
    for (const Setting* pSetting : SETTINGS)
    {
        if (strName.CompareNoCase(pSetting->m_pName) == 0)
            return pSetting;
    }
    return nullptr;
}

struct Assignment
{
    const Setting* m_pSetting;
    unsigned int m_nNumber;
};

std::optional<Assignment> read_Assignment(const Lib_String& strText)
{
    constexpr unsigned long long MOST_DIGITS = 9; // which an int holds
    const int nSign = strText.Find(L'=');
    if (nSign < 0)
        return std::nullopt;
    const Setting* pSetting = find_Setting(strText.Left(static_cast<unsigned long long>(nSign)));
    const Lib_String strNumber = strText.Mid(static_cast<unsigned long long>(nSign) + 1);
    if (pSetting == nullptr || strNumber.Is_Empty() || strNumber.Get_Length() > MOST_DIGITS ||
        strNumber.Span_Including(L"0123456789").Get_Length() != strNumber.Get_Length())
        return std::nullopt;
    const auto nNumber = static_cast<unsigned int>(Lib_String_To_Int(strNumber));
    return pSetting->Allows(nNumber) ? std::optional(Assignment{pSetting, nNumber}) : std::nullopt;
}

/// None for a value that is damaged.
std::optional<unsigned int> to_Number(const Setting& setting, unsigned long ulType, const Lib_Buffer& Data)
{
    unsigned int nNumber = 0;
    if (ulType != REG_DWORD || Data.Get_Size() != sizeof(nNumber))
        return std::nullopt;
    std::memcpy(&nNumber, Data.Get_Ptr(), sizeof(nNumber));
    return setting.Allows(nNumber) ? std::optional(nNumber) : std::nullopt;
}

Lib_String describe(const Setting& setting, unsigned int nNumber)
{
    Lib_String strText;
    strText.Format(L"%s = %u", setting.m_pName, nNumber);
    return strText;
}

Lib_String describe_Damage(const Setting& setting)
{
    Lib_String strText;
    strText.Format(L"%s is no number from %u to %u", setting.m_pName, setting.m_nLeast, setting.m_nMost);
    return strText;
}

Lib_String describe_Error(const wchar_t* pWhat, long lError)
{
    return pWhat + (L": " + Get_Error_Text(static_cast<unsigned int>(lError)));
}

/// The policy's key, open for reading. A key that isn't there is one without values.
class Policy_Key
{
public:
    Policy_Key() { Lib_Reg_Open_Key(HKEY_CURRENT_USER, true, KEY, m_hKey, &m_lError); }
    Policy_Key(const Policy_Key&) = delete;
    Policy_Key& operator=(const Policy_Key&) = delete;
    ~Policy_Key()
    {
        if (m_hKey != nullptr)
            Lib_Reg_Close_Key(m_hKey, nullptr);
    }

    bool Is_There() const { return m_hKey != nullptr; }
    bool Has_Failed() const { return !Is_There() && m_lError != ERROR_FILE_NOT_FOUND; }
    long Get_Error() const { return m_lError; }

    /// None also for what is damaged or cannot be read, which is told in strFault.
    std::optional<unsigned int> Read(const Setting& setting, Lib_String& strFault) const;

    /// Describes the value in that place; false when there is none, with 259 in lError, or at an error.
    bool Describe(unsigned long ulPlace, Lib_String& strText, long& lError) const;

private:
    HKEY m_hKey = nullptr;
    long m_lError = 0;
};

std::optional<unsigned int> Policy_Key::Read(const Setting& setting, Lib_String& strFault) const
{
    unsigned long ulType = 0;
    Lib_Buffer Data;
    long lError = 0;
    if (!Lib_Reg_Read(m_hKey, nullptr, setting.m_pName, ulType, Data, &lError))
    {
        if (lError != ERROR_FILE_NOT_FOUND)
            strFault = describe_Error(setting.m_pName, lError);
        return std::nullopt;
    }
    const std::optional<unsigned int> Number = to_Number(setting, ulType, Data);
    if (!Number)
        strFault = describe_Damage(setting);
    return Number;
}

bool Policy_Key::Describe(unsigned long ulPlace, Lib_String& strText, long& lError) const
{
    Lib_String strName;
    unsigned long ulType = 0;
    Lib_Buffer Data;
    if (!Lib_Reg_Read(m_hKey, nullptr, ulPlace, strName, ulType, Data, &lError))
    {
        strText = L"a value with a name that is too long";
        return lError == ERROR_MORE_DATA;
    }
    const Setting* pSetting = find_Setting(strName);
    const std::optional<unsigned int> Number =
        pSetting != nullptr ? to_Number(*pSetting, ulType, Data) : std::nullopt;
    if (pSetting == nullptr)
        strText = L"\"" + strName + L"\" is no setting of the desk";
    else
        strText = Number ? describe(*pSetting, *Number) : describe_Damage(*pSetting);
    return true;
}

int tell_Failure(const wchar_t* pWhat, long lError)
{
    Print_Line(describe_Error(pWhat, lError) + L".");
    return EXIT_NO_POLICY;
}

} // namespace

Policy::Policy()
{
    const Policy_Key Key;
    if (Key.Has_Failed())
        m_strFault = describe_Error(L"it cannot be read", Key.Get_Error());
    if (!Key.Is_There())
        return;
    m_Expire = Key.Read(SETTING_EXPIRE, m_strFault);
    m_Tries = Key.Read(SETTING_TRIES, m_strFault);
}

bool Is_Setting(const Lib_String& strText) { return read_Assignment(strText).has_value(); }

int Set_Policy(const Lib_String& strText)
{
    const Assignment assignment = read_Assignment(strText).value();
    long lError = 0;
    if (!Lib_Reg_Write_DWord(HKEY_CURRENT_USER, KEY, assignment.m_pSetting->m_pName, assignment.m_nNumber,
                             &lError))
        return tell_Failure(L"The policy cannot be written", lError);
    Print_Line(describe(*assignment.m_pSetting, assignment.m_nNumber));
    return EXIT_POLICY_DONE;
}

int Print_Policy()
{
    const Policy_Key Key;
    if (Key.Has_Failed())
        return tell_Failure(L"The policy cannot be read", Key.Get_Error());
    unsigned long ulCount = 0;
    long lError = ERROR_NO_MORE_ITEMS;
    for (Lib_String strText; Key.Is_There() && Key.Describe(ulCount, strText, lError); ++ulCount)
        Print_Line(strText);
    if (lError != ERROR_NO_MORE_ITEMS)
        return tell_Failure(L"The policy cannot be read", lError);
    if (ulCount == 0)
        Print_Line(L"Nothing is set.");
    return EXIT_POLICY_DONE;
}
