#include "platform/modules.h"

namespace qn_platform
{

namespace
{

thread_local DWORD last_error = ERROR_SUCCESS;

} // namespace

DWORD GetLastError() { return last_error; }

void SetLastError(DWORD code) { last_error = code; }

} // namespace qn_platform
