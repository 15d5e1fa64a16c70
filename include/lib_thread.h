#ifndef QNLIB_LIB_THREAD_H
#define QNLIB_LIB_THREAD_H

// Threads: creation of threads that carry their maker's impersonation, and the monitor thread.

#include "thread/impersonated_thread.h"
#include "thread/monitor_thread.h"

#endif
