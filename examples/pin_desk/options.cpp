#include "options.h"

#include <cstdint>
#include <utility>

namespace
{

bool consists_Of(const Lib_String& strText, const wchar_t* pSet)
{
    return strText.Span_Including(pSet).Get_Length() == strText.Get_Length();
}

bool is_Not_Empty(Lib_String& strText) { return !strText.Is_Empty(); }

/// Decimal digits only, few enough for an int.
bool is_Number(const Lib_String& strText)
{
    return !strText.Is_Empty() && strText.Get_Length() <= 9 && consists_Of(strText, L"0123456789");
}

bool check_Tries(Lib_String& strText)
{
    const int nTries = Lib_String_To_Int(strText);
    return is_Number(strText) && SETTING_TRIES.Allows(static_cast<unsigned int>(nTries));
}

bool check_Limit(Lib_String& strText) { return is_Number(strText); }

/// A number that the platform knows for a locale: one for which it can write a date.
bool check_Locale(Lib_String& strText)
{
    const bool bHex = strText.Get_Length() > 2 && strText.Get_Length() <= 10 && strText.Mid(0, 2) == L"0x";
    if (bHex ? !consists_Of(strText.Mid(2), L"0123456789ABCDEFabcdef") : !is_Number(strText))
        return false;
    const int nLocale = bHex ? Lib_String_To_Int(strText.Mid(2), 16) : Lib_String_To_Int(strText);
    return !Lib_DateTime(1.0, false).Format(0, static_cast<unsigned long>(nLocale), false).Is_Empty();
}

/// Few enough digits for the milliseconds of a wait.
bool check_Seconds(Lib_String& strText) { return is_Number(strText) && strText.Get_Length() <= 6; }

bool check_Patience(Lib_String& strText) { return check_Seconds(strText) && Lib_String_To_Int(strText) >= 1; }

bool check_Setting(Lib_String& strText) { return Is_Setting(strText); }

/// The name may have blanks in it; the number of seconds comes last.
Lib_String name_Of_Guard(const Lib_String& strText)
{
    const int nBlank = strText.Reverse_Find(L' ');
    return nBlank > 0 ? strText.Left(static_cast<unsigned long long>(nBlank)) : Lib_String();
}

Lib_String seconds_Of_Guard(const Lib_String& strText)
{
    return strText.Mid(static_cast<unsigned long long>(strText.Reverse_Find(L' ') + 1));
}

bool check_Guard(Lib_String& strText)
{
    Lib_String strSeconds = seconds_Of_Guard(strText);
    return !name_Of_Guard(strText).Is_Empty() && check_Seconds(strSeconds);
}

/// Takes the colons between the pairs out.
bool check_Key(Lib_String& strText)
{
    Lib_String strPairs;
    for (unsigned long long i = 0; i < strText.Get_Length(); i += 2)
    {
        if (i != 0 && strText.Get_At(i) == L':')
            ++i;
        const Lib_String strPair = strText.Mid(i, 2);
        if (strPair.Get_Length() != 2 || !consists_Of(strPair, L"0123456789ABCDEFabcdef"))
            return false;
        strPairs += strPair;
    }
    strText = strPairs;
    return !strText.Is_Empty();
}

} // namespace

Option::Option(const wchar_t* pName, PARAM_TYPE Type, const wchar_t* pDefault, const wchar_t* pValue_Name,
               const wchar_t* pDescription, bool bOptional, const wchar_t* pDemand, Check check)
    : Lib_Parser_Param(pName, Type, pDefault, pValue_Name, pDescription, bOptional), m_strName(pName),
      m_strDemand(pDemand), m_Check(check), m_bTakes_Value(Type != PARAM_TYPE_FLAG)
{
}

/// Also called with the default, which may be empty: only what was typed can be wrong.
void Option::Make_Value(const Lib_String& strText)
{
    Lib_String strValue(strText);
    m_bRight = m_Check == nullptr || m_Check(strValue);
    Lib_Parser_Param::Make_Value(strValue);
}

