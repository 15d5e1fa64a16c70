#ifndef QNLIB_SRC_PLATFORM_RUNTIME_TIME_H
#define QNLIB_SRC_PLATFORM_RUNTIME_TIME_H

#include <cstddef>
#include <ctime>

// What the library needs of the language runtime for the text of times, under a name of its own, because the
// runtime's own function means 32-bit text on Linux. src/platform/time implements it for Linux,
// src/platform/windows by the runtime of Windows.

namespace qn_runtime
{

/// The runtime's wcsftime: writes `time` by a format, with the names and patterns of the runtime's locale,
/// and ends the text. The answer is its length; 0 for a text that doesn't fit into `capacity` with its end,
/// for a conversion that the runtime doesn't know, and for a field out of its range. The buffer's content is
/// undefined then.
///
/// Both targets know a A b B c d H I j m M p S U w W x X y Y z Z and %, and the flag # before them, which
/// leaves out leading zeros, and takes the long date for c and x. z and Z may both be the zone's name, as in
/// older runtimes; in Linux z is the bias, "+0100". Linux knows those of later runtimes too:
/// C D e F g G h n r R t T u V.
std::size_t Format_Time(wchar_t* buffer, std::size_t capacity, const wchar_t* format, const std::tm& time);

} // namespace qn_runtime

#endif
