#include "protected/base64.h"

#include "lib_platform.h"

#include <limits>

namespace
{

/// A buffer may have a pointer with a size of 0, which the platform would read as a text of unknown length.
const void* bytes_Of(const Lib_Buffer& Input) { return Input.Get_Size() != 0 ? Input.Get_Ptr() : nullptr; }

/// A copy of the input, for overloads without a buffer and for an input that is the output.
bool copy(const void* pData, unsigned long long nSize, Lib_Buffer& Copy)
{
    if (nSize > std::numeric_limits<DWORD>::max())
    {
        SetLastError(ERROR_INVALID_PARAMETER); // the platform would see its low 32 bits
        return false;
    }
    Copy.Attach_Copy(pData, nSize);
    if (Copy.Get_Size() != nSize)
        SetLastError(ERROR_NOT_ENOUGH_MEMORY);
    return Copy.Get_Size() == nSize;
}

/// `convert` is the platform's call: it takes the input's pointer and size, the target (NULL to count only)
/// and the count.
template <class Convert>
bool convert_Twice(const Lib_Buffer& Input, Lib_Buffer& Output, Convert convert)
{
    if (&Input == &Output)
    {
        Lib_Buffer Copy;
        return copy(Input.Get_Ptr(), Input.Get_Size(), Copy) && convert_Twice(Copy, Output, convert);
    }
    if (Input.Get_Size() > std::numeric_limits<DWORD>::max())
    {
        SetLastError(ERROR_INVALID_PARAMETER);
        return false;
    }
    const auto nSize = static_cast<DWORD>(Input.Get_Size());
    DWORD nCount = 0;
    if (!convert(bytes_Of(Input), nSize, nullptr, &nCount))
        return false;
    Output.Set_Size(nCount);
    if (Output.Get_Size() != nCount)
    {
        SetLastError(ERROR_NOT_ENOUGH_MEMORY);
        return false;
    }
    return convert(bytes_Of(Input), nSize, Output.Get_Ptr(), &nCount);
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
