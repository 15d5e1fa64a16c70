#ifndef QNLIB_LIB_SERVICES_H
#define QNLIB_LIB_SERVICES_H

// System services: the registry, directories of the user, security and privileges, GUID values.

#include "services/directories.h"
#include "services/lib_guid.h"
#include "services/registry.h"
#include "services/security.h"

#endif
