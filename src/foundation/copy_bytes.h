#ifndef QNLIB_SRC_FOUNDATION_COPY_BYTES_H
#define QNLIB_SRC_FOUNDATION_COPY_BYTES_H

#include <algorithm>
#include <cstddef>
#include <cstring>

/// memcpy, but in pieces: the runtime copies long blocks with an instruction that on some machines takes
/// twenty times as long when the target lies a few bytes behind the source modulo the page, which blocks of
/// the same allocator often do. Short pieces go by vectors. Nothing to copy needs no pointers.
inline void copy_Bytes(void* pTarget, const void* pSource, unsigned long long nSize) noexcept
{
    constexpr unsigned long long Piece = 1024;
    auto* pTo = static_cast<unsigned char*>(pTarget);
    const auto* pFrom = static_cast<const unsigned char*>(pSource);
    while (nSize != 0)
    {
        const auto nTaken = static_cast<std::size_t>(std::min(nSize, Piece));
        std::memcpy(pTo, pFrom, nTaken);
        pTo += nTaken;
        pFrom += nTaken;
        nSize -= nTaken;
    }
}

#endif
