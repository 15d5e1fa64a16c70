#ifndef QNLIB_LIB_ENVIRONMENT_H
#define QNLIB_LIB_ENVIRONMENT_H

// Environments: the caller's identity, the record of a session, and the manager that creates, counts and
// removes records.

#include "environment/environment.h"
#include "environment/environment_manager.h"
#include "environment/environment_params.h"

#endif
