#ifndef QNLIB_PROTECTED_CHECKSUM_H
#define QNLIB_PROTECTED_CHECKSUM_H

#include "lib_api.h"

/// CRC-32 of IEEE 802.3 over nSize bytes: polynomial 0xEDB88320 with the lowest bit first, begun with and
/// finally inverted by 0xFFFFFFFF. 0 for a size of 0, when pData may be NULL; otherwise it must be readable
/// for nSize bytes. The result is below 2 to the power of 32. Any thread may call it.
LIB_API unsigned long Lib_Cacl_CRC32(unsigned char* pData, unsigned long nSize);

#endif
