#include "platform/modules.h"
#include "platform/text.h"
#include "platform/text/conversion.h"
#include "platform/text/single_byte_pages.h"

#include <climits>
#include <cstring>

namespace qn_platform
{

namespace
{

constexpr UINT ANSI_PAGE = 1252;
constexpr UINT OEM_PAGE = 437;

/// The page behind a number; null for UTF-8 and for what is unknown.
const Single_Byte_Page* find_Page(UINT code_page)
{
    switch (code_page)
    {
    case CP_ACP:
    case ANSI_PAGE:
        return &PAGE_1252;
    case CP_OEMCP:
    case OEM_PAGE:
        return &PAGE_437;
    default:
        return nullptr;
    }
}

/// What both directions refuse with 87.
bool arguments_Are_Valid(UINT code_page, const void* source, int source_size, const void* target,
                         int target_size)
{
    return (code_page == CP_UTF8 || find_Page(code_page) != nullptr) && source != nullptr &&
           source_size != 0 && source_size >= -1 && target_size >= 0 &&
           (target_size == 0 || (target != nullptr && target != source));
}

int fail(DWORD error)
{
    SetLastError(error);
    return 0;
}

/// The answer of an operation. A count that an int cannot tell is refused: no target could be that large.
int finish(const Converted& result)
{
    if (result.error != ERROR_SUCCESS)
    {
        return fail(result.error);
    }
    return result.count > INT_MAX ? fail(ERROR_INVALID_PARAMETER) : static_cast<int>(result.count);
}

std::size_t wide_Size(LPCWSTR source)
{
    std::size_t size = 0;
    while (source[size] != 0)
    {
        ++size;
    }
    return size + 1;
}

Converted to_Single_Byte(const Single_Byte_Page& page, LPCWSTR source, std::size_t size, LPSTR target,
                         std::size_t capacity, LPCSTR default_char, LPBOOL default_used)
{
    bool substituted = false;
    Converted result{size, ERROR_SUCCESS};
    if (capacity != 0)
    {
        const char substitute = default_char != nullptr ? *default_char : '?';
        result = Encode_Single_Byte(page, source, size, reinterpret_cast<unsigned char*>(target), capacity,
                                    static_cast<unsigned char>(substitute), substituted);
    }
    else if (default_used != nullptr)
    {
        substituted = Has_Unknown_Units(page, source, size);
    }
    if (default_used != nullptr)
    {
        *default_used = substituted ? TRUE : FALSE;
    }
    return result;
}

} // namespace

int MultiByteToWideChar(UINT code_page, DWORD flags, LPCSTR source, int source_size, LPWSTR target,
                        int target_size)
{
    if (!arguments_Are_Valid(code_page, source, source_size, target, target_size))
    {
        return fail(ERROR_INVALID_PARAMETER);
    }
    const Single_Byte_Page* const page = find_Page(code_page);
    if ((flags & ~(MB_ERR_INVALID_CHARS | (page != nullptr ? MB_PRECOMPOSED : 0))) != 0)
    {
        return fail(ERROR_INVALID_FLAGS);
    }
    const std::size_t size =
        source_size == -1 ? std::strlen(source) + 1 : static_cast<std::size_t>(source_size);
    const auto* const bytes = reinterpret_cast<const unsigned char*>(source);
    const auto capacity = static_cast<std::size_t>(target_size);
    const bool strict = (flags & MB_ERR_INVALID_CHARS) != 0;
    if (page != nullptr)
    {
        return finish(capacity == 0 ? Converted{size, ERROR_SUCCESS}
                                    : Decode_Single_Byte(*page, bytes, size, target, capacity));
    }
    return finish(capacity == 0 ? Measure_Utf8(bytes, size, strict)
                                : Decode_Utf8(bytes, size, target, capacity, strict));
}

int WideCharToMultiByte(UINT code_page, DWORD flags, LPCWSTR source, int source_size, LPSTR target,
                        int target_size, LPCSTR default_char, LPBOOL default_used)
{
    const Single_Byte_Page* const page = find_Page(code_page);
    if (!arguments_Are_Valid(code_page, source, source_size, target, target_size) ||
        (page == nullptr && (default_char != nullptr || default_used != nullptr)))
    {
        return fail(ERROR_INVALID_PARAMETER);
    }
    if ((flags & ~(page != nullptr ? WC_NO_BEST_FIT_CHARS : WC_ERR_INVALID_CHARS)) != 0)
    {
        return fail(ERROR_INVALID_FLAGS);
    }
    const std::size_t size = source_size == -1 ? wide_Size(source) : static_cast<std::size_t>(source_size);
    const auto capacity = static_cast<std::size_t>(target_size);
    const bool strict = (flags & WC_ERR_INVALID_CHARS) != 0;
    if (page != nullptr)
    {
        return finish(to_Single_Byte(*page, source, size, target, capacity, default_char, default_used));
    }
    return finish(capacity == 0 ? Measure_As_Utf8(source, size, strict)
                                : Encode_Utf8(source, size, reinterpret_cast<unsigned char*>(target),
                                              capacity, strict));
}

UINT GetACP() { return ANSI_PAGE; }

UINT GetOEMCP() { return OEM_PAGE; }

int lstrlenW(LPCWSTR text) { return text == nullptr ? 0 : static_cast<int>(wide_Size(text) - 1); }

} // namespace qn_platform
