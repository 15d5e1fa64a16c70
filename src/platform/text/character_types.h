#ifndef QNLIB_SRC_PLATFORM_TEXT_CHARACTER_TYPES_H
#define QNLIB_SRC_PLATFORM_TEXT_CHARACTER_TYPES_H

#include "platform/types.h"

namespace qn_platform
{

/// The C1_ bits of a unit; 0 for what Unicode has not assigned. A surrogate is C1_DEFINED and nothing else.
WORD Character_Classes(unsigned int unit);

} // namespace qn_platform

#endif
