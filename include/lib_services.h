#ifndef QNLIB_LIB_SERVICES_H
#define QNLIB_LIB_SERVICES_H

// System services: GUID values.

#include "services/lib_guid.h"

#endif
