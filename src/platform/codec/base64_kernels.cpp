#include "platform/codec/base64_kernels.h"

#include <array>

namespace qn_platform::base64
{

namespace
{

constexpr char ALPHABET[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

constexpr std::array<unsigned char, 256> VALUES = []
{
    std::array<unsigned char, 256> values{};
    values.fill(NO_DIGIT);
    for (unsigned char value = 0; value < 64; ++value)
    {
        values[static_cast<unsigned char>(ALPHABET[value])] = value;
    }
    return values;
}();

/// Two characters for each value of twelve bits.
constexpr std::array<std::array<char, 2>, 4096> PAIRS = []
{
    std::array<std::array<char, 2>, 4096> pairs{};
    for (unsigned int value = 0; value < 4096; ++value)
    {
        pairs[value] = {ALPHABET[value >> 6], ALPHABET[value & 63]};
    }
    return pairs;
}();

#if defined(QNLIB_AVX2_KERNELS)

bool has_Avx2() { return __builtin_cpu_supports("avx2") != 0; }

#else

constexpr bool has_Avx2() { return false; }

#endif

} // namespace

#if !defined(QNLIB_AVX2_KERNELS)

std::size_t Encode_Avx2(const unsigned char*, std::size_t, std::size_t, char*) { return 0; }

std::size_t Count_Digits_Avx2(const char*, std::size_t) { return 0; }

std::size_t Decode_Avx2(const char*, std::size_t, unsigned char*) { return 0; }

#endif

unsigned char Value(char character) { return VALUES[static_cast<unsigned char>(character)]; }

void Encode(const unsigned char* bytes, std::size_t groups, std::size_t readable, char* text)
{
    for (std::size_t i = has_Avx2() ? Encode_Avx2(bytes, groups, readable, text) : 0; i < groups; ++i)
    {
        const unsigned char* const group = bytes + 3 * i;
        const auto& first = PAIRS[static_cast<unsigned int>(group[0] << 4 | group[1] >> 4)];
        const auto& second = PAIRS[static_cast<unsigned int>((group[1] & 0xF) << 8 | group[2])];
        text[4 * i] = first[0];
        text[4 * i + 1] = first[1];
        text[4 * i + 2] = second[0];
        text[4 * i + 3] = second[1];
    }
}

void Encode_Last(const unsigned char* bytes, std::size_t size, char* text)
{
    const unsigned char group[3] = {bytes[0], size == 2 ? bytes[1] : static_cast<unsigned char>(0), 0};
    Encode(group, 1, sizeof(group), text);
    text[3] = '=';
    if (size == 1)
    {
        text[2] = '=';
    }
}

std::size_t Count_Digits(const char* text, std::size_t length)
{
    std::size_t i = has_Avx2() ? Count_Digits_Avx2(text, length) : 0;
    while (i < length && Value(text[i]) != NO_DIGIT)
    {
        ++i;
    }
    return i;
}

std::size_t Decode(const char* text, std::size_t groups, unsigned char* bytes)
{
    for (std::size_t i = has_Avx2() ? Decode_Avx2(text, groups, bytes) : 0; i < groups; ++i)
    {
        const unsigned char a = Value(text[4 * i]);
        const unsigned char b = Value(text[4 * i + 1]);
        const unsigned char c = Value(text[4 * i + 2]);
        const unsigned char d = Value(text[4 * i + 3]);
        if ((a | b | c | d) == NO_DIGIT)
        {
            return i;
        }
        bytes[3 * i] = static_cast<unsigned char>(a << 2 | b >> 4);
        bytes[3 * i + 1] = static_cast<unsigned char>(b << 4 | c >> 2);
        bytes[3 * i + 2] = static_cast<unsigned char>(c << 6 | d);
    }
    return groups;
}

} // namespace qn_platform::base64
