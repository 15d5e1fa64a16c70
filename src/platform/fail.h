#ifndef QNLIB_SRC_PLATFORM_FAIL_H
#define QNLIB_SRC_PLATFORM_FAIL_H

#include "platform/modules.h"

namespace qn_platform
{

/// Leaves the last error. False, for the caller to return.
inline bool Fail(DWORD code)
{
    SetLastError(code);
    return false;
}

} // namespace qn_platform

#endif
