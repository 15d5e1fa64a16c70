#include "lib_platform.h"

QN_STRING_TABLE({3, L"%Y-%m-%d at %H:%M"});
