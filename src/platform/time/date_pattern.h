#ifndef QNLIB_SRC_PLATFORM_TIME_DATE_PATTERN_H
#define QNLIB_SRC_PLATFORM_TIME_DATE_PATTERN_H

#include "platform/text/locale_texts.h"

// Writing a date and time by a pattern of a locale, for the layer and its providers.

namespace qn_platform
{

struct Date_Fields
{
    int m_nYear;
    int m_nMonth;    ///< from 1
    int m_nDay;      ///< from 1
    int m_nWeek_Day; ///< from Sunday, which is 0
    int m_nHour;
    int m_nMinute;
    int m_nSecond;
};

/// `Output` has void Put(wchar_t).
template <class Output>
class Pattern_Writer
{
public:
    Pattern_Writer(Output& output, const Date_Fields& fields, const Locale_Texts& texts)
        : m_Output(output), m_Fields(fields), m_Texts(texts)
    {
    }

    void Write(const wchar_t* pattern)
    {
        while (*pattern != 0)
        {
            const wchar_t letter = *pattern;
            if (letter == L'\'')
            {
                pattern = write_Quoted(pattern + 1);
                continue;
            }
            int count = 0;
            for (; *pattern == letter; ++pattern)
                ++count;
            if (!write_Field(letter, count))
            {
                for (; count > 0; --count)
                    m_Output.Put(letter);
            }
        }
    }

private:
    /// Answers where the pattern goes on. Two apostrophes in a row are one, inside of a text and outside.
    const wchar_t* write_Quoted(const wchar_t* pattern)
    {
        if (*pattern == L'\'')
        {
            m_Output.Put(L'\'');
            return pattern + 1;
        }
        for (; *pattern != 0; ++pattern)
        {
            if (*pattern == L'\'' && *++pattern != L'\'')
                return pattern;
            m_Output.Put(*pattern);
        }
        return pattern;
    }

    bool write_Field(wchar_t letter, int count)
    {
        switch (letter)
        {
        case L'd':
            write_Number(m_Fields.m_nDay, count);
            return true;
        case L'M':
            write_Month(count, m_Texts.m_Months_In_Date, m_Texts.m_Short_Months_In_Date);
            return true;
        case L'L':
            write_Month(count, m_Texts.m_Months, m_Texts.m_Short_Months);
            return true;
        case L'y':
            write_Number(count == 2 ? m_Fields.m_nYear % 100 : m_Fields.m_nYear, count == 2 ? 2 : 1);
            return true;
        case L'E':
            write_Text((count < 4 ? m_Texts.m_Short_Days : m_Texts.m_Days)[m_Fields.m_nWeek_Day]);
            return true;
        default:
            return write_Time_Field(letter, count);
        }
    }

    bool write_Time_Field(wchar_t letter, int count)
    {
        switch (letter)
        {
        case L'h':
            write_Number((m_Fields.m_nHour + 11) % 12 + 1, count);
            return true;
        case L'H':
            write_Number(m_Fields.m_nHour, count);
            return true;
        case L'm':
            write_Number(m_Fields.m_nMinute, count);
            return true;
        case L's':
            write_Number(m_Fields.m_nSecond, count);
            return true;
        case L'a':
            write_Text(m_Texts.m_Markers[m_Fields.m_nHour < 12 ? 0 : 1]);
            return true;
        default:
            return false;
        }
    }

    void write_Month(int count, const wchar_t* const* names, const wchar_t* const* short_names)
    {
        if (count < 3)
            write_Number(m_Fields.m_nMonth, count);
        else
            write_Text((count == 3 ? short_names : names)[m_Fields.m_nMonth - 1]);
    }

    void write_Text(const wchar_t* text)
    {
        for (; *text != 0; ++text)
            m_Output.Put(*text);
    }

    /// A number that isn't negative and has up to four digits.
    void write_Number(int number, int width)
    {
        int scale = 1000;
        for (int digits = 4; digits > 1 && digits > width && number < scale; --digits)
            scale /= 10;
        for (; scale > 0; scale /= 10)
            m_Output.Put(static_cast<wchar_t>(L'0' + number / scale % 10));
    }

    Output& m_Output;
    const Date_Fields& m_Fields;
    const Locale_Texts& m_Texts;
};

} // namespace qn_platform

#endif
