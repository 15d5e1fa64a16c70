#include "lib_platform.h"

QN_STRING_TABLE({7, L"seven of the module"});
