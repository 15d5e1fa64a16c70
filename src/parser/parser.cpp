#include "parser/parser.h"

#include "lib_platform.h"
#include "platform/runtime_text.h"

#include <algorithm>
#include <cstdarg>

namespace
{

/// The parameters of a variable argument list, for walking them more than once.
std::vector<Lib_Parser_Param*> collect_Params(int nParams, std::va_list Arguments)
{
    std::vector<Lib_Parser_Param*> Params;
    for (int i = 0; i < nParams; ++i)
    {
        if (Lib_Parser_Param* pParam = va_arg(Arguments, Lib_Parser_Param*))
        {
            Params.push_back(pParam);
        }
    }
    return Params;
}

Lib_String lower_Case(Lib_String strText)
{
    strText.Make_Lower();
    return strText;
}

/// The path of the process's executable. One that fills the buffer may have been cut, so that its last part
/// isn't the program's name: it is asked for again with more room.
Lib_String executable_Path()
{
    constexpr DWORD nLongest = 0x8000;
    Lib_String strPath;
    for (DWORD nSize = 260;; nSize = std::min(2 * nSize, nLongest))
    {
        wchar_t* pPath = strPath.Get_Buffer(nSize - 1);
        const DWORD nLength = GetModuleFileNameW(GetModuleHandleW(nullptr), pPath, nSize);
        strPath.Release_Buffer(std::min(nLength, nSize - 1));
        if (nLength < nSize || nSize == nLongest)
        {
            return strPath;
        }
    }
}

void write(const Lib_String& strText)
{
    qn_runtime::Write_Standard_Output(strText.GetW(), static_cast<std::size_t>(strText.Get_Length()));
}

} // namespace

bool Lib_Parser::Parse_Params(int nArguments, wchar_t** const ppArguments, int nParams, ...)
{
    std::va_list Arguments;
    va_start(Arguments, nParams);
    const Params Params_List = collect_Params(nParams, Arguments);
    va_end(Arguments);

    for (Lib_Parser_Param* pParam : Params_List)
    {
        pParam->Reset();
    }
    bool bResult = read_Arguments(ppArguments != nullptr ? nArguments : 0, ppArguments, Params_List);
    for (const Lib_Parser_Param* pParam : Params_List)
    {
        bResult = bResult && (pParam->m_bSet || pParam->m_bOptional);
    }
    return bResult;
}

bool Lib_Parser::read_Arguments(int nArguments, wchar_t** ppArguments, const Params& Params_List)
{
    int nIndex = 1;
    while (nIndex < nArguments)
    {
        if (!read_Argument(nArguments, ppArguments, Params_List, nIndex))
        {
            return false;
        }
        nIndex += 2;
    }
    return true;
}

/// Serves every parameter whose name stands at nIndex, and answers whether there is one. A flag has no value
/// behind it, so it steps the index back by one; once for the argument, however many flags have its name.
bool Lib_Parser::read_Argument(int nArguments, wchar_t** ppArguments, const Params& Params_List, int& nIndex)
{
    const Lib_String strArgument = lower_Case(ppArguments[nIndex]);
    bool bKnown = false;
    bool bStepped_Back = false;
    for (Lib_Parser_Param* pParam : Params_List)
    {
        if (!(lower_Case(pParam->m_strName) == strArgument))
        {
            continue;
        }
        bKnown = true;
        if (pParam->m_Type == PARAM_TYPE_FLAG)
        {
            pParam->m_pValue = reinterpret_cast<void*>(1);
            pParam->m_bSet = true;
            nIndex -= bStepped_Back ? 0 : 1;
            bStepped_Back = true;
        }
        else if (nIndex + 1 < nArguments)
        {
            pParam->Make_Value(ppArguments[nIndex + 1]);
        }
    }
    return bKnown;
}

void Lib_Parser::Print_Help(int nParams, ...)
{
    std::va_list Arguments;
    va_start(Arguments, nParams);
    const Params Params_List = collect_Params(nParams, Arguments);
    va_end(Arguments);

    write(make_Usage(Params_List));
    for (Lib_Parser_Param* pParam : Params_List)
    {
        print_Help_For_Param(pParam);
    }
}

/// The program's name and how its parameters are typed, three on a line.
Lib_String Lib_Parser::make_Usage(const Params& Params_List)
{
    Lib_String strProgram;
    get_Dll_Name_From_Path(executable_Path(), strProgram);

    Lib_String strUsage(L"Usage:\n");
    strUsage += strProgram;
    for (std::size_t i = 0; i < Params_List.size(); ++i)
    {
        const Lib_Parser_Param& Param = *Params_List[i];
        strUsage += Param.m_bOptional ? L" [" : L" ";
        strUsage += Param.m_strName;
        if (!Param.m_strValue_Name.Is_Empty())
        {
            strUsage += L" <" + Param.m_strValue_Name + L">";
        }
        strUsage += Param.m_bOptional ? L"]" : L"";
        strUsage += i % 3 == 2 && i + 1 < Params_List.size() ? L"\n\t" : L"";
    }
    strUsage += L"\n\n";
    return strUsage;
}

void Lib_Parser::get_Dll_Name_From_Path(const Lib_String& strPath, Lib_String& strName)
{
    const int nSeparator = strPath.Reverse_Find(L'\\');
    strName = strPath.Mid(static_cast<unsigned long long>(nSeparator + 1));
}

void Lib_Parser::print_Help_For_Param(Lib_Parser_Param* pParam)
{
    Lib_String strLine = pParam->m_strName + L"\t- " + pParam->m_strDescription + L".";
    if (!pParam->m_bOptional)
    {
        strLine += L" This parameter is not optional. No default value is available.";
    }
    else if (!pParam->m_strDefault_Value.Is_Empty())
    {
        strLine += L" Default value is \"" + pParam->m_strDefault_Value + L"\".";
    }
    strLine += L"\n";
    write(strLine);
}
