#ifndef QNLIB_SRC_PLATFORM_PROVIDERS_OLEAUT32_LOCALE_CACHE_H
#define QNLIB_SRC_PLATFORM_PROVIDERS_OLEAUT32_LOCALE_CACHE_H

#include "platform/providers/oleaut32/locale_record.h"

// The records of the locales that were asked for so far. Any thread may ask; finding one again takes no lock.
// All throw std::bad_alloc.

namespace qn_oleaut32
{

/// By the platform's identifier; null for an unknown one.
const Locale_Record* Find_Locale(LCID locale);

/// By the platform's name, "German_Germany.1252".
const Locale_Record* Find_Locale_By_Platform_Name(const wchar_t* name);

/// By a name of the host's kind, "de_DE.UTF-8".
const Locale_Record* Find_Locale_By_Host_Name(const char* name);

} // namespace qn_oleaut32

#endif
