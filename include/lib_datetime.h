#ifndef QNLIB_LIB_DATETIME_H
#define QNLIB_LIB_DATETIME_H

// Date and time: the calendar value, its parts, its text and the way back from text.

#include "datetime/date_time.h"

#endif
