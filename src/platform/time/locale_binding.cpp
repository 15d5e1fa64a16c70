#include "platform/modules.h"
#include "platform/modules/provider.h"
#include "platform/text.h"
#include "platform/text/locale_texts.h"
#include "platform/time.h"
#include "platform/time/bstr.h"

// The operations on locales, whose work the provider `oleaut32` does.

namespace qn_platform
{

namespace
{

constexpr HRESULT NO_PROVIDER = static_cast<HRESULT>(0x80070000 | ERROR_MOD_NOT_FOUND);

} // namespace

int GetLocaleInfoW(LCID locale, LCTYPE type, LPWSTR buffer, int size)
{
    static constinit Provider_Function<decltype(GetLocaleInfoW)> entry(L"oleaut32", "GetLocaleInfoW");
    const auto function = entry.Get();
    return function != nullptr ? function(locale, type, buffer, size) : 0;
}

HRESULT VarBstrFromDate(DATE value, LCID locale, ULONG flags, BSTR* text)
{
    static constinit Provider_Function<decltype(VarBstrFromDate)> entry(L"oleaut32", "VarBstrFromDate");
    const auto function = entry.Get();
    return function != nullptr ? function(value, locale, flags, text) : NO_PROVIDER;
}

HRESULT VarDateFromStr(LPCWSTR text, LCID locale, ULONG flags, DATE* value)
{
    static constinit Provider_Function<decltype(VarDateFromStr)> entry(L"oleaut32", "VarDateFromStr");
    const auto function = entry.Get();
    return function != nullptr ? function(text, locale, flags, value) : NO_PROVIDER;
}

const Locale_Texts* Find_Texts_By_Platform_Name(const wchar_t* name)
{
    static constinit Provider_Function<decltype(Find_Texts_By_Platform_Name)> entry(
        L"oleaut32", "qn_texts_by_platform_name");
    const auto function = entry.Get();
    return function != nullptr ? function(name) : nullptr;
}

const Locale_Texts* Find_Texts_By_Host_Name(const char* name)
{
    static constinit Provider_Function<decltype(Find_Texts_By_Host_Name)> entry(L"oleaut32",
                                                                                "qn_texts_by_host_name");
    const auto function = entry.Get();
    return function != nullptr ? function(name) : nullptr;
}

BSTR SysAllocString(LPCWSTR text)
{
    return text != nullptr ? Make_Bstr(text, static_cast<std::size_t>(lstrlenW(text))) : nullptr;
}

void SysFreeString(BSTR text) { Free_Bstr(text); }

} // namespace qn_platform
