#include "platform/runtime_time.h"

#include <wchar.h>

namespace qn_runtime
{

std::size_t Format_Time(wchar_t* buffer, std::size_t capacity, const wchar_t* format, const std::tm& time)
{
    // Some runtimes take a text of the whole capacity for one that fits, without its end.
    const std::size_t length = wcsftime(buffer, capacity, format, &time);
    return length < capacity ? length : 0;
}

} // namespace qn_runtime
