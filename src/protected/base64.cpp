#include "protected/base64.h"

#include "lib_platform.h"

#include <limits>

namespace
{

/// `convert` is the platform's call: it takes the input's pointer and size, the target (NULL to count only)
/// and the count.
template <class Convert>
bool convert_Twice(const Lib_Buffer& Input, Lib_Buffer& Output, Convert convert)
{
    if (Input.Get_Size() > std::numeric_limits<DWORD>::max())
    {
        SetLastError(ERROR_INVALID_PARAMETER); // the platform would see its low 32 bits
        return false;
    }
    const auto nSize = static_cast<DWORD>(Input.Get_Size());
    DWORD nCount = 0;
    if (!convert(Input.Get_Ptr(), nSize, nullptr, &nCount))
        return false;
    const Lib_Buffer Kept(&Input == &Output ? Input : Lib_Buffer());
    const void* pInput = &Input == &Output ? Kept.Get_Ptr() : Input.Get_Ptr();
    if (pInput != nullptr)
        Output.Set_Size(nCount);
    if (pInput == nullptr || Output.Get_Size() != nCount)
    {
        SetLastError(ERROR_NOT_ENOUGH_MEMORY);
        return false;
    }
    return convert(pInput, nSize, Output.Get_Ptr(), &nCount);
}

/// The copy of the input that the overloads without a buffer work on.
bool copy(const void* pData, unsigned long long nSize, Lib_Buffer& Copy)
{
    if (nSize > std::numeric_limits<DWORD>::max())
    {
        SetLastError(ERROR_INVALID_PARAMETER);
        return false;
    }
    Copy.Attach_Copy(pData, nSize);
    if (Copy.Get_Size() != nSize)
        SetLastError(ERROR_NOT_ENOUGH_MEMORY);
    return Copy.Get_Size() == nSize;
}

} // namespace

bool base64_encode(const Lib_Buffer& Input, Lib_Buffer& Output, unsigned long nFlags)
{
    return convert_Twice(Input, Output,
                         [nFlags](const void* pInput, DWORD nSize, void* pText, DWORD* pnCount)
                         {
                             return CryptBinaryToStringA(static_cast<const BYTE*>(pInput), nSize,
                                                         static_cast<DWORD>(nFlags),
                                                         static_cast<char*>(pText), pnCount) != FALSE;
                         });
}

bool base64_encode(const unsigned char* pData, unsigned long long nSize, Lib_Buffer& Output,
                   unsigned long nFlags)
{
    Lib_Buffer Input;
    return copy(pData, nSize, Input) && base64_encode(Input, Output, nFlags);
}

bool base64_decode(const Lib_Buffer& Input, Lib_Buffer& Output, unsigned long nFlags)
{
    return convert_Twice(Input, Output,
                         [nFlags](const void* pInput, DWORD nSize, void* pBytes, DWORD* pnCount)
                         {
                             return CryptStringToBinaryA(
                                        static_cast<const char*>(pInput), nSize, static_cast<DWORD>(nFlags),
                                        static_cast<BYTE*>(pBytes), pnCount, nullptr, nullptr) != FALSE;
                         });
}

bool base64_decode(const std::string& strInput, Lib_Buffer& Output, unsigned long nFlags)
{
    Lib_Buffer Input;
    return copy(strInput.data(), strInput.size(), Input) && base64_decode(Input, Output, nFlags);
}
