#ifndef QNLIB_SRC_PLATFORM_MODULES_MESSAGE_TABLES_H
#define QNLIB_SRC_PLATFORM_MODULES_MESSAGE_TABLES_H

#include "platform/types.h"

namespace qn_platform
{

/// A text, or null and why there is none.
struct Message_Text
{
    LPCWSTR m_pText;
    DWORD m_nError;
};

/// The message of a module's own table (null: the executable's); languages as FormatMessageW has them.
Message_Text Find_Module_Message(HMODULE module, DWORD code, DWORD language);

/// The message of the platform's table.
Message_Text Find_System_Message(DWORD code, DWORD language);

/// The platform's text of a code, in English; null if it has none.
LPCWSTR System_Text(DWORD code);

} // namespace qn_platform

#endif
