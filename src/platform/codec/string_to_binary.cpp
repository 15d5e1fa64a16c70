#include "platform/codec/base64_text.h"
#include "platform/codec/header_lines.h"
#include "platform/codec/hex_text.h"
#include "platform/crypt.h"
#include "platform/fail.h"

#include <algorithm>
#include <cstring>
#include <initializer_list>
#include <optional>

namespace qn_platform
{

namespace
{

/// What has been found in a text: its form, the part that bears the bytes, and their number.
struct Found
{
    DWORD form;
    std::string_view text;
    std::size_t skipped;
    std::size_t size;
};

hex_text::Form hex_Form(DWORD form)
{
    return {form == CRYPT_STRING_HEXADDR || form == CRYPT_STRING_HEXASCIIADDR,
            form == CRYPT_STRING_HEXASCII || form == CRYPT_STRING_HEXASCIIADDR};
}

std::optional<Found> found_Or_None(DWORD form, std::string_view text, std::size_t skipped,
                                   std::optional<std::size_t> size)
{
    return size ? std::optional<Found>({form, text, skipped, *size}) : std::nullopt;
}

/// The text in one certain form.
std::optional<Found> find_Form(DWORD form, std::string_view text, bool strict)
{
    switch (form)
    {
    case CRYPT_STRING_BASE64HEADER:
    case CRYPT_STRING_BASE64REQUESTHEADER:
    case CRYPT_STRING_BASE64X509CRLHEADER:
        if (const auto content = header_lines::Find_Content(text, strict))
        {
            return found_Or_None(form, content->text, content->skipped,
                                 base64::Measure_Text(content->text, strict));
        }
        return std::nullopt;
    case CRYPT_STRING_BASE64:
        return found_Or_None(form, text, 0, base64::Measure_Text(text, strict));
    case CRYPT_STRING_BINARY:
        return Found{form, text, 0, text.size()};
    case CRYPT_STRING_HEXRAW:
        return found_Or_None(form, text, 0, hex_text::Read_Raw(text, strict, nullptr));
    default:
        return found_Or_None(form, text, 0, hex_text::Read(text, hex_Form(form), strict, nullptr));
    }
}

std::optional<Found> find_First(std::initializer_list<DWORD> forms, std::string_view text, bool strict)
{
    for (const DWORD form : forms)
    {
        if (auto found = find_Form(form, text, strict))
        {
            return found;
        }
    }
    return std::nullopt;
}

/// The forms that may stand for several are tried in the platform's order.
std::optional<Found> find(DWORD form, std::string_view text, bool strict)
{
    switch (form)
    {
    case CRYPT_STRING_BASE64_ANY:
        return find_First({CRYPT_STRING_BASE64HEADER, CRYPT_STRING_BASE64}, text, strict);
    case CRYPT_STRING_ANY:
        return find_First({CRYPT_STRING_BASE64HEADER, CRYPT_STRING_BASE64, CRYPT_STRING_BINARY}, text,
                          strict);
    case CRYPT_STRING_HEX_ANY:
        return find_First({CRYPT_STRING_HEXADDR, CRYPT_STRING_HEXASCIIADDR, CRYPT_STRING_HEX,
                           CRYPT_STRING_HEXRAW, CRYPT_STRING_HEXASCII},
                          text, strict);
    default:
        return find_Form(form, text, strict);
    }
}

void read(const Found& found, bool strict, BYTE* bytes)
{
    switch (found.form)
    {
    case CRYPT_STRING_BASE64HEADER:
    case CRYPT_STRING_BASE64REQUESTHEADER:
    case CRYPT_STRING_BASE64X509CRLHEADER:
    case CRYPT_STRING_BASE64:
        base64::Read_Text(found.text, bytes, found.size);
        break;
    case CRYPT_STRING_BINARY:
        std::copy(found.text.begin(), found.text.end(), bytes);
        break;
    case CRYPT_STRING_HEXRAW:
        hex_text::Read_Raw(found.text, strict, bytes);
        break;
    default:
        hex_text::Read(found.text, hex_Form(found.form), strict, bytes);
    }
}

} // namespace

BOOL CryptStringToBinaryA(LPCSTR text, DWORD length, DWORD flags, BYTE* bytes, DWORD* count, DWORD* skipped,
                          DWORD* form)
{
    constexpr DWORD FLAGS = CRYPT_STRING_STRICT | CRYPT_STRING_NOCRLF | CRYPT_STRING_NOCR;
    if (text == nullptr || count == nullptr || (flags & ~FLAGS) > CRYPT_STRING_HEXRAW)
    {
        return Fail(ERROR_INVALID_PARAMETER);
    }
    const bool strict = (flags & CRYPT_STRING_STRICT) != 0;
    const auto found = find(flags & ~FLAGS, {text, length != 0 ? length : std::strlen(text)}, strict);
    // A text without a given length may have 4 GiB and more.
    if (!found || found->size > 0xFFFFFFFF || found->skipped > 0xFFFFFFFF)
    {
        return Fail(ERROR_INVALID_DATA);
    }
    const auto size = static_cast<DWORD>(found->size);
    const bool fits = bytes == nullptr || *count >= size;
    *count = size;
    if (!fits)
    {
        return Fail(ERROR_MORE_DATA);
    }
    if (bytes != nullptr)
    {
        read(*found, strict, bytes);
    }
    if (skipped != nullptr)
    {
        *skipped = static_cast<DWORD>(found->skipped);
    }
    if (form != nullptr)
    {
        *form = found->form;
    }
    return TRUE;
}

} // namespace qn_platform
