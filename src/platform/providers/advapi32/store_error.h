#ifndef QNLIB_SRC_PLATFORM_PROVIDERS_ADVAPI32_STORE_ERROR_H
#define QNLIB_SRC_PLATFORM_PROVIDERS_ADVAPI32_STORE_ERROR_H

#include "platform/types.h"

namespace qn_advapi32
{

/// The platform's code for a fault of the system; 1016 for one that has no other.
qn_platform::DWORD Code_Of_System(int system_error);

/// The platform's code for what SQLite answered; `system_error` is the system's behind it, if there is one.
qn_platform::DWORD Code_Of_Sqlite(int result, int system_error);

} // namespace qn_advapi32

#endif
