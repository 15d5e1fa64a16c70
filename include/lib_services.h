#ifndef QNLIB_LIB_SERVICES_H
#define QNLIB_LIB_SERVICES_H

// System services: security and privileges, GUID values.

#include "services/lib_guid.h"
#include "services/security.h"

#endif
