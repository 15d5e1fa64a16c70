#ifndef PIN_DESK_OPTIONS_H
#define PIN_DESK_OPTIONS_H

#include <lib_foundation.h>
#include <lib_parser.h>
#include <lib_strings.h>

/// The command line of the desk.
class Options
{
public:
    Options();

    /// Reads the command line; false when it isn't one that the desk can work by.
    bool Read(int nArguments, wchar_t** ppArguments);
    void Print_Help();

    bool Wants_Help() const { return m_Help.Is_Set(); }
    bool Wants_Version() const { return m_Version.Is_Set(); }
    bool Is_Quiet() const { return m_Quiet.Is_Set(); }
    const Lib_String& Get_File() const { return *static_cast<Lib_String*>(m_File.Get_Param()); }
    const Lib_Buffer& Get_Key() const { return *static_cast<Lib_Buffer*>(m_Key.Get_Param()); }
    unsigned int Get_Tries() const { return get_Number(m_Tries); }
    /// How many requests to serve; 0 means all.
    unsigned int Get_Limit() const { return get_Number(m_Limit); }

private:
    static unsigned int get_Number(const Lib_Parser_Param& Param);

    /// Calls `callee` with the number of the parameters and with all of them, as the parser wants its list.
    template <class Callee>
    auto with_Params(Callee callee)
    {
        return callee(7, &m_File, &m_Key, &m_Tries, &m_Limit, &m_Quiet, &m_Help, &m_Version);
    }

    Lib_Parser_Param m_File;
    Lib_Parser_Param m_Key;
    Lib_Parser_Param m_Tries;
    Lib_Parser_Param m_Limit;
    Lib_Parser_Param m_Quiet;
    Lib_Parser_Param m_Help;
    Lib_Parser_Param m_Version;
};

#endif
