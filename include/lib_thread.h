#ifndef QNLIB_LIB_THREAD_H
#define QNLIB_LIB_THREAD_H

// Threads: creation of threads that carry their maker's impersonation.

#include "thread/impersonated_thread.h"

#endif
