// Copying, constructing and appending.

#include <lib_strings.h>

#include "peers.h"
#include "row.h"
#include "texts.h"

#include <cstring>
#include <vector>

namespace
{

void add_Copy8(const std::string& strText)
{
    Row row("copy and destroy, 60 characters, 8 bits", 1.0);
    row.Add(Row::Ours, [source = Lib_StringA(strText.c_str())] { return Lib_StringA(source); });
    row.Add("C++ library", [strText] { return strText; });
#if defined(QNLIB_BENCH_QT)
    row.Add("Qt", [source = peers::Qt_Bytes(strText)] { return QByteArray(source); });
#endif
#if defined(QNLIB_BENCH_GLIB)
    struct Release
    {
        void operator()(char* pText) const { g_ref_string_release(pText); }
    };
    row.Add("GLib", [pText = g_ref_string_new(strText.c_str())]
            { return std::unique_ptr<char, Release>(g_ref_string_acquire(pText)); });
#endif
}

void add_Copy16(const std::u16string& strText)
{
    Row row("copy and destroy, 60 characters, 16 bits", 1.0);
    row.Add(Row::Ours, [source = Lib_StringW(texts::Wide(strText))] { return Lib_StringW(source); });
    row.Add("C++ library", [strText] { return strText; });
#if defined(QNLIB_BENCH_QT)
    row.Add("Qt", [source = peers::Qt_String(strText)] { return QString(source); });
#endif
#if defined(QNLIB_BENCH_ICU)
    row.Add("ICU", [source = peers::Icu_String(strText)] { return icu::UnicodeString(source); });
#endif
}

void add_Construct8(const std::string& strText)
{
    Row row("construct from text, " + std::to_string(strText.size()) + " characters, 8 bits", 1.0);
    row.Add(Row::Ours, [strText] { return Lib_StringA(strText.c_str()); });
    row.Add("C++ library", [strText] { return std::string(strText.c_str()); });
#if defined(QNLIB_BENCH_QT)
    row.Add("Qt", [strText] { return QByteArray(strText.c_str()); });
#endif
#if defined(QNLIB_BENCH_GLIB)
    row.Add("GLib", [strText] { return Glib_Text(g_strdup(strText.c_str())); });
#endif
}

void add_Construct16(const std::u16string& strText)
{
    Row row("construct from text, " + std::to_string(strText.size()) + " characters, 16 bits", 1.0);
    row.Add(Row::Ours, [strText] { return Lib_StringW(texts::Wide(strText)); });
    row.Add("C++ library", [strText] { return std::u16string(strText.c_str()); });
#if defined(QNLIB_BENCH_QT)
    row.Add("Qt", [strText] { return QString::fromUtf16(strText.c_str()); });
#endif
#if defined(QNLIB_BENCH_ICU)
    row.Add("ICU", [strText] { return icu::UnicodeString(strText.c_str()); });
#endif
}

constexpr std::size_t Appended = 4096;

void add_Append_Units16(const std::u16string& strText)
{
    Row row("append 4,096 one by one, 16 bits", 1.0);
    row.Add(Row::Ours,
            [strText]
            {
                Lib_StringW strResult;
                strResult.Get_Buffer(Appended);
                for (const char16_t ch : strText)
                    strResult += static_cast<wchar_t>(ch);
                return strResult;
            });
    row.Add("C++ library",
            [strText]
            {
                std::u16string strResult;
                strResult.reserve(Appended);
                for (const char16_t ch : strText)
                    strResult += ch;
                return strResult;
            });
#if defined(QNLIB_BENCH_QT)
    row.Add("Qt",
            [strText]
            {
                QString strResult;
                strResult.reserve(Appended);
                for (const char16_t ch : strText)
                    strResult += QChar(ch);
                return strResult;
            });
#endif
#if defined(QNLIB_BENCH_ICU)
    row.Add("ICU",
            [strText]
            {
                icu::UnicodeString strResult(static_cast<int32_t>(Appended), 0, 0);
                for (const char16_t ch : strText)
                    strResult += ch;
                return strResult;
            });
#endif
}

// A text in NUL-ended words of 2 to 14 characters.
template <class Char>
std::vector<std::basic_string<Char>> cut_In_Words(const std::basic_string<Char>& strText)
{
    std::vector<std::basic_string<Char>> words;
    for (std::size_t nFrom = 0, nNumber = 0; nFrom < strText.size(); ++nNumber)
    {
        words.push_back(strText.substr(nFrom, 2 + nNumber * 5 % 13));
        nFrom += words.back().size();
    }
    return words;
}

void add_Append_Words8(const std::vector<std::string>& words)
{
    Row row("append 4,096 by words, 8 bits", 1.0);
    row.Add(Row::Ours,
            [words]
            {
                Lib_StringA strResult;
                strResult.Get_Buffer(Appended);
                for (const std::string& strWord : words)
                    strResult += strWord.c_str();
                return strResult;
            });
    row.Add("C++ library",
            [words]
            {
                std::string strResult;
                strResult.reserve(Appended);
                for (const std::string& strWord : words)
                    strResult += strWord.c_str();
                return strResult;
            });
#if defined(QNLIB_BENCH_QT)
    row.Add("Qt",
            [words]
            {
                QByteArray strResult;
                strResult.reserve(Appended);
                for (const std::string& strWord : words)
                    strResult += strWord.c_str();
                return strResult;
            });
#endif
#if defined(QNLIB_BENCH_GLIB)
    row.Add("GLib",
            [words]
            {
                Glib_String pResult(g_string_sized_new(Appended));
                for (const std::string& strWord : words)
                    g_string_append(pResult.get(), strWord.c_str());
                return pResult;
            });
#endif
}

void add_Append_Words16(const std::vector<std::u16string>& words)
{
    Row row("append 4,096 by words, 16 bits", 1.0);
    row.Add(Row::Ours,
            [words]
            {
                Lib_StringW strResult;
                strResult.Get_Buffer(Appended);
                for (const std::u16string& strWord : words)
                    strResult += texts::Wide(strWord);
                return strResult;
            });
    row.Add("C++ library",
            [words]
            {
                std::u16string strResult;
                strResult.reserve(Appended);
                for (const std::u16string& strWord : words)
                    strResult += strWord.c_str();
                return strResult;
            });
#if defined(QNLIB_BENCH_QT)
    row.Add("Qt",
            [words]
            {
                QString strResult;
                strResult.reserve(Appended);
                for (const std::u16string& strWord : words)
                    strResult += QStringView(strWord.c_str());
                return strResult;
            });
#endif
#if defined(QNLIB_BENCH_ICU)
    row.Add("ICU",
            [words]
            {
                icu::UnicodeString strResult(static_cast<int32_t>(Appended), 0, 0);
                for (const std::u16string& strWord : words)
                    strResult.append(strWord.c_str(), -1);
                return strResult;
            });
#endif
}

} // namespace

void Add_Basic_Rows()
{
    add_Copy8(texts::English(60));
    add_Copy16(texts::Russian16(60));
    for (const std::size_t nLength : {12, 60})
    {
        add_Construct8(texts::English(nLength));
        add_Construct16(texts::Russian16(nLength));
    }
    add_Append_Units16(texts::Russian16(Appended));
    add_Append_Words8(cut_In_Words(texts::English(Appended)));
    add_Append_Words16(cut_In_Words(texts::Russian16(Appended)));
}
