#ifndef QNLIB_LIB_KERNEL_H
#define QNLIB_LIB_KERNEL_H

// Kernel objects and synchronisation: owned handles, modules, events, mutexes and lockers.

#include "kernel/lib_event.h"
#include "kernel/lib_handle.h"
#include "kernel/lib_library.h"
#include "kernel/lib_locker.h"
#include "kernel/lib_mutex.h"
#include "kernel/lib_synchro.h"

#endif
