#include "strings/lib_string.h"

#include "strings/width_conversion.h"

#include <iterator>

namespace
{

// A text that leaves fewer than two places free may have been cut.
bool is_Whole(int nLength, int nSize) noexcept { return nSize - nLength >= 2; }

} // namespace

int Lib_String::Load_String(unsigned int nId, HINSTANCE hModule)
{
    wchar_t local[256];
    constexpr int nStep = static_cast<int>(std::size(local));
    int nLength = load_String(nId, local, nStep, hModule);
    if (is_Whole(nLength, nStep))
    {
        assign(local);
        return nLength > 0;
    }
    for (int nSize = 2 * nStep;; nSize += nStep)
    {
        wchar_t* pBuffer = Get_Buffer(static_cast<unsigned long long>(nSize) - 1);
        nLength = load_String(nId, pBuffer, nSize, hModule);
        if (is_Whole(nLength, nSize))
            break;
        set_Length(0); // the string stays sound if the next step finds no memory
    }
    Release_Buffer();
    return nLength > 0;
}
