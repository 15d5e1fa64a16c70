#ifndef QNLIB_PARSER_PARSER_PARAM_H
#define QNLIB_PARSER_PARSER_PARAM_H

#include "lib_api.h"
#include "strings/lib_string.h"

#include <memory>

/// What a parameter takes, and what its value slot holds:
///
///   type         text of a value                            slot
///   DWORD        decimal, or hexadecimal behind "0x"        the number itself, 32 bits
///   STRING       anything, taken literally                  pointer to a Lib_String
///   HEX_BYTES    two hexadecimal digits a byte              pointer to a Lib_Buffer
///   FLAG         none: the name alone is the argument       0 or 1
enum PARAM_TYPE : unsigned int
{
    PARAM_TYPE_DWORD = 0,
    PARAM_TYPE_STRING = 1,
    PARAM_TYPE_HEX_BYTES = 2,
    PARAM_TYPE_FLAG = 3
};

/// One parameter that a program declares for its command line: name, kind of value, default, texts for the
/// help, and, once Lib_Parser has read a command line, its value. One thread at a time uses an object. An
/// allocation that fails throws std::bad_alloc.
///
/// The string or buffer in the value slot belongs to the parameter and lives as long as it does. A copy of a
/// parameter refers to the same value object, so a value that is parsed into one of them shows in both; the
/// object goes with the last parameter that refers to it, and an assignment lets go of the old one.
class LIB_API Lib_Parser_Param
{
public:
    /// The name is the argument as the user types it, with its dash or slash, in any case. The value name is
    /// what the help shows between angle brackets, if it isn't empty; the description lacks its full stop.
    /// The value is 0 or empty at first: the default comes in with Reset.
    Lib_Parser_Param(const Lib_String& strName, PARAM_TYPE Type, const Lib_String& strDefault_Value,
                     const Lib_String& strValue_Name, const Lib_String& strDescription, bool bOptional);
    Lib_Parser_Param(const Lib_Parser_Param& Source);
    virtual ~Lib_Parser_Param();
    Lib_Parser_Param& operator=(const Lib_Parser_Param& Source);

    /// The value slot, as PARAM_TYPE tells.
    void* Get_Param() const { return m_pValue; }

    /// Whether the parameter may be left out.
    bool Is_Optional() const { return m_bOptional; }

    /// Whether the last command line gave the parameter a value.
    bool Is_Set() const { return m_bSet; }

    /// Loads the default value and marks the parameter as not set. A flag keeps the value that it has, and so
    /// do hexadecimal bytes with an empty default.
    void Reset();

protected:
    /// Loads the value from its text and marks the parameter as set. Nothing is refused: a character that is
    /// no digit counts as 0, numbers are reduced to 32 bits, the letters of a number keep their hexadecimal
    /// values also in base 10, and an empty text leaves hexadecimal bytes as they are. An override may work
    /// on the text before it hands it on.
    virtual void Make_Value(const Lib_String& strText);

private:
    friend class Lib_Parser;

    void Set_Default_Value();
    void Make_Dword_From_String(const Lib_String& strText);
    void Make_Dword_From_String(const Lib_String& strText, unsigned char nBase);
    void Make_PByte_From_Hex_String(const Lib_String& strText);
    unsigned char Make_Byte_From_TChar(wchar_t ch);

    void* m_pValue = nullptr;
    PARAM_TYPE m_Type;
    Lib_String m_strName;
    Lib_String m_strDefault_Value;
    Lib_String m_strValue_Name;
    Lib_String m_strDescription;
    bool m_bOptional;
    bool m_bSet = false;
    std::shared_ptr<void> m_pOwner; ///< keeps the value object, if there is one, for all copies
};

#endif
