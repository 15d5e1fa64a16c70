#include "protected/protected_string.h"

#include <algorithm>

Lib_Protected_String::Lib_Protected_String(const Lib_String& strText) noexcept { *this = strText; }

Lib_Protected_String& Lib_Protected_String::operator=(const Lib_String& strText) noexcept
{
    Lib_Buffer Plain;
    if (strText.Get_Length() != 0)
        Plain.Attach_Copy(strText.GetW(), strText.Get_Length() * 2 + 2);
    m_Buffer = Plain;
    return *this;
}

Lib_String Lib_Protected_String::Get_String() const
{
    const Lib_Buffer Plain(m_Buffer);
    const auto* pText = static_cast<const wchar_t*>(Plain.Get_Ptr());
    const wchar_t* pEnd = pText + Plain.Get_Size() / sizeof(wchar_t);
    Lib_String strResult;
    if (std::find(pText, pEnd, L'\0') != pEnd)
        strResult = pText;
    return strResult;
}
