#ifndef PIN_DESK_TEXT_OUTPUT_H
#define PIN_DESK_TEXT_OUTPUT_H

#include <lib_foundation.h>
#include <lib_strings.h>

Lib_Buffer To_Utf8(const Lib_String& strLine);

/// Prints a line in UTF-8.
void Print_Line(const Lib_String& strLine);

/// The platform's text for one of its codes, ready to stand in a line: without line end and full stop.
Lib_String Get_Error_Text(unsigned int nCode);

#endif
