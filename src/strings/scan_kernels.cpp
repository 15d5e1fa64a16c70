// The searches with the vectors that every machine of the target has, and the choice of the best that this
// machine has.

#include "strings/scan.h"
#include "strings/scan_dispatch.h"

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <cstring>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace
{

// A unit may stand at an odd address.
wchar_t unit_At(const wchar_t* pText, std::size_t nIndex) noexcept
{
    wchar_t unit;
    std::memcpy(&unit, reinterpret_cast<const char*>(pText) + nIndex * sizeof(unit), sizeof(unit));
    return unit;
}

std::size_t length_Before_Plain(const wchar_t* pText, wchar_t ch) noexcept
{
    std::size_t i = 0;
    while (unit_At(pText, i) != ch && unit_At(pText, i) != 0)
        ++i;
    return i;
}

#if defined(__SSE2__)

template <class Char>
struct Vector
{
    static constexpr std::size_t Lanes = 16 / sizeof(Char);

    static __m128i Load(const Char* pText) noexcept
    {
        return _mm_loadu_si128(reinterpret_cast<const __m128i*>(pText));
    }
    static __m128i Fill(Char ch) noexcept
    {
        if constexpr (sizeof(Char) == 1)
            return _mm_set1_epi8(static_cast<char>(ch));
        else
            return _mm_set1_epi16(static_cast<short>(ch));
    }
    static __m128i Equal(__m128i left, __m128i right) noexcept
    {
        return sizeof(Char) == 1 ? _mm_cmpeq_epi8(left, right) : _mm_cmpeq_epi16(left, right);
    }
    static __m128i Either(__m128i left, __m128i right) noexcept { return _mm_or_si128(left, right); }
    static __m128i Both(__m128i left, __m128i right) noexcept { return _mm_and_si128(left, right); }
    static unsigned int Bits(__m128i lanes) noexcept
    {
        return static_cast<unsigned int>(_mm_movemask_epi8(lanes));
    }
    static __m128i Mark(__m128i units, __m128i wanted) noexcept
    {
        return Either(Equal(units, wanted), Equal(units, _mm_setzero_si128()));
    }
    static __m128i Merge(__m128i left, __m128i right) noexcept { return Either(left, right); }
    static unsigned int Hits(__m128i marks) noexcept { return Bits(marks); }
};

#include "strings/scan_kernels.inl"

#else

template <class Char>
std::size_t find_Character(const Char* pText, std::size_t nLength, Char ch) noexcept
{
    std::size_t i = 0;
    while (i < nLength && pText[i] != ch && pText[i] != 0)
        ++i;
    return pText[i] == ch ? i : scan::None;
}

template <class Char>
std::size_t find_Text(const Char* pText, std::size_t nLength, const Char* pPart, std::size_t nPart) noexcept
{
    if (nPart == 0)
        return 0;
    for (std::size_t i = 0; i + nPart <= nLength && pText[i] != 0; ++i)
        if (std::equal(pPart, pPart + nPart, pText + i))
            return i;
    return scan::None;
}

#endif

// The sanitizers are to see a text that lacks its NUL, and nothing of what lies beside one.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool bSanitized = true;
#elif defined(__has_feature)
constexpr bool bSanitized = __has_feature(address_sanitizer) || __has_feature(thread_sanitizer);
#else
constexpr bool bSanitized = false;
#endif

#if defined(__SSE2__)

// Reads the aligned vectors that hold the text whole, also before it and behind its end: no page ends inside
// one.
std::size_t length_Before(const wchar_t* pText, wchar_t ch) noexcept
{
    using V = Vector<wchar_t>;
    const auto nBegin = reinterpret_cast<std::uintptr_t>(pText);
    if (bSanitized || nBegin % sizeof(wchar_t) != 0)
        return length_Before_Plain(pText, ch);
    const std::uintptr_t nInside = nBegin % sizeof(__m128i);
    const __m128i wanted = V::Fill(ch);
    const auto* pVector = reinterpret_cast<const __m128i*>(nBegin - nInside);
    unsigned int nBits = V::Hits(V::Mark(*pVector, wanted)) >> nInside << nInside;
    while (nBits == 0)
        nBits = V::Hits(V::Mark(*++pVector, wanted));
    const std::uintptr_t nFound = reinterpret_cast<std::uintptr_t>(pVector) + first_Lane<char>(nBits);
    return (nFound - nBegin) / sizeof(wchar_t);
}

#else

std::size_t length_Before(const wchar_t* pText, wchar_t ch) noexcept
{
    return length_Before_Plain(pText, ch);
}

#endif

// Chosen at the first search; threads that come together choose the same.
std::atomic<const scan::Kernels*> g_pKernels{nullptr};

const scan::Kernels& choose_Kernels() noexcept
{
    const scan::Kernels* pKernels = &scan::Base_Kernels;
#if defined(QNLIB_AVX2_KERNELS)
    if (__builtin_cpu_supports("avx2"))
        pKernels = &scan::Avx2_Kernels;
#endif
    g_pKernels.store(pKernels, std::memory_order_relaxed);
    return *pKernels;
}

const scan::Kernels& kernels() noexcept
{
    const scan::Kernels* pKernels = g_pKernels.load(std::memory_order_relaxed);
    return pKernels != nullptr ? *pKernels : choose_Kernels();
}

} // namespace

const scan::Kernels scan::Base_Kernels = {find_Character<char>, find_Character<wchar_t>, find_Text<char>,
                                          find_Text<wchar_t>};

std::size_t scan::Find_Character(const char* pText, std::size_t nLength, char ch) noexcept
{
    return kernels().m_pFind_CharacterA(pText, nLength, ch);
}

std::size_t scan::Find_Character(const wchar_t* pText, std::size_t nLength, wchar_t ch) noexcept
{
    return kernels().m_pFind_CharacterW(pText, nLength, ch);
}

std::size_t scan::Find_Text(const char* pText, std::size_t nLength, const char* pPart,
                            std::size_t nPart) noexcept
{
    return kernels().m_pFind_TextA(pText, nLength, pPart, nPart);
}

std::size_t scan::Find_Text(const wchar_t* pText, std::size_t nLength, const wchar_t* pPart,
                            std::size_t nPart) noexcept
{
    return kernels().m_pFind_TextW(pText, nLength, pPart, nPart);
}

std::size_t scan::Length_Before(const wchar_t* pText, wchar_t ch) noexcept
{
    return length_Before(pText, ch);
}
