#ifndef PIN_DESK_OPTIONS_H
#define PIN_DESK_OPTIONS_H

#include "desk.h"
#include "policy.h"
#include "report.h"

#include <array>
#include <lib_foundation.h>
#include <lib_parser.h>
#include <lib_strings.h>
#include <list>
#include <tuple>
#include <vector>

/// A parameter that looks at what was typed for it, since the parser takes any text for a value.
class Option : public Lib_Parser_Param
{
public:
    /// Whether a text is a value of the option; it may be changed into one that the parser reads.
    using Check = bool (*)(Lib_String& strText);

    /// The demand tells what the check wants; without a check any text is right.
    Option(const wchar_t* pName, PARAM_TYPE Type, const wchar_t* pDefault, const wchar_t* pValue_Name,
           const wchar_t* pDescription, bool bOptional, const wchar_t* pDemand = L"", Check check = nullptr);

    const Lib_String& Get_Name() const { return m_strName; }
    const Lib_String& Get_Demand() const { return m_strDemand; }
    bool Takes_Value() const { return m_bTakes_Value; }
    bool Is_Right() const { return m_bRight; }

protected:
    void Make_Value(const Lib_String& strText) override;

private:
    Lib_String m_strName;
    Lib_String m_strDemand;
    Check m_Check;
    bool m_bTakes_Value;
    bool m_bRight = true;
};

/// The command line of the desk.
class Options
{
public:
    Options();

    /// Reads the command line; false when it isn't one that the desk can work by, with what is wrong in
    /// strFault.
    bool Read(int nArguments, wchar_t** ppArguments, Lib_String& strFault);
    void Print_Help();

    bool Wants_Help() const { return m_Help.Is_Set(); }
    bool Wants_Version() const { return m_Version.Is_Set(); }
    /// The policy counts for what the command line leaves open.
    Desk_Rules Get_Rules(const Policy& policy) const;
    /// Of a report that is read while it is written, or afterwards.
    Report::Style Get_Style(bool bLive) const;
    const Lib_String& Get_File() const { return get_Text(m_File); }
    /// How many requests to serve; 0 means all.
    unsigned int Get_Limit() const { return get_Number(m_Limit); }

    /// The paths of the socket to serve and to ask at, and how many seconds a client has for a line.
    const Lib_String& Get_Served() const { return get_Text(m_Serve); }
    const Lib_String& Get_Asked() const { return get_Text(m_Ask); }
    unsigned int Get_Patience() const { return get_Number(m_Idle); }

    /// The setting to write, `name=number`.
    const Lib_String& Get_Setting() const { return get_Text(m_Set); }
    bool Wants_Policy() const { return m_Policy.Is_Set(); }

    /// The names of the event to watch, to signal and to guard. The text that is not empty, of these, the
    /// paths and the setting, is the task. When all are and no policy is wanted, it is the file.
    const Lib_String& Get_Watched() const { return get_Text(m_Watch); }
    const Lib_String& Get_Signalled() const { return get_Text(m_Signal); }
    Lib_String Get_Guarded() const;
    /// The seconds to watch, where 0 means without end, or to guard.
    unsigned int Get_Seconds() const;

private:
    static unsigned int get_Number(const Lib_Parser_Param& Param);
    static const Lib_String& get_Text(const Lib_Parser_Param& Param)
    {
        return *static_cast<Lib_String*>(Param.Get_Param());
    }

    /// All options, in the order of the help.
    std::array<Option*, 20> all();
    const Option* find(const Lib_String& strName);
    Lib_String find_Fault(int nArguments, wchar_t** ppArguments);
    Lib_String find_Fault_Of_Task() const;
    std::vector<wchar_t*> prepare(int nArguments, wchar_t** ppArguments);

    /// Calls `callee` with the number of the parameters and with all of them, as the parser wants its list.
    template <class Callee>
    auto with_Params(Callee callee)
    {
        return std::apply(
            [&](auto*... pOptions)
            {
                constexpr int nOptions = sizeof...(pOptions);
                return callee(nOptions, static_cast<Lib_Parser_Param*>(pOptions)...);
            },
            all());
    }

    Option m_File;
    Option m_Key;
    Option m_Tries;
    Option m_Limit;
    Option m_Locale;
    Option m_Local;
    Option m_Quiet;
    Option m_Expire;
    Option m_Journal;
    Option m_Set;
    Option m_Policy;
    Option m_Serve;
    Option m_Ask;
    Option m_Idle;
    Option m_Watch;
    Option m_Wait;
    Option m_Signal;
    Option m_Guard;
    Option m_Help;
    Option m_Version;
    std::list<Lib_String> m_Guard_Values; ///< the two values of each -guard as one text
};

#endif
