// Formatting a line with a text, integers of both bases and a number with decimals.

#include <lib_strings.h>

#include "peers.h"
#include "row.h"
#include "texts.h"

#include <cstdio>
#include <iomanip>
#include <sstream>

namespace
{

// What the line tells; the works read it anew each time.
template <class Char>
struct Line
{
    std::basic_string<Char> m_strName;
    int m_nNumber = -4711;
    unsigned int m_nCount = 38;
    unsigned int m_nMask = 0x12AB34;
    double m_dPrice = 1234.5678;
};

std::string printed(const Line<char>& line)
{
    char text[256];
    const int nLength =
        std::snprintf(text, sizeof(text), "%s #%d: %u of %08x at %.2f", line.m_strName.c_str(),
                      line.m_nNumber, line.m_nCount, line.m_nMask, line.m_dPrice);
    return std::string(text, static_cast<std::size_t>(nLength));
}

std::string streamed(const Line<char>& line)
{
    std::ostringstream stream;
    stream << line.m_strName << " #" << line.m_nNumber << ": " << line.m_nCount << " of " << std::hex
           << std::setfill('0') << std::setw(8) << line.m_nMask << " at " << std::fixed
           << std::setprecision(2) << line.m_dPrice;
    return stream.str();
}

void add_Format8(const Line<char>& line)
{
    Row row("format a mixed line, 8 bits", 1.0);
    row.Add(Row::Ours,
            [line]
            {
                Lib_StringA strText;
                strText.Format("%s #%d: %u of %08x at %.2f", line.m_strName.c_str(), line.m_nNumber,
                               line.m_nCount, line.m_nMask, line.m_dPrice);
                return strText;
            });
    row.Add("C library", [line] { return printed(line); });
    row.Add("C++ library", [line] { return streamed(line); });
#if defined(QNLIB_BENCH_FMT)
    row.Add("fmt",
            [line]
            {
                return fmt::format("{} #{}: {} of {:08x} at {:.2f}", line.m_strName, line.m_nNumber,
                                   line.m_nCount, line.m_nMask, line.m_dPrice);
            });
    row.Add("fmt (sprintf)",
            [line]
            {
                return fmt::sprintf("%s #%d: %u of %08x at %.2f", line.m_strName, line.m_nNumber,
                                    line.m_nCount, line.m_nMask, line.m_dPrice);
            });
#endif
#if defined(QNLIB_BENCH_GLIB)
    row.Add("GLib",
            [line]
            {
                return Glib_Text(g_strdup_printf("%s #%d: %u of %08x at %.2f", line.m_strName.c_str(),
                                                 line.m_nNumber, line.m_nCount, line.m_nMask, line.m_dPrice));
            });
#endif
}

void add_Format16(const Line<char16_t>& line)
{
    Row row("format a mixed line, 16 bits", 1.0);
    row.Add(Row::Ours,
            [line]
            {
                Lib_StringW strText;
                strText.Format(L"%s #%d: %u of %08x at %.2f", texts::Wide(line.m_strName), line.m_nNumber,
                               line.m_nCount, line.m_nMask, line.m_dPrice);
                return strText;
            });
#if defined(QNLIB_BENCH_FMT)
    row.Add("fmt",
            [line]
            {
                return fmt::format(u"{} #{}: {} of {:08x} at {:.2f}", line.m_strName, line.m_nNumber,
                                   line.m_nCount, line.m_nMask, line.m_dPrice);
            });
#endif
#if defined(QNLIB_BENCH_QT)
    row.Add("Qt",
            [line, name = peers::Qt_String(line.m_strName)]
            {
                return QString::asprintf("%ls #%d: %u of %08x at %.2f", qUtf16Printable(name), line.m_nNumber,
                                         line.m_nCount, line.m_nMask, line.m_dPrice);
            });
#endif
#if defined(QNLIB_BENCH_ICU)
    row.Add("ICU",
            [line]
            {
                char16_t text[256];
                const int32_t nLength =
                    u_snprintf_u(text, 256, u"%S #%d: %u of %08x at %.2f", line.m_strName.c_str(),
                                 line.m_nNumber, line.m_nCount, line.m_nMask, line.m_dPrice);
                return icu::UnicodeString(text, nLength);
            });
#endif
}

} // namespace

void Add_Format_Rows()
{
    add_Format8(Line<char>{"Ivanova, Anna"});
    add_Format16(Line<char16_t>{u"Иванова, Анна"});
}
