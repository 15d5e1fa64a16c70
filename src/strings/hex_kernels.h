#ifndef QNLIB_SRC_STRINGS_HEX_KERNELS_H
#define QNLIB_SRC_STRINGS_HEX_KERNELS_H

#include <cstddef>

// The loops of the hex text form, written so that the compiler turns them into vectors. Bytes and text must
// not overlap.

namespace hex
{

/// Two lower-case digits a byte, without and with a separator between the bytes.
void Write(const unsigned char* pBytes, std::size_t nBytes, wchar_t* pText) noexcept;
void Write_Separated(const unsigned char* pBytes, std::size_t nBytes, wchar_t* pText,
                     wchar_t chSeparator) noexcept;

/// Reads pairs of hex digits of either case, up to nPairs of them or the first pair with another unit; the
/// result is the number of pairs read. pBytes has room for all of them.
std::size_t Read(const wchar_t* pText, std::size_t nPairs, unsigned char* pBytes) noexcept;

} // namespace hex

#endif