Options::Options()
    : m_File(L"-in", PARAM_TYPE_STRING, L"", L"file", L"File of requests in UTF-8, one on a line", true,
             L"the path of a file", is_Not_Empty),
      m_Key(L"-key", PARAM_TYPE_HEX_BYTES, L"", L"hex",
            L"Key of the desk, mixed into the numbers of receipts", true,
            L"pairs of hexadecimal digits such as 0a1b or 0a:1b", check_Key),
      m_Tries(L"-tries", PARAM_TYPE_DWORD, L"3", L"number", L"Wrong PINs in a row that block a card", true,
              L"a number from 1 to 99", check_Tries),
      m_Limit(L"-limit", PARAM_TYPE_DWORD, L"0", L"number", L"Number of requests to serve, 0 for all", true,
              L"a number of up to 9 digits", check_Limit),
      m_Locale(L"-locale", PARAM_TYPE_DWORD, L"", L"identifier",
               L"Locale of dates, by which lines are stamped, too; without it dates are in the user's", true,
               L"the identifier of a locale, such as 0x419 for Russian", check_Locale),
      m_Local(L"-local", PARAM_TYPE_FLAG, L"", L"", L"Dates and stamps are local time, otherwise UTC", true),
      m_Quiet(L"-quiet", PARAM_TYPE_FLAG, L"", L"", L"Prints only what was refused or malformed", true),
      m_Expire(L"-expire", PARAM_TYPE_DWORD, L"0", L"seconds", L"Time for which a PIN is good, 0 for ever",
               true, L"a number of up to 6 digits", check_Seconds),
      m_Journal(
          L"-journal", PARAM_TYPE_FLAG, L"", L"",
          L"Appends what is answered and what expires to the journal in the user's directory of PIN data; "
          L"without this there is no journal",
          true),
      m_Set(L"-set", PARAM_TYPE_STRING, L"", L"name=number",
            L"Sets expire or tries for all desks of the user, where their command lines don't", true,
            L"expire=0 to expire=999999, or tries=1 to tries=99", check_Setting),
      m_Policy(L"-policy", PARAM_TYPE_FLAG, L"", L"", L"Prints what -set has set", true),
      m_Serve(L"-serve", PARAM_TYPE_STRING, L"", L"socket",
              L"Serves clients on a local socket until SIGINT or SIGTERM", true, L"the path of a socket",
              is_Not_Empty),
      m_Ask(L"-ask", PARAM_TYPE_STRING, L"", L"socket",
            L"Sends requests from standard input to a desk that serves there, and prints its answers", true,
            L"the path of a socket", is_Not_Empty),
      m_Idle(L"-idle", PARAM_TYPE_DWORD, L"300", L"seconds",
             L"Time that a client of -serve has for each line", true, L"a number from 1 to 999999",
             check_Patience),
      m_Watch(L"-watch", PARAM_TYPE_STRING, L"", L"name",
              L"Waits for the named event, or until its guard is lost", true, L"a name", is_Not_Empty),
      m_Wait(L"-wait", PARAM_TYPE_DWORD, L"0", L"seconds", L"Time after which -watch gives up, 0 for never",
             true, L"a number of up to 6 digits", check_Seconds),
      m_Signal(L"-signal", PARAM_TYPE_STRING, L"", L"name", L"Signals the named event to all who watch it",
               true, L"a name", is_Not_Empty),
      m_Guard(L"-guard", PARAM_TYPE_STRING, L"", L"name> <seconds",
              L"Stands guard over the named event for some seconds", true,
              L"a name and a number of up to 6 digits", check_Guard),
      m_Help(L"-help", PARAM_TYPE_FLAG, L"", L"", L"Prints this text", true),
      m_Version(L"--version", PARAM_TYPE_FLAG, L"", L"", L"Prints the version of the library", true)
{
}

bool Options::Read(int nArguments, wchar_t** ppArguments, Lib_String& strFault)
{
    std::vector<wchar_t*> Arguments = prepare(nArguments, ppArguments);
    const int nJoined = static_cast<int>(Arguments.size());
    const bool bRead =
        with_Params([&](int nParams, auto*... pParams)
                    { return Lib_Parser::Parse_Params(nJoined, Arguments.data(), nParams, pParams...); });
    strFault = find_Fault(nJoined, Arguments.data());
    return bRead && strFault.Is_Empty();
}

