#ifndef QNLIB_LIB_PROTECTED_H
#define QNLIB_LIB_PROTECTED_H

// Secrets that lie enciphered in memory, bytes as printable text, and a checksum.

#include "protected/base64.h"
#include "protected/checksum.h"
#include "protected/protected_buffer.h"
#include "protected/protected_string.h"

#endif
