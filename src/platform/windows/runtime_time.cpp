#include "platform/runtime_time.h"

#include <wchar.h>

namespace qn_runtime
{

namespace
{

#ifdef _UCRT
constexpr wchar_t CONVERSIONS[] = L"aAbBcCdDeFgGhHIjmMnprRStTuUVwWxXyYzZ%";
#else
constexpr wchar_t CONVERSIONS[] = L"aAbBcdHIjmMpSUwWxXyYzZ%";
#endif

/// Whether the runtime knows all conversions of a format. For others it calls the process's handler of
/// invalid parameters, which may end the process.
bool is_Known(const wchar_t* format)
{
    for (; *format != 0; ++format)
    {
        if (*format != L'%')
            continue;
        ++format;
        if (*format == L'#')
            ++format;
        if (*format == 0 || wcschr(CONVERSIONS, *format) == nullptr)
            return false;
    }
    return true;
}

} // namespace

std::size_t Format_Time(wchar_t* buffer, std::size_t capacity, const wchar_t* format, const std::tm& time)
{
    if (!is_Known(format))
        return 0;
    // Some runtimes take a text of the whole capacity for one that fits, without its end.
    const std::size_t length = wcsftime(buffer, capacity, format, &time);
    return length < capacity ? length : 0;
}

} // namespace qn_runtime
