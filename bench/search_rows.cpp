// Finding and comparing.

#include <lib_strings.h>

#include "peers.h"
#include "row.h"
#include "texts.h"

#include <cstring>

namespace
{

void add_Find8(const std::string& strName, const std::string& strText, const std::string& strPart)
{
    Row row(strName + ", 8 bits", 1.5);
    row.Add(Row::Ours, [text = Lib_StringA(strText.c_str()), strPart] { return text.Find(strPart.c_str()); });
    row.Add("C++ library", [strText, strPart] { return strText.find(strPart); });
    row.Add("C library", [strText, strPart] { return std::strstr(strText.c_str(), strPart.c_str()); });
#if defined(QNLIB_BENCH_QT)
    row.Add("Qt", [text = peers::Qt_Bytes(strText), part = peers::Qt_Bytes(strPart)]
            { return text.indexOf(part); });
#endif
#if defined(QNLIB_BENCH_GLIB)
    row.Add("GLib", [strText, strPart]
            { return g_strstr_len(strText.data(), static_cast<gssize>(strText.size()), strPart.c_str()); });
#endif
}

void add_Find16(const std::string& strName, const std::u16string& strText, const std::u16string& strPart)
{
    Row row(strName + ", 16 bits", 1.5);
    row.Add(Row::Ours,
            [text = Lib_StringW(texts::Wide(strText)), strPart] { return text.Find(texts::Wide(strPart)); });
    row.Add("C++ library", [strText, strPart] { return strText.find(strPart); });
#if defined(QNLIB_BENCH_QT)
    row.Add("Qt", [text = peers::Qt_String(strText), part = peers::Qt_String(strPart)]
            { return text.indexOf(part); });
#endif
#if defined(QNLIB_BENCH_ICU)
    row.Add("ICU", [text = peers::Icu_String(strText), part = peers::Icu_String(strPart)]
            { return text.indexOf(part); });
#endif
}

void add_Find_Unit8(const std::string& strText, char ch)
{
    Row row("find a character at the end of 4,096, 8 bits", 1.5);
    row.Add(Row::Ours, [text = Lib_StringA(strText.c_str()), ch] { return text.Find(ch); });
    row.Add("C++ library", [strText, ch] { return strText.find(ch); });
    row.Add("C library", [strText, ch] { return std::strchr(strText.c_str(), ch); });
#if defined(QNLIB_BENCH_QT)
    row.Add("Qt", [text = peers::Qt_Bytes(strText), ch] { return text.indexOf(ch); });
#endif
#if defined(QNLIB_BENCH_GLIB)
    row.Add("GLib", [strText, ch]
            { return g_utf8_strchr(strText.data(), static_cast<gssize>(strText.size()), gunichar(ch)); });
#endif
}

void add_Find_Unit16(const std::u16string& strText, char16_t ch)
{
    Row row("find a character at the end of 4,096, 16 bits", 1.5);
    row.Add(Row::Ours,
            [text = Lib_StringW(texts::Wide(strText)), ch] { return text.Find(static_cast<wchar_t>(ch)); });
    row.Add("C++ library", [strText, ch] { return strText.find(ch); });
#if defined(QNLIB_BENCH_QT)
    row.Add("Qt", [text = peers::Qt_String(strText), ch] { return text.indexOf(QChar(ch)); });
#endif
#if defined(QNLIB_BENCH_ICU)
    row.Add("ICU", [text = peers::Icu_String(strText), ch] { return text.indexOf(ch); });
#endif
}

void add_Equal8(const std::string& strText)
{
    Row row("compare two equal texts of 4,096, 8 bits", 1.0);
    const char* pText = strText.c_str();
    row.Add(Row::Ours, [a = Lib_StringA(pText), b = Lib_StringA(pText)] { return a == b; });
    row.Add("C++ library", [a = std::string(pText), b = std::string(pText)] { return a == b; });
#if defined(QNLIB_BENCH_QT)
    row.Add("Qt", [a = peers::Qt_Bytes(strText), b = peers::Qt_Bytes(strText)] { return a == b; });
#endif
#if defined(QNLIB_BENCH_GLIB)
    row.Add("GLib", [a = g_string_new(pText), b = g_string_new(pText)] { return g_string_equal(a, b); });
#endif
}

void add_Equal16(const std::u16string& strText)
{
    Row row("compare two equal texts of 4,096, 16 bits", 1.0);
    const wchar_t* pText = texts::Wide(strText);
    row.Add(Row::Ours, [a = Lib_StringW(pText), b = Lib_StringW(pText)] { return a == b; });
    row.Add("C++ library",
            [a = std::u16string(strText.c_str()), b = std::u16string(strText.c_str())] { return a == b; });
#if defined(QNLIB_BENCH_QT)
    row.Add("Qt", [a = peers::Qt_String(strText), b = peers::Qt_String(strText)] { return a == b; });
#endif
#if defined(QNLIB_BENCH_ICU)
    row.Add("ICU", [a = peers::Icu_String(strText), b = peers::Icu_String(strText)]
            { return static_cast<bool>(a == b); });
#endif
}

} // namespace

void Add_Search_Rows()
{
    using namespace texts;
    add_Find8("find 8 characters at the end of 4,096", Ending_In(English(4096), English_Part), English_Part);
    add_Find16("find 8 characters at the end of 4,096", Ending_In(Russian16(4096), Russian_Part),
               Russian_Part);
    add_Find8("find 8 characters at the end of 65,536", Ending_In(English(65536), English_Part),
              English_Part);
    add_Find16("find 8 characters at the end of 65,536", Ending_In(Russian16(65536), Russian_Part),
               Russian_Part);
    add_Find_Unit8(Ending_In(English(4096), "#"), '#');
    add_Find_Unit16(Ending_In(Russian16(4096), u"№"), u'№');
    add_Equal8(English(4096));
    add_Equal16(Russian16(4096));
}
