#ifndef QNLIB_SRC_ENVIRONMENT_TRACE_POINT_H
#define QNLIB_SRC_ENVIRONMENT_TRACE_POINT_H

#include "foundation/trace.h"

#include <new>

/// Passes a trace point, whose texts take memory: when there is none, the point is passed over, since what an
/// operation does must not depend on whether it can tell of it.
template <class Point>
void Trace(const Point& point) noexcept
{
    try
    {
        point();
    }
    catch (const std::bad_alloc&)
    {
    }
}

#endif
