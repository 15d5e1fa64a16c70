#ifndef QNLIB_LIB_FOUNDATION_H
#define QNLIB_LIB_FOUNDATION_H

// The foundation: raw memory, containers, byte buffers, the record of a failure and trace points.

#include "foundation/alloc.h"
#include "foundation/buffer.h"
#include "foundation/container.h"
#include "foundation/lib_result.h"
#include "foundation/trace.h"
#include "foundation/typed_array.h"
#include "foundation/typed_buffer.h"
#include "foundation/typed_set.h"

#endif
