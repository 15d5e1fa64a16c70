#ifndef QNLIB_BENCH_PEERS_H
#define QNLIB_BENCH_PEERS_H

// The headers of those peers that are installed, and owners for what GLib allocates.

#include <string>

#if defined(QNLIB_BENCH_QT)
#include <QByteArray>
#include <QList>
#include <QString>
#include <QStringList>
#endif

#if defined(QNLIB_BENCH_ICU)
#include <unicode/locid.h>
#include <unicode/unistr.h>
#include <unicode/ustdio.h>
#include <unicode/ustring.h>
#endif

#if defined(QNLIB_BENCH_FMT)
#include <fmt/format.h>
#include <fmt/printf.h>
#include <fmt/xchar.h>
#endif

#if defined(QNLIB_BENCH_OPENSSL)
#include <openssl/evp.h>
#endif

#if defined(QNLIB_BENCH_SODIUM)
#include <sodium.h>
#endif

#if defined(QNLIB_BENCH_ZLIB)
#include <zlib.h>
#endif

#if defined(QNLIB_BENCH_DEFLATE)
#include <libdeflate.h>
#endif

#if defined(QNLIB_BENCH_GLIB)
#include <glib.h>

#include <memory>

struct Glib_Free
{
    void operator()(void* pBlock) const { g_free(pBlock); }
};
struct Glib_String_Free
{
    void operator()(GString* pString) const { g_string_free(pString, TRUE); }
};

using Glib_Text = std::unique_ptr<char, Glib_Free>;
using Glib_Text16 = std::unique_ptr<gunichar2, Glib_Free>;
using Glib_String = std::unique_ptr<GString, Glib_String_Free>;
#endif

namespace peers
{

#if defined(QNLIB_BENCH_QT)
inline QByteArray Qt_Bytes(const std::string& strText)
{
    return QByteArray(strText.data(), static_cast<qsizetype>(strText.size()));
}
inline QString Qt_String(const std::u16string& strText)
{
    return QString::fromUtf16(strText.data(), static_cast<qsizetype>(strText.size()));
}
#endif

#if defined(QNLIB_BENCH_ICU)
inline icu::UnicodeString Icu_String(const std::u16string& strText)
{
    return icu::UnicodeString(strText.data(), static_cast<int32_t>(strText.size()));
}
#endif

} // namespace peers

#endif
