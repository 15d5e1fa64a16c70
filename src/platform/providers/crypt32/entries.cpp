#include "platform/crypt.h"
#include "platform/modules.h"
#include "platform/providers/crypt32/cipher.h"
#include "platform/providers/crypt32/key_page.h"

// The entry points of the provider, as include/platform/crypt.h tells them.

namespace
{

using namespace qn_platform;
using qn_crypt32::Direction;

DWORD check(const void* data, DWORD size, DWORD flags)
{
    if (flags == CRYPTPROTECTMEMORY_CROSS_PROCESS || flags == CRYPTPROTECTMEMORY_SAME_LOGON)
    {
        return ERROR_NOT_SUPPORTED;
    }
    const bool right = data != nullptr && size % CRYPTPROTECTMEMORY_BLOCK_SIZE == 0 &&
                       flags == CRYPTPROTECTMEMORY_SAME_PROCESS;
    return right ? ERROR_SUCCESS : ERROR_INVALID_PARAMETER;
}

BOOL turn(Direction direction, void* data, DWORD size, DWORD flags)
{
    DWORD error = check(data, size, flags);
    if (error == ERROR_SUCCESS && size != 0)
    {
        const unsigned char* const key = qn_crypt32::Get_Key();
        if (key == nullptr)
        {
            return FALSE;
        }
        error = qn_crypt32::Turn(direction, key, static_cast<unsigned char*>(data), size);
    }
    if (error != ERROR_SUCCESS)
    {
        SetLastError(error);
    }
    return error == ERROR_SUCCESS;
}

} // namespace

extern "C"
{
    __attribute__((visibility("default"))) BOOL CryptProtectMemory(LPVOID data, DWORD size, DWORD flags)
    {
        return turn(Direction::encipher, data, size, flags);
    }

    __attribute__((visibility("default"))) BOOL CryptUnprotectMemory(LPVOID data, DWORD size, DWORD flags)
    {
        return turn(Direction::decipher, data, size, flags);
    }
}
