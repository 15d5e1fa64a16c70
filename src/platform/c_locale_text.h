#ifndef QNLIB_SRC_PLATFORM_C_LOCALE_TEXT_H
#define QNLIB_SRC_PLATFORM_C_LOCALE_TEXT_H

#include <cstddef>
#include <cstring>
#include <type_traits>

#if defined(__SSE2__) || defined(_M_X64)
#include <emmintrin.h>
#define QNLIB_CASE_BY_SSE2
#endif

// Text in the "C" locale, for both targets and both widths: units as unsigned values, and of all characters
// only A to Z and a to z have a case.

namespace qn_runtime
{

template <class Char>
constexpr int To_Unit(Char character)
{
    return static_cast<std::make_unsigned_t<std::conditional_t<sizeof(Char) == 1, char, short>>>(character);
}

/// The unit with the letters from `first` on, 26 of them, brought to the other case.
template <class Char, char first>
constexpr Char Swap_Case(Char character)
{
    const bool letter = static_cast<unsigned int>(To_Unit(character) - first) < 26;
    return static_cast<Char>(letter ? character ^ 0x20 : character);
}

template <class Char>
constexpr int To_Lower_Unit(Char character)
{
    return To_Unit(Swap_Case<Char, 'A'>(character));
}

constexpr bool Is_Letter(int unit) { return static_cast<unsigned int>((unit | 0x20) - 'a') < 26; }

/// The difference of the first two differing units after A to Z were folded to a to z.
template <class Char>
int Compare_C_No_Case(const Char* left, const Char* right)
{
    for (;; ++left, ++right)
    {
        const int left_unit = To_Unit(*left);
        const int right_unit = To_Unit(*right);
        if (left_unit == right_unit)
        {
            if (left_unit == 0)
                return 0;
        }
        else if ((left_unit ^ right_unit) != 0x20 || !Is_Letter(left_unit))
            return To_Lower_Unit(*left) - To_Lower_Unit(*right);
    }
}

/// -1, 0 or 1 by the units.
template <class Char>
int Compare_C(const Char* left, const Char* right)
{
    while (*left == *right && *left != 0)
    {
        ++left;
        ++right;
    }
    return (*left > *right) - (*left < *right);
}

inline int Compare_C(const char* left, const char* right)
{
    const int order = std::strcmp(left, right);
    return (order > 0) - (order < 0);
}

#if defined(QNLIB_CASE_BY_SSE2)

/// Letters lie in the positive half of a signed unit, so signed comparisons find them at both widths.
template <class Char, char first>
inline __m128i Swap_Case_Of_Vector(__m128i units)
{
    __m128i letters;
    if constexpr (sizeof(Char) == 1)
        letters = _mm_and_si128(_mm_cmpgt_epi8(units, _mm_set1_epi8(first - 1)),
                                _mm_cmpgt_epi8(_mm_set1_epi8(first + 26), units));
    else
        letters = _mm_and_si128(_mm_cmpgt_epi16(units, _mm_set1_epi16(first - 1)),
                                _mm_cmpgt_epi16(_mm_set1_epi16(first + 26), units));
    const __m128i bit = sizeof(Char) == 1 ? _mm_set1_epi8(0x20) : _mm_set1_epi16(0x20);
    return _mm_xor_si128(units, _mm_and_si128(letters, bit));
}

/// Changes `bytes` bytes, 16 at least. The last vector may overlap the one before it and is read before
/// anything is stored.
template <class Char, char first>
inline void Swap_Case_Of_Vectors(unsigned char* text, std::size_t bytes)
{
    unsigned char* const last = text + bytes - sizeof(__m128i);
    const __m128i tail = _mm_loadu_si128(reinterpret_cast<const __m128i*>(last));
    for (; text < last; text += sizeof(__m128i))
    {
        __m128i* const vector = reinterpret_cast<__m128i*>(text);
        _mm_storeu_si128(vector, Swap_Case_Of_Vector<Char, first>(_mm_loadu_si128(vector)));
    }
    _mm_storeu_si128(reinterpret_cast<__m128i*>(last), Swap_Case_Of_Vector<Char, first>(tail));
}

/// Changes 8 to 16 bytes by two halves, which may overlap.
template <class Char, char first>
inline void Swap_Case_Of_Halves(unsigned char* text, std::size_t bytes)
{
    __m128i* const head = reinterpret_cast<__m128i*>(text);
    __m128i* const tail = reinterpret_cast<__m128i*>(text + bytes - 8);
    const __m128i tail_units = _mm_loadl_epi64(tail);
    _mm_storel_epi64(head, Swap_Case_Of_Vector<Char, first>(_mm_loadl_epi64(head)));
    _mm_storel_epi64(tail, Swap_Case_Of_Vector<Char, first>(tail_units));
}

#endif

/// Brings the 26 letters from `first` on to the other case.
template <class Char, char first>
void Change_C_Case(Char* text, std::size_t length)
{
#if defined(QNLIB_CASE_BY_SSE2)
    const std::size_t bytes = length * sizeof(Char);
    if (bytes >= 16)
        return Swap_Case_Of_Vectors<Char, first>(reinterpret_cast<unsigned char*>(text), bytes);
    if (bytes >= 8)
        return Swap_Case_Of_Halves<Char, first>(reinterpret_cast<unsigned char*>(text), bytes);
#endif
    for (Char* const end = text + length; text != end; ++text)
        *text = Swap_Case<Char, first>(*text);
}

} // namespace qn_runtime

#undef QNLIB_CASE_BY_SSE2

#endif
