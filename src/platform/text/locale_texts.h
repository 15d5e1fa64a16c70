#ifndef QNLIB_SRC_PLATFORM_TEXT_LOCALE_TEXTS_H
#define QNLIB_SRC_PLATFORM_TEXT_LOCALE_TEXTS_H

// What a locale writes in dates: its names and patterns. The provider `oleaut32` makes these records, one for
// each locale that is asked for; they never change and live as long as the process.

namespace qn_platform
{

/// All texts end with a NUL, and none is null. Patterns consist of
///
///     d dd      day                        h hh  H HH  hour of 12 and of 24
///     M MM      month by number            m mm  s ss  minute, second
///     MMM MMMM  its name as in a date      a           marker of the half of the day
///     LLL LLLL  its name alone             E EEEE      day of the week, short and long
///     y yy      year, whole and cut        '...'       text; two apostrophes are one
///
/// and other characters, which stand for themselves.
struct Locale_Texts
{
    const char* m_pHost_Name;                  ///< as the host names locales, without an encoding: "de_DE"
    const wchar_t* m_pDecimal_Point;           ///< one unit, or more where the locale has it so
    const wchar_t* m_Days[7];                  ///< from Sunday
    const wchar_t* m_Short_Days[7];            ///< from Sunday
    const wchar_t* m_Months[12];               ///< as they stand alone
    const wchar_t* m_Short_Months[12];         ///< as they stand alone
    const wchar_t* m_Months_In_Date[12];       ///< as they stand beside a day
    const wchar_t* m_Short_Months_In_Date[12]; ///< as they stand beside a day
    const wchar_t* m_Markers[2];               ///< of the halves of the day
    const wchar_t* m_pShort_Date;              ///< pattern
    const wchar_t* m_pLong_Date;               ///< pattern, with the day of the week
    const wchar_t* m_pTime;                    ///< pattern, with seconds
};

/// The texts of the locale by the name that the platform's runtime gives it, "German_Germany.1252". Null for
/// an unknown name, and without the provider.
const Locale_Texts* Find_Texts_By_Platform_Name(const wchar_t* name);

/// The same by a name of the host's kind, "de_DE.UTF-8".
const Locale_Texts* Find_Texts_By_Host_Name(const char* name);

} // namespace qn_platform

#endif
