#ifndef QNLIB_SRC_PLATFORM_TEXT_VECTORS_H
#define QNLIB_SRC_PLATFORM_TEXT_VECTORS_H

// The few vector operations that the converters share. QN_VECTORS tells whether the machine's baseline has
// them; without it the converters' scalar loops do all the work. QN_INLINE is for the parts of the innermost
// loops, whose position must stay in registers.

#define QN_INLINE [[gnu::always_inline]] inline

#if defined(__SSE2__)
#define QN_VECTORS 1

#include <emmintrin.h>

namespace qn_platform::vectors
{

using Block = __m128i;

inline Block Load(const void* source) { return _mm_loadu_si128(static_cast<const Block*>(source)); }

/// Eight bytes, and zeros above them.
inline Block Load_Half(const void* source) { return _mm_loadl_epi64(static_cast<const Block*>(source)); }

inline void Store(void* target, Block block) { _mm_storeu_si128(static_cast<Block*>(target), block); }

/// The first eight bytes of the block.
inline void Store_Half(void* target, Block block) { _mm_storel_epi64(static_cast<Block*>(target), block); }

/// One bit a byte: its highest.
inline unsigned int High_Bits(Block block) { return static_cast<unsigned int>(_mm_movemask_epi8(block)); }

/// The number of zero bits below the lowest one bit, of which there must be one.
inline unsigned int Zeros_Below(unsigned long long bits)
{
    return static_cast<unsigned int>(__builtin_ctzll(bits));
}

inline Block Bytes(int value) { return _mm_set1_epi8(static_cast<char>(value)); }

inline Block Units(int value) { return _mm_set1_epi16(static_cast<short>(value)); }

/// Sixteen bytes as sixteen units.
inline void Store_Widened(wchar_t* target, Block block)
{
    Store(target, _mm_unpacklo_epi8(block, _mm_setzero_si128()));
    Store(target + 8, _mm_unpackhi_epi8(block, _mm_setzero_si128()));
}

} // namespace qn_platform::vectors

#else
#define QN_VECTORS 0
#endif

#endif
