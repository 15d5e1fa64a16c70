#ifndef QNLIB_SRC_PLATFORM_PROVIDERS_OLEAUT32_ENTRY_POINTS_H
#define QNLIB_SRC_PLATFORM_PROVIDERS_OLEAUT32_ENTRY_POINTS_H

#include "platform/text/locale_texts.h"
#include "platform/time.h"

// What the provider exports: the platform's operations under their names, with the contracts that
// platform/time.h gives them, and the two by which the layer gets texts for the runtime's locale.

#pragma GCC visibility push(default)
extern "C"
{
    int GetLocaleInfoW(qn_platform::LCID locale, qn_platform::LCTYPE type, wchar_t* buffer, int size);
    qn_platform::HRESULT VarBstrFromDate(qn_platform::DATE value, qn_platform::LCID locale,
                                         qn_platform::ULONG flags, qn_platform::BSTR* text);
    qn_platform::HRESULT VarDateFromStr(const wchar_t* text, qn_platform::LCID locale,
                                        qn_platform::ULONG flags, qn_platform::DATE* value);

    const qn_platform::Locale_Texts* qn_texts_by_platform_name(const wchar_t* name);
    const qn_platform::Locale_Texts* qn_texts_by_host_name(const char* name);
}
#pragma GCC visibility pop

#endif
