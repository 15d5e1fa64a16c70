#include "platform/modules.h"

// A provider for tests: one entry point that succeeds and one that leaves a last error.

extern "C"
{
    __attribute__((visibility("default"))) unsigned int Twice(unsigned int number);
    __attribute__((visibility("default"))) int Fail_With(unsigned int error);
}

unsigned int Twice(unsigned int number) { return 2 * number; }

int Fail_With(unsigned int error)
{
    qn_platform::SetLastError(error);
    return 0;
}
