#ifndef QNLIB_LIB_STRINGS_H
#define QNLIB_LIB_STRINGS_H

// Reference-counted strings of both widths, their lists, and conversions between text and values.

#include "strings/lib_string.h"
#include "strings/string_a.h"
#include "strings/string_lists.h"
#include "strings/string_w.h"
#include "strings/text_utilities.h"

#endif
