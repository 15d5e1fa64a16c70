#ifndef QNLIB_SRC_STRINGS_SCAN_DISPATCH_H
#define QNLIB_SRC_STRINGS_SCAN_DISPATCH_H

#include <cstddef>

namespace scan
{

/// The searches compiled for one instruction set.
struct Kernels
{
    std::size_t (*m_pFind_CharacterA)(const char*, std::size_t, char) noexcept;
    std::size_t (*m_pFind_CharacterW)(const wchar_t*, std::size_t, wchar_t) noexcept;
    std::size_t (*m_pFind_TextA)(const char*, std::size_t, const char*, std::size_t) noexcept;
    std::size_t (*m_pFind_TextW)(const wchar_t*, std::size_t, const wchar_t*, std::size_t) noexcept;
};

extern const Kernels Base_Kernels;
extern const Kernels Avx2_Kernels; ///< only where QNLIB_AVX2_KERNELS is defined

} // namespace scan

#endif
