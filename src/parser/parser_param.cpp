#include "parser/parser_param.h"

#include "foundation/buffer.h"
#include "strings/text_utilities.h"

#include <cstdint>

Lib_Parser_Param::Lib_Parser_Param(const Lib_String& strName, PARAM_TYPE Type,
                                   const Lib_String& strDefault_Value, const Lib_String& strValue_Name,
                                   const Lib_String& strDescription, bool bOptional)
    : m_Type(Type), m_strName(strName), m_strDefault_Value(strDefault_Value), m_strValue_Name(strValue_Name),
      m_strDescription(strDescription), m_bOptional(bOptional)
{
    if (Type == PARAM_TYPE_STRING)
    {
        m_pOwner = std::make_shared<Lib_String>();
    }
    else if (Type == PARAM_TYPE_HEX_BYTES)
    {
        m_pOwner = std::make_shared<Lib_Buffer>();
    }
    m_pValue = m_pOwner.get();
}

Lib_Parser_Param::Lib_Parser_Param(const Lib_Parser_Param& Source) = default;

Lib_Parser_Param::~Lib_Parser_Param() = default;

Lib_Parser_Param& Lib_Parser_Param::operator=(const Lib_Parser_Param& Source)
{
    // Strings may throw where they are copied, not where such a copy is taken over: all changes or nothing.
    const Lib_String strName(Source.m_strName);
    const Lib_String strDefault_Value(Source.m_strDefault_Value);
    const Lib_String strValue_Name(Source.m_strValue_Name);
    const Lib_String strDescription(Source.m_strDescription);
    m_strName = strName;
    m_strDefault_Value = strDefault_Value;
    m_strValue_Name = strValue_Name;
    m_strDescription = strDescription;
    m_bOptional = Source.m_bOptional;
    m_bSet = Source.m_bSet;
    m_Type = Source.m_Type;
    m_pValue = Source.m_pValue;
    m_pOwner = Source.m_pOwner;
    return *this;
}

void Lib_Parser_Param::Reset()
{
    Set_Default_Value();
    m_bSet = false;
}

void Lib_Parser_Param::Make_Value(const Lib_String& strText)
{
    switch (m_Type)
    {
    case PARAM_TYPE_DWORD:
        Make_Dword_From_String(strText);
        break;
    case PARAM_TYPE_STRING:
        *static_cast<Lib_String*>(m_pValue) = strText;
        break;
    case PARAM_TYPE_HEX_BYTES:
        Make_PByte_From_Hex_String(strText);
        break;
    default:
        break;
    }
    m_bSet = true;
}

void Lib_Parser_Param::Set_Default_Value() { Make_Value(m_strDefault_Value); }

void Lib_Parser_Param::Make_Dword_From_String(const Lib_String& strText)
{
    const bool bHex = strText.Get_Length() >= 2 && strText.Get_At(0) == L'0' && strText.Get_At(1) == L'x';
    if (bHex)
    {
        Make_Dword_From_String(strText.Mid(2), 16);
    }
    else
    {
        Make_Dword_From_String(strText, 10);
    }
}

void Lib_Parser_Param::Make_Dword_From_String(const Lib_String& strText, unsigned char nBase)
{
    unsigned int nValue = 0;
    for (unsigned long long i = 0; i < strText.Get_Length(); ++i)
    {
        nValue = nValue * nBase + Make_Byte_From_TChar(strText.Get_At(i));
    }
    m_pValue = reinterpret_cast<void*>(static_cast<std::uintptr_t>(nValue));
}

void Lib_Parser_Param::Make_PByte_From_Hex_String(const Lib_String& strText)
{
    Lib_Read_Buffer(strText, *static_cast<Lib_Buffer*>(m_pValue), 0);
}

unsigned char Lib_Parser_Param::Make_Byte_From_TChar(wchar_t ch)
{
    if (ch >= L'1' && ch <= L'9')
    {
        return static_cast<unsigned char>(ch - L'0');
    }
    if (ch >= L'A' && ch <= L'F')
    {
        return static_cast<unsigned char>(ch - L'A' + 10);
    }
    if (ch >= L'a' && ch <= L'f')
    {
        return static_cast<unsigned char>(ch - L'a' + 10);
    }
    return 0;
}
