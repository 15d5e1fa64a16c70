#include "protected/checksum.h"

#include "protected/crc32.h"

unsigned long Lib_Cacl_CRC32(unsigned char* pData, unsigned long nSize)
{
    if (nSize == 0)
        return 0;
    const bool bFolding = nSize >= crc::Least_Fold && crc::Has_Folding();
    return ~(bFolding ? crc::Advance_By_Folding(~0U, pData, nSize)
                      : crc::Advance_By_Table(~0U, pData, nSize));
}
