#include "platform/codec/base64_text.h"
#include "platform/codec/header_lines.h"
#include "platform/codec/hex_text.h"
#include "platform/crypt.h"
#include "platform/fail.h"

#include <algorithm>
#include <limits>
#include <optional>

namespace qn_platform
{

namespace
{

struct Source
{
    const BYTE* bytes;
    DWORD size;
    DWORD form;
    std::string_view line_end;
};

/// The text's length without a NUL; written unless `text` is null.
unsigned long long write_Base64(const Source& source, char* text)
{
    if (text != nullptr)
    {
        base64::Write_Text(source.bytes, source.size, source.line_end, text);
    }
    return base64::Text_Length(source.size, source.line_end);
}

char* append(char* text, std::string_view part) { return std::copy(part.begin(), part.end(), text); }

unsigned long long write_With_Header(const Source& source, std::string_view label, char* text)
{
    using namespace header_lines;
    if (text != nullptr)
    {
        text = append(append(append(append(text, BEGIN), label), DASHES), source.line_end);
        text = base64::Write_Text(source.bytes, source.size, source.line_end, text);
        append(append(append(append(text, END), label), DASHES), source.line_end);
    }
    return BEGIN.size() + END.size() + 2 * (label.size() + DASHES.size() + source.line_end.size()) +
           base64::Text_Length(source.size, source.line_end);
}

unsigned long long write_Binary(const Source& source, char* text)
{
    if (text != nullptr)
    {
        std::copy_n(source.bytes, source.size, text);
    }
    return source.size;
}

unsigned long long write_Hex(const Source& source, bool address, bool characters, char* text)
{
    return hex_text::Write(source.bytes, source.size, {address, characters}, source.line_end, text);
}

/// None for a form that there is not.
std::optional<unsigned long long> write_Form(const Source& source, char* text)
{
    switch (source.form)
    {
    case CRYPT_STRING_BASE64HEADER:
        return write_With_Header(source, "CERTIFICATE", text);
    case CRYPT_STRING_BASE64:
        return write_Base64(source, text);
    case CRYPT_STRING_BINARY:
        return write_Binary(source, text);
    case CRYPT_STRING_BASE64REQUESTHEADER:
        return write_With_Header(source, "NEW CERTIFICATE REQUEST", text);
    case CRYPT_STRING_HEX:
        return write_Hex(source, false, false, text);
    case CRYPT_STRING_HEXASCII:
        return write_Hex(source, false, true, text);
    case CRYPT_STRING_BASE64X509CRLHEADER:
        return write_With_Header(source, "X509 CRL", text);
    case CRYPT_STRING_HEXADDR:
        return write_Hex(source, true, false, text);
    case CRYPT_STRING_HEXASCIIADDR:
        return write_Hex(source, true, true, text);
    case CRYPT_STRING_HEXRAW:
        return hex_text::Write_Raw(source.bytes, source.size, source.line_end, text);
    default:
        return std::nullopt;
    }
}

std::string_view line_End(DWORD flags)
{
    if ((flags & CRYPT_STRING_NOCRLF) != 0)
    {
        return {};
    }
    return (flags & CRYPT_STRING_NOCR) != 0 ? "\n" : "\r\n";
}

} // namespace

BOOL CryptBinaryToStringA(const BYTE* bytes, DWORD size, DWORD flags, LPSTR text, DWORD* count)
{
    constexpr DWORD FLAGS = CRYPT_STRING_STRICT | CRYPT_STRING_NOCRLF | CRYPT_STRING_NOCR;
    if (bytes == nullptr || count == nullptr)
    {
        return Fail(ERROR_INVALID_PARAMETER);
    }
    const Source source{bytes, size, flags & ~FLAGS, line_End(flags)};
    const auto length = write_Form(source, nullptr);
    const unsigned long long terminator = source.form == CRYPT_STRING_BINARY ? 0 : 1;
    if (!length || *length + terminator > std::numeric_limits<DWORD>::max())
    {
        return Fail(ERROR_INVALID_PARAMETER);
    }
    const auto needed = static_cast<DWORD>(*length + terminator);
    if (text == nullptr)
    {
        *count = needed;
        return TRUE;
    }
    if (*count < needed)
    {
        *count = needed;
        return Fail(ERROR_MORE_DATA);
    }
    write_Form(source, text);
    *count = static_cast<DWORD>(*length);
    if (terminator != 0)
    {
        text[*length] = '\0';
    }
    return TRUE;
}

} // namespace qn_platform
