// Replacing, trimming, upper case and splitting. Edits work on a copy of a text that stays as it is.

#include <lib_strings.h>

#include "peers.h"
#include "row.h"
#include "texts.h"

#include <algorithm>
#include <cctype>
#include <cwctype>
#include <memory>
#include <vector>

namespace
{

// What an edit in place gives for a copy of the source.
template <class String, class Edit>
auto on_A_Copy(String source, Edit edit)
{
    return [source = std::move(source), edit]
    {
        String copy(source);
        edit(copy);
        return copy;
    };
}

template <class Text>
Text replaced(const Text& text, const Text& before, const Text& after)
{
    Text result;
    result.reserve(text.size() + text.size() / 8);
    std::size_t nFrom = 0;
    std::size_t nFound = 0;
    while ((nFound = text.find(before, nFrom)) != Text::npos)
    {
        result.append(text, nFrom, nFound - nFrom).append(after);
        nFrom = nFound + before.size();
    }
    return result.append(text, nFrom);
}

// 4,096 characters with 64 times `before`.
template <class Text>
Text with_64(Text text, const Text& before)
{
    text.resize(4096);
    for (std::size_t i = 0; i < 64; ++i)
        text.replace(i * 64 + 20, before.size(), before);
    return text;
}

void add_Replace8(const std::string& strText, const std::string& strBefore, const std::string& strAfter)
{
    Row row("replace 64 occurrences in 4,096, 8 bits", 1.0);
    row.Add(Row::Ours, on_A_Copy(Lib_StringA(strText.c_str()), [=](Lib_StringA& text)
                                 { text.Replace(strBefore.c_str(), strAfter.c_str()); }));
    row.Add("C++ library", [=] { return replaced(strText, strBefore, strAfter); });
#if defined(QNLIB_BENCH_QT)
    row.Add("Qt", on_A_Copy(peers::Qt_Bytes(strText), [before = peers::Qt_Bytes(strBefore),
                                                       after = peers::Qt_Bytes(strAfter)](QByteArray& text)
                            { text.replace(before, after); }));
#endif
#if defined(QNLIB_BENCH_GLIB)
    row.Add("GLib",
            [=]
            {
                Glib_String pText(g_string_new_len(strText.data(), static_cast<gssize>(strText.size())));
                g_string_replace(pText.get(), strBefore.c_str(), strAfter.c_str(), 0);
                return pText;
            });
#endif
}

void add_Replace16(const std::u16string& strText, const std::u16string& strBefore,
                   const std::u16string& strAfter)
{
    Row row("replace 64 occurrences in 4,096, 16 bits", 1.0);
    row.Add(Row::Ours, on_A_Copy(Lib_StringW(texts::Wide(strText)), [=](Lib_StringW& text)
                                 { text.Replace(texts::Wide(strBefore), texts::Wide(strAfter)); }));
    row.Add("C++ library", [=] { return replaced(strText, strBefore, strAfter); });
#if defined(QNLIB_BENCH_QT)
    row.Add("Qt", on_A_Copy(peers::Qt_String(strText), [before = peers::Qt_String(strBefore),
                                                        after = peers::Qt_String(strAfter)](QString& text)
                            { text.replace(before, after); }));
#endif
#if defined(QNLIB_BENCH_ICU)
    row.Add("ICU", on_A_Copy(peers::Icu_String(strText),
                             [before = peers::Icu_String(strBefore), after = peers::Icu_String(strAfter)](
                                 icu::UnicodeString& text) { text.findAndReplace(before, after); }));
#endif
}

// A text that has just come in is trimmed where it stands.
template <class Text>
Text trimmed(Text text, const typename Text::value_type* pBlanks)
{
    text.erase(text.find_last_not_of(pBlanks) + 1);
    return std::move(text.erase(0, text.find_first_not_of(pBlanks)));
}

void add_Trim8(const std::string& strText)
{
    Row row("take and trim 60 characters in 16 blanks, 8 bits", 1.0);
    row.Add(Row::Ours,
            [strText]
            {
                Lib_StringA text(strText.c_str());
                text.TrimRight();
                text.TrimLeft();
                return text;
            });
    row.Add("C++ library", [strText] { return trimmed(std::string(strText.c_str()), " \t\n\v\f\r"); });
#if defined(QNLIB_BENCH_QT)
    row.Add("Qt", [strText] { return QByteArray(strText.c_str()).trimmed(); });
#endif
#if defined(QNLIB_BENCH_GLIB)
    row.Add("GLib",
            [strText]
            {
                char* pText = g_strdup(strText.c_str());
                return Glib_Text(g_strstrip(pText));
            });
#endif
}

void add_Trim16(const std::u16string& strText)
{
    Row row("take and trim 60 characters in 16 blanks, 16 bits", 1.0);
    row.Add(Row::Ours,
            [strText]
            {
                Lib_StringW text(texts::Wide(strText));
                text.TrimRight();
                text.TrimLeft();
                return text;
            });
    row.Add("C++ library",
            [strText] { return trimmed(std::u16string(strText.c_str()), u" \t\n\v\f\r\u0085\u00A0"); });
#if defined(QNLIB_BENCH_QT)
    row.Add("Qt", [strText] { return QString::fromUtf16(strText.c_str()).trimmed(); });
#endif
#if defined(QNLIB_BENCH_ICU)
    row.Add("ICU",
            [strText]
            {
                icu::UnicodeString text(strText.c_str());
                text.trim();
                return text;
            });
#endif
}

void add_Upper8(const std::string& strText)
{
    Row row("upper case of 4,096, 8 bits", 1.5);
    row.Add(Row::Ours, on_A_Copy(Lib_StringA(strText.c_str()), [](Lib_StringA& text) { text.Make_Upper(); }));
    row.Add("C++ library",
            on_A_Copy(strText,
                      [](std::string& text)
                      {
                          for (char& ch : text)
                              ch = static_cast<char>(std::toupper(static_cast<unsigned char>(ch)));
                      }));
#if defined(QNLIB_BENCH_QT)
    row.Add("Qt", [text = peers::Qt_Bytes(strText)] { return text.toUpper(); });
#endif
#if defined(QNLIB_BENCH_GLIB)
    row.Add("GLib", [strText]
            { return Glib_Text(g_ascii_strup(strText.data(), static_cast<gssize>(strText.size()))); });
#endif
}

void add_Upper16(const std::u16string& strText)
{
    Row row("upper case of 4,096, 16 bits", 1.5);
    row.Add(Row::Ours,
            on_A_Copy(Lib_StringW(texts::Wide(strText)), [](Lib_StringW& text) { text.Make_Upper(); }));
    row.Add("C++ library", on_A_Copy(strText,
                                     [](std::u16string& text)
                                     {
                                         for (char16_t& ch : text)
                                             ch = static_cast<char16_t>(std::towupper(ch));
                                     }));
#if defined(QNLIB_BENCH_QT)
    row.Add("Qt", [text = peers::Qt_String(strText)] { return text.toUpper(); });
#endif
#if defined(QNLIB_BENCH_ICU)
    row.Add("ICU", on_A_Copy(peers::Icu_String(strText),
                             [](icu::UnicodeString& text) { text.toUpper(icu::Locale::getRoot()); }));
#endif
}

template <class Text, class Source>
std::vector<Text> split(const Source& source, char16_t chSeparator)
{
    std::vector<Text> fields;
    for (auto nFrom = 0 * source.length(); nFrom < source.length();)
    {
        const auto nFound = source.find(chSeparator, nFrom);
        const auto nEnd = std::min(nFound, source.length());
        if (nEnd != nFrom)
            fields.emplace_back(source.data() + nFrom, nEnd - nFrom);
        nFrom = nEnd + 1;
    }
    return fields;
}

void add_Split16(const std::u16string& strText)
{
    Row row("split 1,000 fields, 16 bits", 1.0);
    row.Add(Row::Ours,
            [strText]
            {
                Lib_Strings* pFields = nullptr;
                Lib_Split_String(texts::Wide(strText), L';', pFields);
                return std::unique_ptr<Lib_Strings>(pFields);
            });
    row.Add("C++ library", [strText] { return split<std::u16string>(strText, u';'); });
#if defined(QNLIB_BENCH_QT)
    row.Add("Qt", [text = peers::Qt_String(strText)] { return text.split(QChar(u';'), Qt::SkipEmptyParts); });
#endif
#if defined(QNLIB_BENCH_ICU)
    row.Add("ICU",
            [text = peers::Icu_String(strText)]
            {
                std::vector<icu::UnicodeString> fields;
                for (int32_t nFrom = 0; nFrom < text.length();)
                {
                    const int32_t nFound = text.indexOf(u';', nFrom);
                    const int32_t nEnd = nFound < 0 ? text.length() : nFound;
                    if (nEnd != nFrom)
                        fields.emplace_back(text, nFrom, nEnd - nFrom);
                    nFrom = nEnd + 1;
                }
                return fields;
            });
#endif
}

// Fields as a table of people has them: numbers, names, addresses.
std::u16string fields_Text(std::size_t nFields)
{
    const std::u16string strProse = texts::Russian16(4096);
    std::u16string strText;
    for (std::size_t i = 0; i < nFields; ++i)
    {
        const std::size_t nLength = 4 + i * 7 % 29;
        strText += strProse.substr(i * 31 % 4000, nLength);
        strText += u';';
    }
    std::replace(strText.begin(), strText.end(), u'\n', u' ');
    strText.pop_back();
    return strText;
}

} // namespace

void Add_Edit_Rows()
{
    using namespace texts;
    add_Replace8(with_64<std::string>(English(4096), "{name}"), "{name}", "Ivanova, A.");
    add_Replace16(with_64<std::u16string>(Russian16(4096), u"{name}"), u"{name}", u"Иванова, А.");
    const std::string strBlanks(8, ' ');
    add_Trim8(strBlanks + English(60) + strBlanks);
    add_Trim16(Widened(strBlanks) + Russian16(60) + Widened(strBlanks));
    add_Upper8(English(4096));
    add_Upper16(English16(4096));
    add_Split16(fields_Text(1000));
}
