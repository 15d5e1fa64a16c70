#ifndef PIN_DESK_POLICY_H
#define PIN_DESK_POLICY_H

#include <lib_strings.h>

#include <optional>

// The user's policy: numbers by which all his desks work where the command line says nothing else. They are
// DWORDs in the registry, below HKEY_CURRENT_USER in the key Software\Vorel Co\Quillon\pin_desk.

struct Setting
{
    const wchar_t* m_pName;
    unsigned int m_nLeast;
    unsigned int m_nMost;

    constexpr bool Allows(unsigned int nNumber) const { return nNumber >= m_nLeast && nNumber <= m_nMost; }
};

inline constexpr Setting SETTING_EXPIRE{L"expire", 0, 999'999}; ///< seconds; the milliseconds fit a wait
inline constexpr Setting SETTING_TRIES{L"tries", 1, 99};

/// What the policy says now.
class Policy
{
public:
    /// Reads it. Where nothing is set, nothing is there.
    Policy();

    /// What is damaged in it, or why it cannot be read: nobody knows then what was set, so no desk begins by
    /// numbers that may be more lenient. Empty otherwise.
    const Lib_String& Get_Fault() const { return m_strFault; }

    const std::optional<unsigned int>& Get_Expire() const { return m_Expire; }
    const std::optional<unsigned int>& Get_Tries() const { return m_Tries; }

private:
    Lib_String m_strFault;
    std::optional<unsigned int> m_Expire;
    std::optional<unsigned int> m_Tries;
};

// Exit codes of the tasks below.
constexpr int EXIT_POLICY_DONE = 0;
constexpr int EXIT_NO_POLICY = 5; ///< the registry could not be read or written, as was printed

/// Exit code of a desk that did not begin because of its policy's fault.
constexpr int EXIT_BAD_POLICY = 6;

/// Whether a text is `name=number` of a setting, in its range. Names match without regard to case.
bool Is_Setting(const Lib_String& strText);

/// Writes one that is.
int Set_Policy(const Lib_String& strText);

/// Prints all that is in the key, also what the desk doesn't know.
int Print_Policy();

#endif
