#ifndef QNLIB_SRC_PLATFORM_FILES_NATIVE_PATH_H
#define QNLIB_SRC_PLATFORM_FILES_NATIVE_PATH_H

#include "platform/types.h"

#include <string>

namespace qn_platform
{

/// A path of the platform's form as the host takes it: in UTF-8, with slashes for backslashes. Empty for text
/// with half a surrogate pair, which no name here stands for. Throws std::bad_alloc.
std::string Native_Path(LPCWSTR path);

} // namespace qn_platform

#endif
