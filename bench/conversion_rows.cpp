// UTF-8 to 16-bit text and back, and bytes to hex text and back.

#include <lib_strings.h>

#include "peers.h"
#include "row.h"
#include "texts.h"

#include <charconv>
#include <codecvt>
#include <locale>
#include <vector>

namespace
{

constexpr std::size_t Size = 65536;

using Converter = std::wstring_convert<std::codecvt_utf8_utf16<char16_t>, char16_t>;

void add_From_Utf8(const std::string& strName, const std::string& strBytes, double dMark)
{
    Row row("UTF-8 to 16 bits, 64 KiB of " + strName, dMark);
    row.Add(Row::Ours,
            [source = strBytes]() mutable
            {
                Lib_String strText;
                Lib_UTF8_Buffer_To_WString(reinterpret_cast<unsigned char*>(source.data()), source.size(),
                                           strText);
                return strText;
            });
    row.Add("C++ library", [strBytes] { return Converter().from_bytes(strBytes); });
#if defined(QNLIB_BENCH_QT)
    row.Add("Qt", [text = peers::Qt_Bytes(strBytes)] { return QString::fromUtf8(text); });
#endif
#if defined(QNLIB_BENCH_ICU)
    row.Add("ICU", [strBytes] { return icu::UnicodeString::fromUTF8(strBytes); });
#endif
#if defined(QNLIB_BENCH_GLIB)
    row.Add("GLib",
            [strBytes]
            {
                return Glib_Text16(g_utf8_to_utf16(strBytes.data(), static_cast<glong>(strBytes.size()),
                                                   nullptr, nullptr, nullptr));
            });
#endif
}

void add_To_Utf8(const std::string& strName, const std::string& strBytes, double dMark)
{
    const std::u16string strText = Converter().from_bytes(strBytes);
    Row row("16 bits to UTF-8, 64 KiB of " + strName, dMark);
    row.Add(Row::Ours,
            [strText]
            {
                Lib_Buffer buffer;
                Lib_WString_To_UTF8_Buffer(texts::Wide(strText), strText.size(), buffer);
                return buffer;
            });
    row.Add("C++ library", [strText] { return Converter().to_bytes(strText); });
#if defined(QNLIB_BENCH_QT)
    row.Add("Qt", [text = peers::Qt_String(strText)] { return text.toUtf8(); });
#endif
#if defined(QNLIB_BENCH_ICU)
    row.Add("ICU",
            [text = peers::Icu_String(strText)]
            {
                std::string strResult;
                text.toUTF8String(strResult);
                return strResult;
            });
#endif
#if defined(QNLIB_BENCH_GLIB)
    row.Add("GLib",
            [strText]
            {
                return Glib_Text(g_utf16_to_utf8(reinterpret_cast<const gunichar2*>(strText.data()),
                                                 static_cast<glong>(strText.size()), nullptr, nullptr,
                                                 nullptr));
            });
#endif
}

std::u16string hex_By_Table(const std::string& strBytes)
{
    std::u16string strText;
    strText.reserve(2 * strBytes.size());
    for (const char byte : strBytes)
    {
        strText += u"0123456789abcdef"[static_cast<unsigned char>(byte) >> 4];
        strText += u"0123456789abcdef"[byte & 0xF];
    }
    return strText;
}

// Qt's own hex text has 8 bits, and so has what <charconv> reads: less to write and to read than ours.
void add_To_Hex(const std::string& strBytes)
{
    Row row("64 KiB to hex text", 1.5);
    row.Add(Row::Ours,
            [source = strBytes]() mutable
            {
                Lib_String strText;
                Lib_Write_Buffer(source.size(), source.data(), strText, 0);
                return strText;
            });
    row.Add("C++ library", [strBytes] { return hex_By_Table(strBytes); });
#if defined(QNLIB_BENCH_QT)
    row.Add("Qt (8-bit text)", [data = peers::Qt_Bytes(strBytes)] { return data.toHex(); });
#endif
#if defined(QNLIB_BENCH_FMT)
    row.Add("fmt (8-bit text)", [data = std::vector<unsigned char>(strBytes.begin(), strBytes.end())]
            { return fmt::format("{:02x}", fmt::join(data, "")); });
#endif
}

void add_From_Hex(const std::u16string& strText)
{
    const std::string strNarrow(strText.begin(), strText.end());
    Row row("64 KiB from hex text", 1.5);
    row.Add(Row::Ours,
            [strText]
            {
                Lib_Buffer buffer;
                Lib_Read_Buffer(texts::Wide(strText), buffer, 0);
                return buffer;
            });
    row.Add("C++ lib. (8-bit)",
            [strNarrow]
            {
                std::vector<unsigned char> result(strNarrow.size() / 2);
                for (std::size_t i = 0; i < result.size(); ++i)
                    std::from_chars(&strNarrow[2 * i], &strNarrow[2 * i] + 2, result[i], 16);
                return result;
            });
#if defined(QNLIB_BENCH_QT)
    row.Add("Qt (8-bit text)", [text = peers::Qt_Bytes(strNarrow)] { return QByteArray::fromHex(text); });
#endif
}

} // namespace

void Add_Conversion_Rows()
{
    add_From_Utf8("English", texts::English(Size), 1.0);
    add_From_Utf8("Russian", texts::Russian_Utf8(Size), 1.5);
    add_To_Utf8("English", texts::English(Size), 1.0);
    add_To_Utf8("Russian", texts::Russian_Utf8(Size), 1.5);
    const std::string strBytes = texts::Random_Bytes(Size);
    add_To_Hex(strBytes);
    add_From_Hex(hex_By_Table(strBytes));
}
