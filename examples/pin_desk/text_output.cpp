#include "text_output.h"

#include <cstdio>
#include <new>

Lib_Buffer To_Utf8(const Lib_String& strLine)
{
    Lib_Buffer Line;
    Lib_WString_To_UTF8_Buffer(strLine, static_cast<unsigned long>(strLine.Get_Length()), Line);
    if (Line.Get_Size() == 0 && !strLine.Is_Empty())
        throw std::bad_alloc();
    return Line;
}

void Print_Line(const Lib_String& strLine)
{
    Lib_Buffer Line = To_Utf8(strLine);
    Line.Append("\n", 1);
    std::fwrite(Line.Get_Ptr(), 1, static_cast<std::size_t>(Line.Get_Size()), stdout);
}

Lib_String Get_Error_Text(unsigned int nCode)
{
    constexpr unsigned int nPlatform = 1;
    Lib_String strText = Lib_Result(nCode, nPlatform).Get_Result_Text(0);
    strText.Trim_Right(L". \r\n");
    return strText;
}
