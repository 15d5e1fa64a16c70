#include "options.h"

#include <cstdint>

Options::Options()
    : m_File(L"-in", PARAM_TYPE_STRING, L"", L"file", L"File of requests in UTF-8, one on a line", false),
      m_Key(L"-key", PARAM_TYPE_HEX_BYTES, L"", L"hex",
            L"Key of the desk, mixed into the numbers of receipts", true),
      m_Tries(L"-tries", PARAM_TYPE_DWORD, L"3", L"number", L"Wrong PINs in a row that block a card", true),
      m_Limit(L"-limit", PARAM_TYPE_DWORD, L"0", L"number", L"Number of requests to serve, 0 for all", true),
      m_Quiet(L"-quiet", PARAM_TYPE_FLAG, L"", L"", L"Prints only what was refused or malformed", true),
      m_Help(L"-help", PARAM_TYPE_FLAG, L"", L"", L"Prints this text", true),
      m_Version(L"--version", PARAM_TYPE_FLAG, L"", L"", L"Prints the version of the library", true)
{
}

bool Options::Read(int nArguments, wchar_t** ppArguments)
{
    const bool bRead =
        with_Params([=](int nParams, auto*... pParams)
                    { return Lib_Parser::Parse_Params(nArguments, ppArguments, nParams, pParams...); });
    return bRead && Get_Tries() != 0;
}

void Options::Print_Help()
{
    with_Params([](int nParams, auto*... pParams) { Lib_Parser::Print_Help(nParams, pParams...); });
}

unsigned int Options::get_Number(const Lib_Parser_Param& Param)
{
    return static_cast<unsigned int>(reinterpret_cast<std::uintptr_t>(Param.Get_Param()));
}