/// A parameter takes one value, and -guard has two: they become one text. The help has two names.
std::vector<wchar_t*> Options::prepare(int nArguments, wchar_t** ppArguments)
{
    std::vector<wchar_t*> Arguments(ppArguments, ppArguments + nArguments);
    for (std::size_t i = 1; i < Arguments.size(); ++i)
    {
        if (Lib_String(Arguments[i]).CompareNoCase(L"--help") == 0)
            ++Arguments[i];
        const Option* pOption = find(Arguments[i]);
        if (pOption == &m_Guard && i + 2 < Arguments.size())
        {
            m_Guard_Values.push_back(Lib_String(Arguments[i + 1]) + L" " + Arguments[i + 2]);
            Arguments[i + 1] = m_Guard_Values.back().Get_Buffer(0);
            Arguments.erase(Arguments.begin() + static_cast<std::ptrdiff_t>(i) + 2);
        }
        i += pOption != nullptr && pOption->Takes_Value() ? 1 : 0;
    }
    return Arguments;
}

Desk_Rules Options::Get_Rules(const Policy& policy) const
{
    const auto choose = [](const Option& option, const std::optional<unsigned int>& Set)
    { return option.Is_Set() ? get_Number(option) : Set.value_or(get_Number(option)); };
    return {choose(m_Tries, policy.Get_Tries()), std::chrono::seconds(choose(m_Expire, policy.Get_Expire())),
            Clock(get_Number(m_Locale), m_Local.Is_Set())};
}

Report::Style Options::Get_Style(bool bLive) const
{
    return {*static_cast<Lib_Buffer*>(m_Key.Get_Param()), m_Quiet.Is_Set(), m_Locale.Is_Set(), bLive,
            m_Journal.Is_Set()};
}

Lib_String Options::Get_Guarded() const { return name_Of_Guard(get_Text(m_Guard)); }

unsigned int Options::Get_Seconds() const
{
    return m_Guard.Is_Set()
               ? static_cast<unsigned int>(Lib_String_To_Int(seconds_Of_Guard(get_Text(m_Guard))))
               : get_Number(m_Wait);
}

void Options::Print_Help()
{
    with_Params([](int nParams, auto*... pParams) { Lib_Parser::Print_Help(nParams, pParams...); });
}

unsigned int Options::get_Number(const Lib_Parser_Param& Param)
{
    return static_cast<unsigned int>(reinterpret_cast<std::uintptr_t>(Param.Get_Param()));
}

std::array<Option*, 20> Options::all()
{
    return {&m_File,   &m_Key,     &m_Tries,  &m_Limit,  &m_Locale, &m_Local,  &m_Quiet,
            &m_Expire, &m_Journal, &m_Set,    &m_Policy, &m_Serve,  &m_Ask,    &m_Idle,
            &m_Watch,  &m_Wait,    &m_Signal, &m_Guard,  &m_Help,   &m_Version};
}

const Option* Options::find(const Lib_String& strName)
{
    for (const Option* pOption : all())
    {
        if (strName.CompareNoCase(pOption->Get_Name()) == 0)
            return pOption;
    }
    return nullptr;
}

/// The parser only says that a command line is no good. This goes through it once more and tells what the
/// first fault is, empty when there is none.
Lib_String Options::find_Fault(int nArguments, wchar_t** ppArguments)
{
    bool bSets = false;
    for (int i = 1; i < nArguments; ++i)
    {
        const Option* pOption = find(ppArguments[i]);
        if (pOption == nullptr)
            return Lib_String(L"I don't know ") + ppArguments[i];
        if (pOption == &m_Set && std::exchange(bSets, true))
            return L"-set is there twice, and sets one value a call";
        if (pOption->Takes_Value() && ++i == nArguments)
            return pOption->Get_Name() + L" needs a value";
    }
    for (const Option* pOption : all())
    {
        if (pOption->Is_Set() && !pOption->Is_Right())
            return pOption->Get_Name() + L" takes " + pOption->Get_Demand();
    }
    return find_Fault_Of_Task();
}

/// There is one task.
Lib_String Options::find_Fault_Of_Task() const
{
    const Option* pTask = nullptr;
    for (const Option* pOption :
         {&m_File, &m_Serve, &m_Ask, &m_Set, &m_Policy, &m_Watch, &m_Signal, &m_Guard})
    {
        if (pOption->Is_Set() && pTask != nullptr)
            return pTask->Get_Name() + L" and " + pOption->Get_Name() + L" are two tasks";
        if (pOption->Is_Set())
            pTask = pOption;
    }
    return pTask != nullptr ? Lib_String() : L"-in is missing, or another task";
}
