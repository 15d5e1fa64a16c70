#ifndef QNLIB_SRC_PLATFORM_TIME_BSTR_H
#define QNLIB_SRC_PLATFORM_TIME_BSTR_H

#include "platform/time.h"

#include <cstddef>
#include <cstdlib>
#include <cstring>

// The blocks of the platform's counted texts, for the layer and its providers: the length in bytes, in 4
// bytes before the text, which is aligned to 8.

namespace qn_platform
{

inline constexpr std::size_t BSTR_LEAD = 8;

/// Null when memory is short.
inline BSTR Make_Bstr(const wchar_t* text, std::size_t length)
{
    const std::size_t bytes = length * sizeof(wchar_t);
    char* const block = static_cast<char*>(std::malloc(BSTR_LEAD + bytes + sizeof(wchar_t)));
    if (block == nullptr)
        return nullptr;
    const auto count = static_cast<DWORD>(bytes);
    std::memcpy(block + BSTR_LEAD - sizeof count, &count, sizeof count);
    BSTR const result = reinterpret_cast<BSTR>(block + BSTR_LEAD);
    std::memcpy(result, text, bytes);
    result[length] = 0;
    return result;
}

inline void Free_Bstr(BSTR text)
{
    if (text != nullptr)
        std::free(reinterpret_cast<char*>(text) - BSTR_LEAD);
}

} // namespace qn_platform

#endif
