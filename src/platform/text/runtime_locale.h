#ifndef QNLIB_SRC_PLATFORM_TEXT_RUNTIME_LOCALE_H
#define QNLIB_SRC_PLATFORM_TEXT_RUNTIME_LOCALE_H

#include "platform/text/locale_texts.h"

#include <atomic>

#include <locale.h>

namespace qn_platform
{

/// One locale of the runtime that the library uses. It never changes and lives as long as the process, so
/// that a thread may go on with the one it read while another thread changes the locale in force.
struct Runtime_Locale
{
    /// Folds one unit, or one byte of Windows-1252 text; what has no counterpart of its width stays.
    wchar_t Lower(wchar_t unit) const;
    wchar_t Upper(wchar_t unit) const;
    char Lower(char byte) const { return m_Lower_Bytes[static_cast<unsigned char>(byte)]; }
    char Upper(char byte) const { return m_Upper_Bytes[static_cast<unsigned char>(byte)]; }

    /// What it writes in dates; null when that cannot be had, because the provider is missing.
    const Locale_Texts* Get_Texts() const;

    locale_t m_Host = nullptr; ///< the host's UTF-8 locale; null for "C", which needs no help
    wchar_t m_cDecimal_Point = L'.';
    wchar_t* m_pName = nullptr;
    const Runtime_Locale* m_pNext = nullptr;
    char m_Lower_Bytes[256]{}; ///< not used by "C"
    char m_Upper_Bytes[256]{};
    bool m_bC_Case = true;              ///< only A to Z have a case
    bool m_bC_Collation = true;         ///< the order is that of the units
    const char* m_pTime_Name = nullptr; ///< the host's name for the texts of dates; null for those of "C"
    mutable std::atomic<const Locale_Texts*> m_pTexts{nullptr}; ///< once they were asked for
};

extern std::atomic<const Runtime_Locale*> g_pRuntime_Locale;

/// The locale in force. An operation asks once and keeps to the answer.
inline const Runtime_Locale& Get_Runtime_Locale()
{
    return *g_pRuntime_Locale.load(std::memory_order_acquire);
}

/// The decimal point as one character; a point outside Latin-1 is a plain one in 8-bit text.
template <class Char>
Char To_Decimal_Point(const Runtime_Locale& locale)
{
    const bool known = sizeof(Char) == sizeof(wchar_t) || locale.m_cDecimal_Point < 256;
    return known ? static_cast<Char>(locale.m_cDecimal_Point) : static_cast<Char>('.');
}

} // namespace qn_platform

#endif
