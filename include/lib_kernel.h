#ifndef QNLIB_LIB_KERNEL_H
#define QNLIB_LIB_KERNEL_H

// Kernel objects and modules.

#include "kernel/lib_library.h"

#endif
