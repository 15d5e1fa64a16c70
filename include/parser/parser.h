#ifndef QNLIB_PARSER_PARSER_H
#define QNLIB_PARSER_PARSER_H

#include "lib_api.h"
#include "parser/parser_param.h"

#include <vector>

/// Reads a command line against a list of declared parameters, and prints the help text for the same list.
/// The list is passed as a count and that many pointers to Lib_Parser_Param, which stay the caller's. A
/// pointer to a derived class is converted by the caller, since nothing converts it on the way. A null
/// pointer in the list is passed over, and a count below 0 is an empty list.
///
/// The command line is a sequence of flags' names and of pairs of another parameter's name and its value, in
/// any order. Names match as a whole and without regard to case, by the runtime's locale; values are taken
/// as typed, whatever they look like. Names in a list differ in more than case; where they don't, nothing
/// hangs or overruns, but what such parameters receive is open.
///
/// There is no state: any thread may call, as long as nobody else uses the parameters meanwhile. The only
/// failures beyond the results below are those of the strings, std::bad_alloc.
class LIB_API Lib_Parser
{
public:
    Lib_Parser() {}
    Lib_Parser(const Lib_Parser&) {}
    Lib_Parser& operator=(const Lib_Parser&) { return *this; }
    Lib_Parser& operator=(Lib_Parser&&) noexcept { return *this; }

    /// Resets all parameters and then loads the values that are given; of several for one name the last
    /// counts. The first argument, the program's name, is not looked at.
    ///
    /// False for an argument that is no parameter's name, which ends the reading, and when a parameter that
    /// isn't optional has no value at the end; what has been loaded stays loaded. A name without its value at
    /// the end of the command line gives the parameter none, and is no failure by itself.
    ///
    /// A null argument counts as an empty text, a null vector as one without arguments.
    static bool Parse_Params(int nArguments, wchar_t** const ppArguments, int nParams, ...);

    /// Writes to standard output how the program is called, and a line for each parameter: UTF-8 on Linux,
    /// what the runtime's locale can express on Windows.
    static void Print_Help(int nParams, ...);

private:
    using Params = std::vector<Lib_Parser_Param*>;

    static bool read_Arguments(int nArguments, wchar_t** ppArguments, const Params& Params_List);
    static bool read_Argument(int nArguments, wchar_t** ppArguments, const Params& Params_List, int& nIndex);
    static Lib_String make_Usage(const Params& Params_List);
    static void get_Dll_Name_From_Path(const Lib_String& strPath, Lib_String& strName);
    static void print_Help_For_Param(Lib_Parser_Param* pParam);
};

#endif
