#include "datetime/date_time.h"

#include "datetime/zones.h"
#include "platform/runtime_time.h"

#include <memory>
#include <new>

namespace
{

/// Codes of the platform for a text that is no date and for a date that the value cannot hold.
constexpr unsigned int TYPE_MISMATCH = 0x80020005;
constexpr unsigned int VALUE_OVERFLOW = 0x8002000A;
constexpr unsigned int OUT_OF_MEMORY = 0x8007000E;

/// All categories of the runtime's locale, by the platform's number.
constexpr int ALL_CATEGORIES = 0;

struct Free_Text
{
    void operator()(wchar_t* pText) const { SysFreeString(pText); }
};

/// The runtime's name of a locale, "language_country.code page". What the platform doesn't tell is left out;
/// for an unknown identifier that leaves the empty name of the user's default.
class Locale_Name
{
public:
    explicit Locale_Name(LCID nLocale)
    {
        append(L"", nLocale, LOCALE_SENGLANGUAGE);
        append(L"_", nLocale, LOCALE_SENGCOUNTRY);
        append(L".", nLocale, LOCALE_IDEFAULTANSICODEPAGE);
        m_Text[m_nLength] = 0;
    }

    const wchar_t* Get() const { return m_Text; }

private:
    static constexpr int SIZE = 260;

    void append(const wchar_t* pLead, LCID nLocale, LCTYPE nType)
    {
        wchar_t part[SIZE];
        if (GetLocaleInfoW(nLocale, nType, part, SIZE) > 1)
        {
            append(pLead);
            append(part);
        }
    }

    void append(const wchar_t* pText)
    {
        while (*pText != 0 && m_nLength < SIZE - 1)
            m_Text[m_nLength++] = *pText++;
    }

    wchar_t m_Text[SIZE];
    int m_nLength = 0;
};

/// Puts the user's default locale in force, or else "C": no other one stays.
void select_Default()
{
    if (_wsetlocale(ALL_CATEGORIES, L"") == nullptr)
        _wsetlocale(ALL_CATEGORIES, L"C");
}

} // namespace

bool Lib_DateTime::Parse_Date_Time(const wchar_t* pText, unsigned long nFlags, unsigned long nLocale,
                                   bool /*bLocal*/)
{
    const Lib_String strText(pText);
    const HRESULT nResult = VarDateFromStr(const_cast<wchar_t*>(strText.GetW()), static_cast<LCID>(nLocale),
                                           static_cast<ULONG>(nFlags), &m_dtValue);
    const unsigned int nCode = static_cast<unsigned int>(nResult);
    if (nCode == TYPE_MISMATCH || nCode == VALUE_OVERFLOW)
        m_dtValue = 0.0;
    return nResult >= 0;
}

Lib_String Lib_DateTime::Format(unsigned long nFlags, unsigned long nLocale, bool bTo_Local) const
{
    double dtValue = m_dtValue;
    if (bTo_Local && !qn_calendar::Find_Local(m_dtValue, dtValue))
        return Lib_String();
    wchar_t* pText = nullptr;
    const HRESULT nResult =
        VarBstrFromDate(dtValue, static_cast<LCID>(nLocale), static_cast<ULONG>(nFlags), &pText);
    if (static_cast<unsigned int>(nResult) == OUT_OF_MEMORY)
        throw std::bad_alloc();
    const std::unique_ptr<wchar_t, Free_Text> pOwner(nResult >= 0 ? pText : nullptr);
    return Lib_String(pOwner.get());
}

Lib_String Lib_DateTime::Format(unsigned int nId, HINSTANCE hModule) const
{
    Lib_String strFormat;
    strFormat.Load_String(nId, hModule);
    if (strFormat.Get_Length() == 0)
        return Lib_String();
    return Format(strFormat.GetW(), static_cast<unsigned long>(LOCALE_USER_DEFAULT));
}

Lib_String Lib_DateTime::Format(const wchar_t* pFormat, unsigned long nLocale) const
{
    std::tm Fields{};
    if (!To_tm(Fields))
        return Lib_String();
    wchar_t text[128];
    if (_wsetlocale(ALL_CATEGORIES, Locale_Name(static_cast<LCID>(nLocale)).Get()) == nullptr)
        select_Default(); // rather than whatever locale the process is in
    const bool bDone = pFormat != nullptr && qn_runtime::Format_Time(text, 128, pFormat, Fields) != 0;
    select_Default();
    return bDone ? Lib_String(text) : Lib_String();
}
