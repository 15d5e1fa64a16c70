#ifndef QNLIB_LIB_FOUNDATION_H
#define QNLIB_LIB_FOUNDATION_H

// The foundation: raw memory, containers and byte buffers.

#include "foundation/alloc.h"
#include "foundation/buffer.h"
#include "foundation/container.h"
#include "foundation/typed_buffer.h"

#endif
